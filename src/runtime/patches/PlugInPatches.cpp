// QCPlugInPatch nodes. The runtime implements the two plug-ins the export
// writes (identified by their class names); any other plug-in loads inert.

#include "runtime/patches/PatchFamilies.h"
#include "runtime/patches/StopFramesPlugIn.h"

namespace runtime {

namespace {

// "QLNPatchTimePlugIn": the time the node receives.
class PatchTimePlugIn : public Patch {
public:
    explicit PatchTimePlugIn(const PatchSetup& setup) : Patch(setup)
    {
        time_ = &addOutput(QStringLiteral("outputTime"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }
    void execute(ExecutionContext&, double time) override { setOutput(*time_, time); }

private:
    OutputPort* time_;
};

class StopFramesPatch : public Patch {
public:
    explicit StopFramesPatch(const PatchSetup& setup)
        : Patch(setup), clock_(StopFrameClock::fromPlugInState(setup.state.value("plugInState")))
    {
        trigger_ = &addInput(QStringLiteral("inputTrigger"), PortType::Boolean, false);
        time_ = &addOutput(QStringLiteral("outputTime"), PortType::Number);
        waiting_ = &addOutput(QStringLiteral("outputWaitingForTrigger"), PortType::Boolean);
        active_ = &addOutput(QStringLiteral("outputActive"), PortType::Boolean);
        active_->assign(true);
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }
    void execute(ExecutionContext&, double time) override
    {
        const StopFrameClock::State s = clock_.advance(time, boolean(trigger_));
        setOutput(*time_, s.time);
        setOutput(*waiting_, s.waitingForTrigger);
        setOutput(*active_, s.active);
    }
    void reset() override { clock_.reset(); }

private:
    StopFrameClock clock_;
    InputPort* trigger_;
    OutputPort* time_;
    OutputPort* waiting_;
    OutputPort* active_;
};

bool isOurPlugIn(const QString& identifier)
{
    return identifier == QLatin1String("QLNPatchTimePlugIn") || identifier == QLatin1String("QLNStopframesPlugIn");
}

}  // namespace

void registerPlugInPatches(PatchRegistry& registry)
{
    registry.add(
        QStringLiteral("QCPlugInPatch"),
        [](const PatchSetup& setup) -> std::unique_ptr<Patch> {
            if (setup.identifier == QLatin1String("QLNStopframesPlugIn")) return std::make_unique<StopFramesPatch>(setup);
            return std::make_unique<PatchTimePlugIn>(setup);
        },
        isOurPlugIn);
}

}  // namespace runtime
