// The Timeline patch: one Number output per track ("output_<portNumber>").

#include "runtime/patches/PatchFamilies.h"
#include "runtime/patches/TimelineCurve.h"

namespace runtime {

namespace {

class TimelinePatch : public Patch {
public:
    explicit TimelinePatch(const PatchSetup& setup) : Patch(setup)
    {
        // The tracks sit under "timeLines" → "timeLines"; older files may
        // hold the array directly.
        plist::Value tracks = setup.state.value("timeLines");
        if (tracks.isDictionary()) tracks = tracks.value("timeLines");
        int fallbackNumber = 1;
        for (const plist::Value& track : tracks.array()) {
            const plist::Value* number = track.find("portNumber");
            const int portNumber = number && number->isNumber() ? saturatedInt(number->toDouble()) : fallbackNumber;
            ++fallbackNumber;
            const QString key = QStringLiteral("output_%1").arg(portNumber);
            if (output(key)) {
                setup.report(QStringLiteral("two timeline tracks use %1; the second is ignored").arg(key));
                continue;
            }
            tracks_.push_back({&addOutput(key, PortType::Number), TimelineCurve::fromKeyFrames(track.value("keyFrames"))});
        }
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }
    void execute(ExecutionContext&, double time) override
    {
        for (auto& track : tracks_) setOutput(*track.output, track.curve.valueAt(time));
    }

private:
    struct Track {
        OutputPort* output;
        TimelineCurve curve;
    };
    std::vector<Track> tracks_;
};

}  // namespace

void registerTimelinePatch(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCTimeLine"), factoryOf<TimelinePatch>());
}

}  // namespace runtime
