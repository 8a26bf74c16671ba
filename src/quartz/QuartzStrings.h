#pragma once
// The file model keeps UTF-8 std::string keys; the rest of the program
// speaks QString. These two conversions are the only bridge.

#include <QString>
#include <string>

namespace quartz {

inline std::string toStd(const QString& s) { return s.toStdString(); }
inline QString toQt(const std::string& s) { return QString::fromStdString(s); }

}  // namespace quartz
