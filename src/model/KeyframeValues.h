#pragma once
// An attribute's values: a constant under the key kConstantTimepoint, or
// keyframes keyed by their time. Times are reduced to single precision before
// they become keys, so a time read back from a file or a float field finds
// its keyframe exactly.

#include <QMap>
#include <QMetaType>
#include <QVariant>

namespace model {

using KeyframeValues = QMap<float, QVariant>;

// The key of the constant value, and the "no time point" answer.
inline constexpr double kConstantTimepoint = -1000000.0;
// The "no next time point" answer at component level.
inline constexpr double kNoNextTimepoint = 1e14;
// The sort position of an attribute whose label names none.
inline constexpr quint64 kNoPosition = 9999;

inline float roundedTimepoint(double t) { return static_cast<float>(t); }

}  // namespace model

Q_DECLARE_METATYPE(model::KeyframeValues)
