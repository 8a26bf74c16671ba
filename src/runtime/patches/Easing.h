#pragma once
// Interpolation curves of the Interpolation patch, by menu index. Index 0
// (Linear) is certain; the order of the others follows the editor's menu
// (quadratic, cubic, exponential, sinusoidal; each in, out, in-out) and is
// our reading of it.

#include <QStringList>

namespace runtime {

double ease(int curve, double progress);  // progress and result 0…1
QStringList easingNames();

}  // namespace runtime
