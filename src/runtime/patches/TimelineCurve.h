#pragma once
// One track of a Timeline patch: key points joined by cubic Bézier segments
// in (time, value) space. Segment i runs from key i to key i+1 with control
// points key_i + rc_i and key_{i+1} + lc_{i+1} (handles are stored relative
// to their key). Before the first and after the last key the end values
// hold; two keys at the same time make a jump.

#include "plist/Value.h"

#include <QPointF>

#include <array>
#include <vector>

namespace runtime {

class TimelineCurve {
public:
    struct Key {
        double time = 0, value = 0;
        QPointF left, right;  // handles relative to the key
    };
    using Segment = std::array<QPointF, 4>;  // x = time, y = value

    TimelineCurve() = default;
    explicit TimelineCurve(std::vector<Key> keys);
    // The "keyFrames" array of a track: [{kf: {time, value}, lc?, rc?}, ...].
    static TimelineCurve fromKeyFrames(const plist::Value& keyFrames);

    bool isEmpty() const { return keys_.empty(); }
    double valueAt(double time) const;
    // Segment i joins key i and key i+1 (keys sorted by time).
    std::vector<Segment> segments() const;

private:
    std::vector<Key> keys_;
};

}  // namespace runtime
