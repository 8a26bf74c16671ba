#pragma once
// Rendering a played template to files: every frame (or field pair) in
// order from the beginning, with exact steps of the video mode, the
// trigger pulsed at given times or, by default, at every stop frame. Frames
// before the range are played but not written, so the template arrives at
// the range as it would on air.

#include "playout/FrameSink.h"

#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace playout {

class Player;

struct RenderRange {
    double from = 0;
    std::optional<double> to;  // default: the template's duration
    // Trigger times in seconds; none: a pulse at every stop frame.
    std::optional<std::vector<double>> triggerTimes;
};

// Answers false to cancel.
using RenderProgress = std::function<bool(qint64 framesDone, qint64 framesTotal)>;

struct RenderOutcome {
    bool ok = false;
    bool cancelled = false;
    QString error;
    qint64 framesWritten = 0;
    QStringList warnings;  // e.g. a trigger that found nothing waiting
};

class PlayoutRender {
public:
    // The player must be loaded; with trigger times it must not be
    // unattended, or it triggers on its own as well.
    static RenderOutcome run(Player& player, const RenderRange& range, FrameSink& sink, const RenderProgress& progress = {});
    // The frames the range covers.
    static qint64 frameCount(const Player& player, const RenderRange& range);
};

}  // namespace playout
