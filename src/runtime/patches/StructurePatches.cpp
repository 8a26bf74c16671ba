// Structure Member (by index or key), Structure Count and Queue.

#include "runtime/patches/PatchFamilies.h"

#include <deque>

namespace runtime {

namespace {

class StructureMemberPatch : public Patch {
public:
    explicit StructureMemberPatch(const PatchSetup& setup)
        : Patch(setup), byKey_(setup.identifier == QLatin1String("key"))
    {
        structure_ = &addInput(QStringLiteral("inputStructure"), PortType::Structure);
        if (byKey_) key_ = &addInput(QStringLiteral("inputKey"), PortType::String, QString());
        else key_ = &addInput(QStringLiteral("inputIndex"), PortType::Index, 0);
        member_ = &addOutput(QStringLiteral("outputMember"), PortType::Virtual);
    }
    void execute(ExecutionContext&, double) override
    {
        const StructurePtr s = structure_->value.toStructure();
        const Value* v = nullptr;
        if (s) v = byKey_ ? s->member(string(key_)) : s->memberAt(std::size_t(index(key_)));
        setOutput(*member_, v ? *v : Value());
    }

private:
    bool byKey_;
    InputPort* structure_;
    InputPort* key_;
    OutputPort* member_;
};

class StructureCountPatch : public Patch {
public:
    explicit StructureCountPatch(const PatchSetup& setup) : Patch(setup)
    {
        structure_ = &addInput(QStringLiteral("inputStructure"), PortType::Structure);
        count_ = &addOutput(QStringLiteral("outputCount"), PortType::Index);
    }
    void execute(ExecutionContext&, double) override
    {
        const StructurePtr s = structure_->value.toStructure();
        setOutput(*count_, s ? double(s->count()) : 0.0);
    }

private:
    InputPort* structure_;
    OutputPort* count_;
};

// Queue: while filling, each evaluation adds the input value at the end and
// drops the oldest beyond inputSize; the output is the queue, oldest first.
// With `continuous` off a value is added only when it changed. The reset
// signal empties it (on its rising edge).
class QueuePatch : public Patch {
public:
    explicit QueuePatch(const PatchSetup& setup) : Patch(setup), continuous_(stateBool(setup, "continuous", false))
    {
        value_ = &addInput(QStringLiteral("inputValue"), PortType::Virtual);
        size_ = &addInput(QStringLiteral("inputSize"), PortType::Index, 10);
        filling_ = &addInput(QStringLiteral("inputFilling"), PortType::Boolean, true);
        reset_ = &addInput(QStringLiteral("inputResetSignal"), PortType::Boolean, false);
        queue_ = &addOutput(QStringLiteral("outputQueue"), PortType::Structure);
    }
    // A continuous queue takes a value every frame, changed or not.
    TimeMode timeMode() const override { return continuous_ ? TimeMode::Idle : TimeMode::None; }
    void reset() override
    {
        items_.clear();
        lastReset_ = false;
    }
    void execute(ExecutionContext&, double) override
    {
        const bool resetNow = boolean(reset_);
        if (resetNow && !lastReset_) items_.clear();
        lastReset_ = resetNow;
        const std::size_t size = std::size_t(std::clamp(index(size_), 0, kMaxSize));
        if (boolean(filling_) && (continuous_ || value_->changed)) items_.push_back(value_->value);
        while (items_.size() > size) items_.pop_front();
        std::vector<Structure::Member> members;
        members.reserve(items_.size());
        for (const Value& v : items_) members.push_back({QString(), v});
        setOutput(*queue_, Value(std::make_shared<const Structure>(std::move(members))));
    }

private:
    static constexpr int kMaxSize = 100000;
    bool continuous_;
    InputPort* value_;
    InputPort* size_;
    InputPort* filling_;
    InputPort* reset_;
    OutputPort* queue_;
    std::deque<Value> items_;
    bool lastReset_ = false;
};

}  // namespace

void registerStructurePatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCQueue"), factoryOf<QueuePatch>());
    registry.add(QStringLiteral("QCStructureMember"), factoryOf<StructureMemberPatch>(), [](const QString& identifier) {
        return identifier.isEmpty() || identifier == QLatin1String("index") || identifier == QLatin1String("key");
    });
    registry.add(QStringLiteral("QCStructureCount"), factoryOf<StructureCountPatch>());
}

}  // namespace runtime
