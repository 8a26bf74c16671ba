// Structure Member (by index or key) and Structure Count.

#include "runtime/patches/PatchFamilies.h"

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

}  // namespace

void registerStructurePatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCStructureMember"), factoryOf<StructureMemberPatch>(), [](const QString& identifier) {
        return identifier.isEmpty() || identifier == QLatin1String("index") || identifier == QLatin1String("key");
    });
    registry.add(QStringLiteral("QCStructureCount"), factoryOf<StructureCountPatch>());
}

}  // namespace runtime
