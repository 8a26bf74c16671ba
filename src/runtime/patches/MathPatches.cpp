// Numeric processors: Math, Mathematical Expression, Round, Range, Random,
// Smooth, Differential Value.

#include "runtime/patches/Expression.h"
#include "runtime/patches/PatchFamilies.h"

#include <algorithm>
#include <cmath>

namespace runtime {

namespace {

// Left-to-right chain: value op_1 operand_1 op_2 operand_2 ...
class MathPatch : public Patch {
public:
    explicit MathPatch(const PatchSetup& setup) : Patch(setup)
    {
        value_ = &addInput(QStringLiteral("inputValue"), PortType::Number, 0.0);
        const int count = std::clamp(saturatedInt(stateNumber(setup, "operationCount", stateNumber(setup, "numberOfOperations", 1))), 0, 100);
        for (int k = 1; k <= count; ++k) {
            operations_.push_back(&addInput(QStringLiteral("operation_%1").arg(k), PortType::Index, 0));
            operands_.push_back(&addInput(QStringLiteral("operand_%1").arg(k), PortType::Number, 0.0));
        }
        result_ = &addOutput(QStringLiteral("outputValue"), PortType::Number);
    }
    InputHints inputHints(const InputPort& port) const override
    {
        if (std::find(operations_.begin(), operations_.end(), &port) == operations_.end()) return {};
        return {{}, {}, {"Add", "Subtract", "Multiply", "Divide", "Modulo", "Power", "Minimum", "Maximum"}};
    }
    void execute(ExecutionContext&, double) override
    {
        double v = number(value_);
        for (std::size_t k = 0; k < operations_.size(); ++k) v = apply(index(operations_[k]), v, number(operands_[k]));
        setOutput(*result_, v);
    }
    // Division and modulo by zero give 0 rather than infinities that
    // would poison everything downstream.
    static double apply(int operation, double a, double b)
    {
        switch (operation) {
        case 0: return a + b;
        case 1: return a - b;
        case 2: return a * b;
        case 3: return b == 0 ? 0.0 : a / b;
        case 4: return b == 0 ? 0.0 : std::fmod(a, b);
        case 5: return std::pow(a, b);
        case 6: return std::min(a, b);
        case 7: return std::max(a, b);
        default: return a;
        }
    }

private:
    InputPort* value_;
    std::vector<InputPort*> operations_;
    std::vector<InputPort*> operands_;
    OutputPort* result_;
};

class ExpressionPatch : public Patch {
public:
    explicit ExpressionPatch(const PatchSetup& setup) : Patch(setup)
    {
        const QString text = stateString(setup, "expression");
        QString error;
        expression_ = Expression::parse(text, &error);
        if (!expression_) setup.report(QStringLiteral("expression \"%1\": %2; the result stays 0").arg(text, error));
        else
            for (const QString& name : expression_->variables()) variables_.push_back(&addInput(name, PortType::Number, 0.0));
        result_ = &addOutput(QStringLiteral("outputResult"), PortType::Number);
    }
    void execute(ExecutionContext&, double) override
    {
        if (!expression_) return;
        values_.resize(variables_.size());
        for (std::size_t i = 0; i < variables_.size(); ++i) values_[i] = number(variables_[i]);
        setOutput(*result_, expression_->evaluate(values_));
    }

private:
    std::optional<Expression> expression_;
    std::vector<InputPort*> variables_;
    std::vector<double> values_;
    OutputPort* result_;
};

class RoundValuePatch : public Patch {
public:
    explicit RoundValuePatch(const PatchSetup& setup) : Patch(setup)
    {
        value_ = &addInput(QStringLiteral("inputValue"), PortType::Number, 0.0);
        round_ = &addOutput(QStringLiteral("outputRound"), PortType::Number);
        floor_ = &addOutput(QStringLiteral("outputFloor"), PortType::Number);
        ceil_ = &addOutput(QStringLiteral("outputCeil"), PortType::Number);
    }
    void execute(ExecutionContext&, double) override
    {
        const double v = number(value_);
        setOutput(*round_, std::round(v));
        setOutput(*floor_, std::floor(v));
        setOutput(*ceil_, std::ceil(v));
    }

private:
    InputPort* value_;
    OutputPort* round_;
    OutputPort* floor_;
    OutputPort* ceil_;
};

class RangeValuePatch : public Patch {
public:
    explicit RangeValuePatch(const PatchSetup& setup) : Patch(setup)
    {
        value_ = &addInput(QStringLiteral("inputValue"), PortType::Number, 0.0);
        min_ = &addInput(QStringLiteral("inputMin"), PortType::Number, 0.0);
        max_ = &addInput(QStringLiteral("inputMax"), PortType::Number, 1.0);
        clip_ = &addOutput(QStringLiteral("outputClip"), PortType::Number);
        roll_ = &addOutput(QStringLiteral("outputRoll"), PortType::Number);
    }
    void execute(ExecutionContext&, double) override
    {
        const double v = number(value_), lo = std::min(number(min_), number(max_)), hi = std::max(number(min_), number(max_));
        setOutput(*clip_, std::clamp(v, lo, hi));
        const double span = hi - lo;
        setOutput(*roll_, span > 0 ? lo + (v - lo - span * std::floor((v - lo) / span)) : lo);
    }

private:
    InputPort* value_;
    InputPort* min_;
    InputPort* max_;
    OutputPort* clip_;
    OutputPort* roll_;
};

// Deterministic pseudo-random numbers from a seed and a step number, so
// that a frame renders the same every time.
double hashToUnit(std::uint64_t seed, std::int64_t step)
{
    std::uint64_t x = seed * 0x9E3779B97F4A7C15ull ^ std::uint64_t(step) * 0xBF58476D1CE4E5B9ull;
    x ^= x >> 31;
    x *= 0x94D049BB133111EBull;
    x ^= x >> 29;
    return double(x >> 11) / double(1ull << 53);
}

// A new value per frame-time step; with Perlin noise, a smooth curve that
// moves at "variability" cycles per second.
class RandomPatch : public Patch {
public:
    explicit RandomPatch(const PatchSetup& setup)
        : Patch(setup),
          seed_(std::uint64_t(saturatedInt64(stateNumber(setup, "randomSeed", 1)))),
          variability_(std::max(stateNumber(setup, "variability", 1.0), 0.0)),
          smooth_(stateBool(setup, "usePerlinNoise", false))
    {
        min_ = &addInput(QStringLiteral("inputMin"), PortType::Number, 0.0);
        max_ = &addInput(QStringLiteral("inputMax"), PortType::Number, 1.0);
        value_ = &addOutput(QStringLiteral("outputValue"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }
    void execute(ExecutionContext&, double time) override
    {
        double unit = 0;
        if (smooth_) {
            const double x = time * std::max(variability_, 0.01);
            const double i = std::floor(x), f = x - i;
            const double s = f * f * (3 - 2 * f);
            unit = hashToUnit(seed_, saturatedInt64(i)) * (1 - s) + hashToUnit(seed_, saturatedInt64(i) + 1) * s;
        } else {
            unit = hashToUnit(seed_, ++step_);
        }
        setOutput(*value_, number(min_) + (number(max_) - number(min_)) * unit);
    }
    void reset() override { step_ = 0; }

private:
    std::uint64_t seed_;
    double variability_;
    bool smooth_;
    std::int64_t step_ = 0;
    InputPort* min_;
    InputPort* max_;
    OutputPort* value_;
};

// Follows its input linearly over the increasing or decreasing duration.
class SmoothPatch : public Patch {
public:
    explicit SmoothPatch(const PatchSetup& setup) : Patch(setup)
    {
        value_ = &addInput(QStringLiteral("inputValue"), PortType::Number, 0.0);
        up_ = &addInput(QStringLiteral("inputIncreasingDuration"), PortType::Number, 1.0);
        down_ = &addInput(QStringLiteral("inputDecreasingDuration"), PortType::Number, 1.0);
        addInput(QStringLiteral("inputIncreasingInterpolation"), PortType::Index, 0);
        addInput(QStringLiteral("inputDecreasingInterpolation"), PortType::Index, 0);
        output_ = &addOutput(QStringLiteral("outputValue"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }
    void execute(ExecutionContext&, double time) override
    {
        const double target = number(value_);
        if (!started_) {
            started_ = true;
            from_ = current_ = target_ = target;
            start_ = time;
        }
        if (target != target_) {
            from_ = current_;
            target_ = target;
            start_ = time;
        }
        const double duration = target_ >= from_ ? number(up_) : number(down_);
        const double p = duration > 0 ? std::clamp((time - start_) / duration, 0.0, 1.0) : 1.0;
        current_ = from_ + (target_ - from_) * p;
        setOutput(*output_, current_);
    }
    void reset() override { started_ = false; }

private:
    InputPort* value_;
    InputPort* up_;
    InputPort* down_;
    OutputPort* output_;
    bool started_ = false;
    double from_ = 0, current_ = 0, target_ = 0, start_ = 0;
};

// "integrator" sums value × dt; "derivator" gives the rate of change.
class DifferentialValuePatch : public Patch {
public:
    explicit DifferentialValuePatch(const PatchSetup& setup)
        : Patch(setup), integrate_(setup.identifier != QLatin1String("derivator"))
    {
        value_ = &addInput(QStringLiteral("inputValue"), PortType::Number, 0.0);
        resetSignal_ = &addInput(QStringLiteral("inputResetSignal"), PortType::Boolean, false);
        output_ = &addOutput(QStringLiteral("outputValue"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::TimeBase; }
    void execute(ExecutionContext&, double time) override
    {
        const double v = number(value_);
        if (boolean(resetSignal_) || !started_) {
            started_ = true;
            sum_ = 0;
            setOutput(*output_, 0.0);
        } else {
            const double dt = time - lastTime_;
            if (integrate_) {
                sum_ += v * dt;
                setOutput(*output_, sum_);
            } else if (dt > 0) {
                setOutput(*output_, (v - lastValue_) / dt);
            }
        }
        lastTime_ = time;
        lastValue_ = v;
    }
    void reset() override { started_ = false; }

private:
    bool integrate_;
    InputPort* value_;
    InputPort* resetSignal_;
    OutputPort* output_;
    bool started_ = false;
    double sum_ = 0, lastTime_ = 0, lastValue_ = 0;
};

}  // namespace

void registerMathPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCMath"), factoryOf<MathPatch>());
    registry.add(QStringLiteral("QCExpression"), factoryOf<ExpressionPatch>());
    registry.add(QStringLiteral("QCRoundValue"), factoryOf<RoundValuePatch>());
    registry.add(QStringLiteral("QCRangeValue"), factoryOf<RangeValuePatch>());
    registry.add(QStringLiteral("QCRandom"), factoryOf<RandomPatch>());
    registry.add(QStringLiteral("QCSmooth"), factoryOf<SmoothPatch>());
    registry.add(QStringLiteral("QCDifferentialValue"), factoryOf<DifferentialValuePatch>());
}

}  // namespace runtime
