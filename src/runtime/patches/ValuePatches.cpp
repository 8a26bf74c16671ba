// Patches that route values: Input Splitter, Multiplexer, Demultiplexer,
// Sample & Hold.

#include "runtime/ExecutionContext.h"
#include "runtime/patches/PatchFamilies.h"

#include "plist/LegacyArchive.h"

#include <algorithm>
#include <cmath>

namespace runtime {

namespace {

PortType portClassOf(const PatchSetup& setup)
{
    const plist::Value* portClass = setup.state.find("portClass");
    if (!portClass || !portClass->isString()) return PortType::Virtual;
    return portTypeFromPortClass(portClass->string()).value_or(PortType::Virtual);
}

// The port count a multiplexer or demultiplexer stores; capped so that a
// damaged file cannot ask for millions of ports.
int portCount(const PatchSetup& setup, const char* key, int fallback)
{
    return std::clamp(saturatedInt(Patch::stateNumber(setup, key, fallback)), 1, 1000);
}

// The "Input Splitter": passes its input through, typed by portClass and
// clamped to inputMin/inputMax. Root inputs are usually published from one.
class SplitterPatch : public Patch {
public:
    explicit SplitterPatch(const PatchSetup& setup) : Patch(setup), state_(setup.state)
    {
        const PortType type = portClassOf(setup);
        input_ = &addInput(QStringLiteral("input"), type);
        output_ = &addOutput(QStringLiteral("output"), type);
        if (type == PortType::Number || type == PortType::Index) {
            const plist::Value* min = setup.state.find("inputMin");
            const plist::Value* max = setup.state.find("inputMax");
            if (min && min->isNumber()) minimum_ = min->toDouble();
            // 2^32 is stored for "no maximum".
            if (max && max->isNumber() && max->toDouble() < 4294967296.0) maximum_ = max->toDouble();
        }
    }
    // The menu is read only when asked for: most splitters never are, and
    // decoding archived menus for thousands of them would slow loading.
    InputHints inputHints(const InputPort& port) const override
    {
        if (&port != input_) return {};
        InputHints hints{minimum_, maximum_, {}};
        for (const plist::Value& label : state_.value("indexLabels").array())
            if (label.isString()) hints.menuItems << QString::fromStdString(label.string());
        if (hints.menuItems.isEmpty()) hints.menuItems = archivedMenu(state_);
        return hints;
    }
    void execute(ExecutionContext&, double) override
    {
        Value v = input_->value;
        if (v.kind() == Value::Kind::Number && (minimum_ || maximum_)) {
            double d = v.toNumber();
            if (minimum_) d = std::max(d, *minimum_);
            if (maximum_) d = std::min(d, *maximum_);
            v = Value(d);
        }
        setOutput(*output_, std::move(v));
    }

private:
    static QStringList archivedMenu(const plist::Value& state)
    {
        const plist::Value userInfo = state.value("customInputPortStates").value("input").value("userInfo");
        if (!userInfo.isData()) return {};
        const auto archive = plist::legacy::decode(userInfo.dataBytes());
        const plist::legacy::Object* menu = archive ? archive->root.find("menu") : nullptr;
        QStringList items;
        if (menu)
            for (const auto& item : menu->elements()) items << QString::fromStdString(item.toString());
        return items;
    }

    plist::Value state_;
    InputPort* input_;
    OutputPort* output_;
    std::optional<double> minimum_;
    std::optional<double> maximum_;
};

// Passes source_<index>; only the selected source is evaluated.
class MultiplexerPatch : public Patch {
public:
    explicit MultiplexerPatch(const PatchSetup& setup) : Patch(setup)
    {
        const PortType type = portClassOf(setup);
        index_ = &addInput(QStringLiteral("inputIndex"), PortType::Index, 0);
        const int count = portCount(setup, "inputCount", 2);
        for (int i = 0; i < count; ++i) sources_.push_back(&addInput(QStringLiteral("source_%1").arg(i), type));
        output_ = &addOutput(QStringLiteral("output"), type);
    }
    bool pullsInputsItself() const override { return true; }
    void execute(ExecutionContext& context, double) override
    {
        context.pull(*index_);
        const int i = std::clamp(index(index_), 0, int(sources_.size()) - 1);
        context.pull(*sources_[std::size_t(i)]);
        setOutput(*output_, sources_[std::size_t(i)]->value);
    }

private:
    InputPort* index_;
    std::vector<InputPort*> sources_;
    OutputPort* output_;
};

// Sends its input to destination_<index>; the others keep their value, or
// fall back to empty when "resetOutputs" is set.
class DemultiplexerPatch : public Patch {
public:
    explicit DemultiplexerPatch(const PatchSetup& setup)
        : Patch(setup), resetOthers_(stateBool(setup, "resetOutputs", false))
    {
        const PortType type = portClassOf(setup);
        input_ = &addInput(QStringLiteral("input"), type);
        index_ = &addInput(QStringLiteral("inputIndex"), PortType::Index, 0);
        reset_ = &addInput(QStringLiteral("inputReset"), PortType::Boolean, false);
        const int count = portCount(setup, "outputCount", 2);
        for (int i = 0; i < count; ++i) outputs_.push_back(&addOutput(QStringLiteral("destination_%1").arg(i), type));
    }
    void execute(ExecutionContext&, double) override
    {
        const int selected = std::clamp(index(index_), 0, int(outputs_.size()) - 1);
        for (int i = 0; i < int(outputs_.size()); ++i) {
            if (i == selected) setOutput(*outputs_[std::size_t(i)], input_->value);
            else if (resetOthers_ || boolean(reset_)) setOutput(*outputs_[std::size_t(i)], Value());
        }
    }

private:
    bool resetOthers_;
    InputPort* input_;
    InputPort* index_;
    InputPort* reset_;
    std::vector<OutputPort*> outputs_;
};

class SampleHoldPatch : public Patch {
public:
    explicit SampleHoldPatch(const PatchSetup& setup) : Patch(setup)
    {
        value_ = &addInput(QStringLiteral("inputSampleValue"), PortType::Virtual);
        sampling_ = &addInput(QStringLiteral("inputSampling"), PortType::Boolean, false);
        resetSignal_ = &addInput(QStringLiteral("inputResetSignal"), PortType::Boolean, false);
        output_ = &addOutput(QStringLiteral("outputValue"), PortType::Virtual);
    }
    void execute(ExecutionContext&, double) override
    {
        if (boolean(resetSignal_)) setOutput(*output_, Value());
        else if (boolean(sampling_)) setOutput(*output_, value_->value);
    }
    void reset() override { output_->assign(Value()); }

private:
    InputPort* value_;
    InputPort* sampling_;
    InputPort* resetSignal_;
    OutputPort* output_;
};

}  // namespace

void registerValuePatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCSplitter"), factoryOf<SplitterPatch>());
    registry.add(QStringLiteral("QCMultiplexer"), factoryOf<MultiplexerPatch>());
    registry.add(QStringLiteral("QCDemultiplexer"), factoryOf<DemultiplexerPatch>());
    registry.add(QStringLiteral("QCSampleHold"), factoryOf<SampleHoldPatch>());
}

}  // namespace runtime
