#include "playout/PlayoutRender.h"

#include "playout/Player.h"

#include <algorithm>

namespace playout {

namespace {

double endOf(const Player& player, const RenderRange& range)
{
    return range.to.value_or(player.playoutTemplate().duration);
}

}  // namespace

qint64 PlayoutRender::frameCount(const Player& player, const RenderRange& range)
{
    return player.timing().frameCount(range.from, endOf(player, range));
}

RenderOutcome PlayoutRender::run(Player& player, const RenderRange& range, FrameSink& sink, const RenderProgress& progress)
{
    RenderOutcome outcome;
    if (!player.isLoaded()) {
        outcome.error = QStringLiteral("nothing is loaded");
        return outcome;
    }
    const VideoTiming& timing = player.timing();
    const qint64 first = timing.firstFrameAtOrAfter(range.from);
    const qint64 total = frameCount(player, range);
    if (!sink.open(FrameFormat{player.frameSize(), timing, total}, &outcome.error)) return outcome;

    std::vector<double> triggers = range.triggerTimes.value_or(std::vector<double>{});
    std::sort(triggers.begin(), triggers.end());
    std::size_t nextTrigger = 0;

    player.reload();
    const qint64 stepsPerFrame = timing.stepsPerFrame();
    const qint64 lastStep = (first + total) * stepsPerFrame - 1;
    for (qint64 step = 0; step <= lastStep; ++step) {
        player.renderStep(step);
        // A trigger acts on the steps after its time, as the operator's
        // button does between two pictures.
        while (nextTrigger < triggers.size() && triggers[nextTrigger] <= player.time() + 1e-9) {
            if (!player.sendTrigger())
                outcome.warnings << QStringLiteral("the trigger at %1 s found the template not waiting").arg(triggers[nextTrigger]);
            ++nextTrigger;
        }
        const qint64 frame = step / stepsPerFrame;
        if (step % stepsPerFrame != stepsPerFrame - 1 || frame < first) continue;
        if (!sink.write(player.frame(), frame - first, &outcome.error)) {
            QString ignored;
            sink.close(&ignored);
            return outcome;
        }
        ++outcome.framesWritten;
        if (progress && !progress(outcome.framesWritten, total)) {
            outcome.cancelled = true;
            QString ignored;
            sink.close(&ignored);
            return outcome;
        }
    }
    outcome.ok = sink.close(&outcome.error);
    return outcome;
}

}  // namespace playout
