#pragma once
// The time keeping of the stop-frames plug-in ("QLNStopframesPlugIn"): the
// output time runs with the patch time but holds at each stop frame until a
// rising trigger edge releases it; the held spans are subtracted from then
// on. When the output time reaches the composition's duration the plug-in
// turns inactive and the time stays at the duration.

#include "plist/Value.h"

#include <limits>
#include <vector>

namespace runtime {

class StopFrameClock {
public:
    struct State {
        double time = 0;
        bool waitingForTrigger = false;
        bool active = true;
    };

    StopFrameClock(std::vector<double> stopTimes, double duration, bool enabled);
    // {"compositionDuration", "enableStopframesInQLNApps", "stopframes": [{"name", "time"}]}
    static StopFrameClock fromPlugInState(const plist::Value& plugInState);

    // The output for the given patch time and trigger level. A patch time
    // earlier than the last one starts over (the template was reloaded).
    State advance(double patchTime, bool trigger);
    void reset();

private:
    std::vector<double> stops_;  // ascending
    double duration_;
    bool enabled_;

    std::size_t next_ = 0;     // first stop frame not yet released
    double heldTotal_ = 0;     // patch time spent holding, released spans only
    bool holding_ = false;
    double holdStart_ = 0;     // patch time at which the current hold began
    bool lastTrigger_ = false;
    double lastPatchTime_ = -std::numeric_limits<double>::infinity();
};

}  // namespace runtime
