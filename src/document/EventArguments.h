#pragma once
// The event values a template's renderers receive while it plays. Outside a
// playout system there is no running clip, so the editor and the preview
// both play as if inside a 5-second clip called "Current Clip".

#include <QVariantMap>

namespace document {

// Elapsed, remaining and total time of the clip, its name and the names of
// the clips after it; the elapsed time is `time` modulo 5 s when playing,
// else 0.
QVariantMap eventArgumentsAtTime(double time, bool playing);

}  // namespace document
