// Physics and Physics Effect: numbers that move under forces, one step per
// frame. An effect pushes each value it passes on by force × step²; the
// Physics patch reads the push as an acceleration, keeps a velocity with
// friction and integrates. A Recursor closes the loop so that the forces see
// last frame's positions. The reading of the files and the approximations
// are in docs/runtime.md.

#include "runtime/patches/PatchFamilies.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace runtime {

namespace {

// The longest step one evaluation simulates. Forces are computed by the
// graph once per frame, so a longer step would apply a stale force for too
// long (a spring of stiffness K is stable while K·step² < 4: K < 1600 here).
constexpr double kMaxStep = 1.0 / 20.0;
// Values and velocities stay within this: a diverging file saturates
// instead of reaching infinity and NaN.
constexpr double kLimit = 1e12;
constexpr int kMaxValues = 100;

double bounded(double v)
{
    return std::clamp(v, -kLimit, kLimit);
}

int valueCount(const PatchSetup& setup)
{
    const int stored = saturatedInt(Patch::stateNumber(setup, "numberOfInputs", 1));
    if (stored > kMaxValues) setup.report(QStringLiteral("%1 values asked for; the first %2 are simulated").arg(stored).arg(kMaxValues));
    return std::clamp(stored, 0, kMaxValues);
}

// Turns patch times into simulation steps: the time since the previous
// distinct time, at most kMaxStep. The first time, and a time earlier than
// the last (a rewind), start over with a step of 0. Evaluating again at the
// same time repeats the same step, so extra passes change nothing.
class StepClock {
public:
    enum class Tick { Start, Advance, Repeat };

    Tick tick(double time)
    {
        if (!std::isfinite(time)) time = started_ ? current_ : 0.0;
        if (!started_ || time < current_) {
            started_ = true;
            current_ = time;
            step_ = 0;
            return Tick::Start;
        }
        if (time == current_) return Tick::Repeat;
        step_ = std::min(time - current_, kMaxStep);
        current_ = time;
        return Tick::Advance;
    }
    double step() const { return step_; }
    void reset() { started_ = false; }

private:
    bool started_ = false;
    double current_ = 0;
    double step_ = 0;
};

class PhysicsPatch : public Patch {
public:
    explicit PhysicsPatch(const PatchSetup& setup) : Patch(setup)
    {
        sampling_ = &addInput(QStringLiteral("inputSampling"), PortType::Boolean, false);
        friction_ = &addInput(QStringLiteral("inputFriction"), PortType::Number, 0.0);
        const int count = valueCount(setup);
        for (int k = 1; k <= count; ++k) {
            Body body;
            body.input = &addInput(QStringLiteral("input_%1").arg(k), PortType::Number, 0.0);
            body.output = &addOutput(QStringLiteral("output_%1").arg(k), PortType::Number);
            bodies_.push_back(body);
        }
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }

    void execute(ExecutionContext&, double time) override
    {
        const StepClock::Tick tick = clock_.tick(time);
        const double dt = clock_.step();
        const double friction = std::isfinite(number(friction_)) ? std::max(0.0, number(friction_)) : 0.0;
        // Friction is a drag on the velocity, applied exactly over the step.
        const double decay = std::exp(-friction * dt);
        const bool sampling = boolean(sampling_);
        for (Body& body : bodies_) {
            const double in = number(body.input);
            if (dt == 0) {
                // Starting (or repeating the start): the value is the input, at rest.
                body.x = std::isfinite(in) ? bounded(in) : 0.0;
                body.v = 0;
            } else {
                if (tick == StepClock::Tick::Advance) {
                    body.startX = body.x;
                    body.startV = body.v;
                }
                step(body, in, dt, decay, sampling);
            }
            setOutput(*body.output, body.x);
        }
    }

    void reset() override { clock_.reset(); }

private:
    struct Body {
        InputPort* input = nullptr;
        OutputPort* output = nullptr;
        double x = 0, v = 0;            // the result at the current time
        double startX = 0, startV = 0;  // the result at the time before
    };

    // One step from the previous result. The input is where the effects
    // pushed the previous position to: the push is this step's acceleration
    // × dt², any other change of the input counts the same way. While
    // sampling, the value follows the input and the velocity is how fast it
    // moves, so that letting go keeps the motion (a flick).
    static void step(Body& body, double in, double dt, double decay, bool sampling)
    {
        const double target = std::isfinite(in) ? bounded(in) : body.startX;
        const double push = target - body.startX;
        if (sampling) {
            body.x = target;
            body.v = bounded(push / dt);
            return;
        }
        body.v = bounded(body.startV * decay + push / dt);
        body.x = bounded(body.startX + body.v * dt);
    }

    InputPort* sampling_;
    InputPort* friction_;
    std::vector<Body> bodies_;
    StepClock clock_;
};

// The "force" effect: passes each value on, pushed by its force × step².
// Value k comes in on "input_<k−1>" (the files connect "input_0" to the
// effect with one value) and goes out on "output_<k>".
class PhysicsForcePatch : public Patch {
public:
    explicit PhysicsForcePatch(const PatchSetup& setup) : Patch(setup)
    {
        sampling_ = &addInput(QStringLiteral("inputSampling"), PortType::Boolean, false);
        const int count = valueCount(setup);
        for (int k = 1; k <= count; ++k) {
            Channel channel;
            channel.input = &addInput(QStringLiteral("input_%1").arg(k - 1), PortType::Number, 0.0);
            channel.force = &addInput(QStringLiteral("effect_%1").arg(k), PortType::Number, 0.0);
            channel.output = &addOutput(QStringLiteral("output_%1").arg(k), PortType::Number);
            channels_.push_back(channel);
        }
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }

    void execute(ExecutionContext&, double time) override
    {
        clock_.tick(time);
        const double dt = clock_.step();
        // While sampling the value is held where the input puts it: no push.
        const bool pushing = dt > 0 && !boolean(sampling_);
        for (Channel& channel : channels_) {
            const double in = number(channel.input);
            const double x = std::isfinite(in) ? bounded(in) : 0.0;
            const double force = number(channel.force);
            const double push = pushing && std::isfinite(force) ? force * dt * dt : 0.0;
            setOutput(*channel.output, bounded(x + push));
        }
    }

    void reset() override { clock_.reset(); }

private:
    struct Channel {
        InputPort* input = nullptr;
        InputPort* force = nullptr;
        OutputPort* output = nullptr;
    };
    InputPort* sampling_;
    std::vector<Channel> channels_;
    StepClock clock_;
};

}  // namespace

void registerPhysicsPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCPhysics"), factoryOf<PhysicsPatch>());
    // Only the force effect is known from files; other effects stay inert
    // and are listed as unsupported.
    registry.add(QStringLiteral("QCPhysicsEffect"), factoryOf<PhysicsForcePatch>(),
                 [](const QString& identifier) { return identifier == QLatin1String("force"); });
}

}  // namespace runtime
