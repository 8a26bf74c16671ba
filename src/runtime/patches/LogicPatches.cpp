// Boolean patches: Logic, Conditional, Counter, Pulse.

#include "runtime/patches/PatchFamilies.h"

#include <cmath>

namespace runtime {

namespace {

class LogicPatch : public Patch {
public:
    explicit LogicPatch(const PatchSetup& setup) : Patch(setup)
    {
        a_ = &addInput(QStringLiteral("inputValue1"), PortType::Boolean, false);
        b_ = &addInput(QStringLiteral("inputValue2"), PortType::Boolean, false);
        operation_ = &addInput(QStringLiteral("inputOperation"), PortType::Index, 0);
        result_ = &addOutput(QStringLiteral("outputResult"), PortType::Boolean);
    }
    InputHints inputHints(const InputPort& port) const override
    {
        if (&port != operation_) return {};
        return {{}, {}, {"AND", "OR", "XOR", "NOT", "NAND", "NOR", "NXOR"}};
    }
    void execute(ExecutionContext&, double) override
    {
        const bool a = boolean(a_), b = boolean(b_);
        bool r = false;
        switch (index(operation_)) {
        case 0: r = a && b; break;
        case 1: r = a || b; break;
        case 2: r = a != b; break;
        case 3: r = !a; break;
        case 4: r = !(a && b); break;
        case 5: r = !(a || b); break;
        case 6: r = a == b; break;
        default: r = a && b; break;
        }
        setOutput(*result_, r);
    }

private:
    InputPort* a_;
    InputPort* b_;
    InputPort* operation_;
    OutputPort* result_;
};

class ConditionalPatch : public Patch {
public:
    explicit ConditionalPatch(const PatchSetup& setup) : Patch(setup)
    {
        a_ = &addInput(QStringLiteral("inputValue1"), PortType::Number, 0.0);
        b_ = &addInput(QStringLiteral("inputValue2"), PortType::Number, 0.0);
        tolerance_ = &addInput(QStringLiteral("inputTolerance"), PortType::Number, 0.0);
        test_ = &addInput(QStringLiteral("inputTest"), PortType::Index, 0);
        result_ = &addOutput(QStringLiteral("outputResult"), PortType::Boolean);
    }
    InputHints inputHints(const InputPort& port) const override
    {
        if (&port != test_) return {};
        return {{}, {}, {"Is Equal", "Is Not Equal", "Is Greater Than", "Is Lower Than", "Is Greater or Equal", "Is Lower or Equal"}};
    }
    void execute(ExecutionContext&, double) override
    {
        const double a = number(a_), b = number(b_), tolerance = std::abs(number(tolerance_));
        const bool equal = std::abs(a - b) <= tolerance;
        bool r = false;
        switch (index(test_)) {
        case 0: r = equal; break;
        case 1: r = !equal; break;
        case 2: r = a > b; break;
        case 3: r = a < b; break;
        case 4: r = a >= b; break;
        case 5: r = a <= b; break;
        default: r = equal; break;
        }
        setOutput(*result_, r);
    }

private:
    InputPort* a_;
    InputPort* b_;
    InputPort* tolerance_;
    InputPort* test_;
    OutputPort* result_;
};

// Counts rising edges up and down; a rising reset edge returns to zero.
class CounterPatch : public Patch {
public:
    explicit CounterPatch(const PatchSetup& setup) : Patch(setup)
    {
        up_ = &addInput(QStringLiteral("inputSignal"), PortType::Boolean, false);
        down_ = &addInput(QStringLiteral("inputSignalDown"), PortType::Boolean, false);
        reset_ = &addInput(QStringLiteral("inputSignalReset"), PortType::Boolean, false);
        count_ = &addOutput(QStringLiteral("outputCount"), PortType::Number);
    }
    void execute(ExecutionContext&, double) override
    {
        const bool up = boolean(up_), down = boolean(down_), reset = boolean(reset_);
        if (reset && !lastReset_) count_->assign(0.0);
        else {
            double n = count_->value.toNumber();
            if (up && !lastUp_) n += 1;
            if (down && !lastDown_) n -= 1;
            count_->assign(n);
        }
        lastUp_ = up;
        lastDown_ = down;
        lastReset_ = reset;
    }
    void reset() override
    {
        lastUp_ = lastDown_ = lastReset_ = false;
        count_->assign(0.0);
    }

private:
    InputPort* up_;
    InputPort* down_;
    InputPort* reset_;
    OutputPort* count_;
    bool lastUp_ = false, lastDown_ = false, lastReset_ = false;
};

// True for one evaluation on a leading (0), trailing (1) or any (2) edge.
class PulsePatch : public Patch {
public:
    explicit PulsePatch(const PatchSetup& setup) : Patch(setup)
    {
        signal_ = &addInput(QStringLiteral("inputSignal"), PortType::Boolean, false);
        mode_ = &addInput(QStringLiteral("inputMode"), PortType::Index, 0);
        output_ = &addOutput(QStringLiteral("outputSignal"), PortType::Boolean);
    }
    TimeMode timeMode() const override { return TimeMode::Idle; }
    void execute(ExecutionContext&, double) override
    {
        const bool signal = boolean(signal_);
        bool pulse = false;
        switch (index(mode_)) {
        case 0: pulse = signal && !last_; break;
        case 1: pulse = !signal && last_; break;
        default: pulse = signal != last_; break;
        }
        last_ = signal;
        setOutput(*output_, pulse);
    }
    void reset() override { last_ = false; }

private:
    InputPort* signal_;
    InputPort* mode_;
    OutputPort* output_;
    bool last_ = false;
};

}  // namespace

void registerLogicPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCLogic"), factoryOf<LogicPatch>());
    registry.add(QStringLiteral("QCConditional"), factoryOf<ConditionalPatch>());
    registry.add(QStringLiteral("QCCounter"), factoryOf<CounterPatch>());
    registry.add(QStringLiteral("QCPulse"), factoryOf<PulsePatch>());
}

}  // namespace runtime
