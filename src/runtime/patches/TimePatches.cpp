// Patches driven by time: Patch Time, System Time, Stop Watch,
// Interpolation, LFO. The Timeline lives in TimelinePatch.cpp.

#include "runtime/patches/Easing.h"
#include "runtime/patches/PatchFamilies.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace runtime {

namespace {

class PatchTimePatch : public Patch {
public:
    explicit PatchTimePatch(const PatchSetup& setup) : Patch(setup)
    {
        time_ = &addOutput(QStringLiteral("outputTime"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }
    void execute(ExecutionContext&, double time) override { setOutput(*time_, time); }

private:
    OutputPort* time_;
};

// Wall-clock seconds since 2001-01-01 00:00 GMT (the platform's reference date).
class SystemTimePatch : public Patch {
public:
    explicit SystemTimePatch(const PatchSetup& setup) : Patch(setup)
    {
        time_ = &addOutput(QStringLiteral("outputTime"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::Idle; }
    void execute(ExecutionContext&, double) override
    {
        static const qint64 reference = QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC).toMSecsSinceEpoch();
        setOutput(*time_, double(QDateTime::currentMSecsSinceEpoch() - reference) / 1000.0);
    }

private:
    OutputPort* time_;
};

// "Stop Watch": measures patch time between start and stop signals
// (rising edges); reset returns to zero.
class ClockPatch : public Patch {
public:
    explicit ClockPatch(const PatchSetup& setup) : Patch(setup)
    {
        start_ = &addInput(QStringLiteral("inputStartSignal"), PortType::Boolean, false);
        stop_ = &addInput(QStringLiteral("inputStopSignal"), PortType::Boolean, false);
        resetSignal_ = &addInput(QStringLiteral("inputResetSignal"), PortType::Boolean, false);
        time_ = &addOutput(QStringLiteral("outputTime"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }
    void execute(ExecutionContext&, double time) override
    {
        const bool start = boolean(start_), stop = boolean(stop_), reset = boolean(resetSignal_);
        if (running_) elapsed_ += std::max(time - lastTime_, 0.0);
        if (start && !lastStart_) running_ = true;
        if (stop && !lastStop_) running_ = false;
        if (reset && !lastReset_) elapsed_ = 0;
        lastStart_ = start;
        lastStop_ = stop;
        lastReset_ = reset;
        lastTime_ = time;
        setOutput(*time_, elapsed_);
    }
    void reset() override
    {
        running_ = lastStart_ = lastStop_ = lastReset_ = false;
        elapsed_ = lastTime_ = 0;
    }

private:
    InputPort* start_;
    InputPort* stop_;
    InputPort* resetSignal_;
    OutputPort* time_;
    bool running_ = false, lastStart_ = false, lastStop_ = false, lastReset_ = false;
    double elapsed_ = 0, lastTime_ = 0;
};

class InterpolationPatch : public Patch {
public:
    explicit InterpolationPatch(const PatchSetup& setup) : Patch(setup)
    {
        start_ = &addInput(QStringLiteral("inputValue1"), PortType::Number, 0.0);
        end_ = &addInput(QStringLiteral("inputValue2"), PortType::Number, 1.0);
        duration_ = &addInput(QStringLiteral("inputDuration"), PortType::Number, 1.0);
        addInput(QStringLiteral("inputTension"), PortType::Number, 0.0);
        repeat_ = &addInput(QStringLiteral("inputRepeat"), PortType::Index, 0);
        curve_ = &addInput(QStringLiteral("inputInterpolation"), PortType::Index, 0);
        value_ = &addOutput(QStringLiteral("outputValue"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }
    InputHints inputHints(const InputPort& port) const override
    {
        if (&port == repeat_) return {{}, {}, {"None", "Loop", "Mirrored Loop", "Mirrored Loop Once"}};
        if (&port == curve_) return {{}, {}, easingNames()};
        return {};
    }
    void execute(ExecutionContext&, double time) override
    {
        const double duration = number(duration_);
        double p = duration > 0 ? time / duration : 1.0;
        switch (index(repeat_)) {
        case 1: p -= std::floor(p); break;
        case 2: {
            p = std::fmod(std::abs(p), 2.0);
            if (p > 1) p = 2 - p;
            break;
        }
        case 3:
            if (p > 2) p = 0;  // after one round trip it rests at the start value
            else if (p > 1) p = 2 - p;
            break;
        default: break;
        }
        p = std::clamp(p, 0.0, 1.0);
        const double a = number(start_), b = number(end_);
        setOutput(*value_, a + (b - a) * ease(index(curve_), p));
    }

private:
    InputPort* start_;
    InputPort* end_;
    InputPort* duration_;
    InputPort* repeat_;
    InputPort* curve_;
    OutputPort* value_;
};

double unitHash(std::int64_t n, std::uint64_t seed)
{
    std::uint64_t x = std::uint64_t(n) * 0x9E3779B97F4A7C15ull + seed;
    x ^= x >> 30;
    x *= 0xBF58476D1CE4E5B9ull;
    x ^= x >> 27;
    return double(x >> 11) / double(1ull << 53);
}

// value = offset + amplitude × wave(time / period + phase / 360°).
class LfoPatch : public Patch {
public:
    explicit LfoPatch(const PatchSetup& setup)
        : Patch(setup), seed_(std::uint64_t(saturatedInt64(stateNumber(setup, "randomSeed", 0))))
    {
        type_ = &addInput(QStringLiteral("inputType"), PortType::Index, 0);
        period_ = &addInput(QStringLiteral("inputPeriod"), PortType::Number, 1.0);
        phase_ = &addInput(QStringLiteral("inputPhase"), PortType::Number, 0.0);
        amplitude_ = &addInput(QStringLiteral("inputAmplitude"), PortType::Number, 0.5);
        offset_ = &addInput(QStringLiteral("inputOffset"), PortType::Number, 0.5);
        pwm_ = &addInput(QStringLiteral("inputPWMRatio"), PortType::Number, 0.25);
        value_ = &addOutput(QStringLiteral("outputValue"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }
    InputHints inputHints(const InputPort& port) const override
    {
        if (&port != type_) return {};
        return {{}, {}, {"Sin", "Cos", "Triangle", "Square", "Sawtooth Up", "Sawtooth Down", "PWM", "Random"}};
    }
    void execute(ExecutionContext&, double time) override
    {
        const double period = number(period_);
        const double u = (period != 0 ? time / period : 0.0) + number(phase_) / 360.0;
        const double f = u - std::floor(u);
        double wave = 0;
        switch (index(type_)) {
        case 0: wave = std::sin(2 * std::numbers::pi * u); break;
        case 1: wave = std::cos(2 * std::numbers::pi * u); break;
        case 2: {
            const double g = u + 0.25 - std::floor(u + 0.25);
            wave = 1 - 4 * std::abs(g - 0.5);
            break;
        }
        case 3: wave = f < 0.5 ? 1 : -1; break;
        case 4: wave = 2 * f - 1; break;
        case 5: wave = 1 - 2 * f; break;
        case 6: wave = f < number(pwm_) ? 1 : -1; break;
        case 7: wave = 2 * unitHash(saturatedInt64(std::floor(u)), seed_) - 1; break;
        default: wave = std::sin(2 * std::numbers::pi * u); break;
        }
        setOutput(*value_, number(offset_) + number(amplitude_) * wave);
    }

private:
    std::uint64_t seed_;
    InputPort* type_;
    InputPort* period_;
    InputPort* phase_;
    InputPort* amplitude_;
    InputPort* offset_;
    InputPort* pwm_;
    OutputPort* value_;
};

}  // namespace

void registerTimelinePatch(PatchRegistry& registry);

void registerTimePatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCTime"), factoryOf<PatchTimePatch>());
    registry.add(QStringLiteral("QCSystemTime"), factoryOf<SystemTimePatch>());
    registry.add(QStringLiteral("QCClock"), factoryOf<ClockPatch>());
    registry.add(QStringLiteral("QCInterpolation"), factoryOf<InterpolationPatch>());
    registry.add(QStringLiteral("QCLFO"), factoryOf<LfoPatch>());
    registerTimelinePatch(registry);
}

}  // namespace runtime
