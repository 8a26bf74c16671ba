// Moving the playhead and playing: editor state only, so nothing here is
// recorded for undo.

#include "document/DocumentCommands.h"

#include "model/Composition.h"
#include "model/KeyframeValues.h"
#include "model/QuartzComponent.h"

#include <QtCore/qnamespace.h>

#include <algorithm>

namespace document {

void DocumentCommands::jumpToBeginning()
{
    if (composition_.playMode() == 0) {
        composition_.setEditorTimepoint(0.0);
        return;
    }
    // Stopping and starting again makes playback restart from the beginning
    // instead of carrying on from the old start time.
    composition_.setPlayMode(0);
    composition_.setEditorTimepoint(0.0);
    composition_.setPlayMode(1);
}

void DocumentCommands::jumpToEnd() { composition_.setEditorTimepoint(composition_.duration()); }

void DocumentCommands::play() { composition_.setPlayMode(composition_.playMode() ^ 1); }

bool DocumentCommands::keyDown(int key)
{
    if (key != Qt::Key_Space) return false;
    play();
    return true;
}

void DocumentCommands::jumpToNextKeyframe()
{
    const auto selected = composition_.selectedComponents();
    if (selected.empty()) return;
    const double now = composition_.editorTimepoint();
    double next = model::kNoNextTimepoint;
    for (const model::QuartzComponent* c : selected) next = std::min(next, c->nextTimePoint(now));
    if (next == model::kNoNextTimepoint) return;
    composition_.setEditorTimepoint(next);
}

void DocumentCommands::jumpToPreviousKeyframe()
{
    // Unlike the next keyframe, "none" here means the beginning: the
    // playhead always moves.
    const double now = composition_.editorTimepoint();
    double previous = 0.0;
    for (const model::QuartzComponent* c : composition_.selectedComponents())
        previous = std::max(previous, c->previousTimePoint(now));
    composition_.setEditorTimepoint(previous);
}

void DocumentCommands::jumpToNextFrame() { stepFrame(1); }

void DocumentCommands::jumpToPreviousFrame() { stepFrame(-1); }

void DocumentCommands::stepFrame(int direction)
{
    const quint64 ticks = composition_.ticksPerSecond();
    if (ticks == 0) return;
    // The frame length is a single-precision value, as the timeline's own
    // grid is; the validation snaps the result back onto the grid.
    const double step = double(1.0f / float(ticks));
    double candidate = composition_.editorTimepoint() + direction * step;
    if (composition_.validateEditorTimepoint(candidate)) composition_.setEditorTimepoint(candidate);
}

}  // namespace document
