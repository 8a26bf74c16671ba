// Stop frames and the poster frame at the playhead.

#include "document/DocumentCommands.h"

#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/StopFrame.h"

namespace document {

namespace {

// The first stop frame within a hundredth of a second of `t`.
model::StopFrame* stopFrameAt(const model::Composition& composition, double t)
{
    for (model::StopFrame* stopFrame : composition.stopFrames())
        if (stopFrame->isTimepoint(t)) return stopFrame;
    return nullptr;
}

}  // namespace

void DocumentCommands::addStopFrame()
{
    const double now = composition_.editorTimepoint();
    if (stopFrameAt(composition_, now)) return;
    model::UndoGroup group(undoManager(), QStringLiteral("Add Stop Frame"));
    composition_.addStopFrame(now);
}

void DocumentCommands::toggleStopframe()
{
    const double now = composition_.editorTimepoint();
    model::UndoGroup group(undoManager(), QStringLiteral("Toggle Stop Frame"));
    if (model::StopFrame* existing = stopFrameAt(composition_, now))
        composition_.removeStopFrame(existing);
    else
        composition_.addStopFrame(now);
}

void DocumentCommands::togglePosterframe()
{
    // Always sets: choosing "no poster frame" is the inspector's business.
    const double now = composition_.editorTimepoint();
    model::UndoGroup group(undoManager(), QStringLiteral("Set Poster Frame"));
    if (composition_.posterFrameMode() != 1) {
        composition_.setPosterFrameTimepoint(now);
        return;
    }
    // Leaving "no poster frame" flips the mode too; controls bound to the
    // mode hear it as a change of their own key.
    composition_.willChangeValueForKey(QStringLiteral("posterFrameMode"));
    composition_.setPosterFrameTimepoint(now);
    composition_.didChangeValueForKey(QStringLiteral("posterFrameMode"));
}

}  // namespace document
