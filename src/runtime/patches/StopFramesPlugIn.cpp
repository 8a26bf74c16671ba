#include "runtime/patches/StopFramesPlugIn.h"

#include <algorithm>
#include <cmath>

namespace runtime {

StopFrameClock::StopFrameClock(std::vector<double> stopTimes, double duration, bool enabled)
    : stops_(std::move(stopTimes)), duration_(duration), enabled_(enabled)
{
    stops_.erase(std::remove_if(stops_.begin(), stops_.end(), [](double t) { return !std::isfinite(t); }), stops_.end());
    std::sort(stops_.begin(), stops_.end());
}

StopFrameClock StopFrameClock::fromPlugInState(const plist::Value& plugInState)
{
    std::vector<double> stops;
    for (const plist::Value& stop : plugInState.value("stopframes").array())
        if (const plist::Value* time = stop.find("time"); time && time->isNumber()) stops.push_back(time->toDouble());
    const plist::Value* duration = plugInState.find("compositionDuration");
    // Without a duration the template never finishes.
    const double d = duration && duration->isNumber() && duration->toDouble() > 0
                         ? duration->toDouble()
                         : std::numeric_limits<double>::infinity();
    return StopFrameClock(std::move(stops), d, plugInState.value("enableStopframesInQLNApps").toBool());
}

void StopFrameClock::reset()
{
    next_ = 0;
    heldTotal_ = 0;
    holding_ = false;
    holdStart_ = 0;
    lastTrigger_ = false;
    lastPatchTime_ = -std::numeric_limits<double>::infinity();
}

StopFrameClock::State StopFrameClock::advance(double patchTime, bool trigger)
{
    if (patchTime < lastPatchTime_) reset();
    lastPatchTime_ = patchTime;
    const bool rising = trigger && !lastTrigger_;
    lastTrigger_ = trigger;

    if (holding_ && rising) {
        // Released: the time moves on from the stop frame, continuously.
        heldTotal_ += patchTime - holdStart_;
        holding_ = false;
        ++next_;
    }
    State state;
    if (holding_) {
        state.time = stops_[next_];
    } else {
        state.time = patchTime - heldTotal_;
        if (enabled_ && next_ < stops_.size() && state.time >= stops_[next_]) {
            holding_ = true;
            holdStart_ = stops_[next_] + heldTotal_;
            state.time = stops_[next_];
        }
    }
    state.waitingForTrigger = holding_;
    if (state.time >= duration_) {
        state.time = duration_;
        state.active = false;
    }
    return state;
}

}  // namespace runtime
