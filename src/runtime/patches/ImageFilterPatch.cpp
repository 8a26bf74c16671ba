// QCImageFilter: Core Image filters, selected by the node's identifier. The
// filters implemented here are the table in patches/filters/; any other
// identifier loads as an inert node.

#include "runtime/patches/PatchFamilies.h"
#include "runtime/patches/filters/FilterDefinition.h"

namespace runtime {

namespace {

class ImageFilterPatch : public Patch {
public:
    explicit ImageFilterPatch(const PatchSetup& setup)
        : Patch(setup), filter_(findFilterDefinition(setup.identifier)), normalized_(stateBool(setup, "normalizeCoordinates", false))
    {
        for (const FilterPort& p : filter_->ports) {
            const Value initial = p.type == PortType::Color ? Value(p.color) : p.type == PortType::Number ? Value(p.number) : Value();
            ports_.emplace_back(p.key, &addInput(QString::fromLatin1(p.key), p.type, initial));
        }
        image_ = &addOutput(QStringLiteral("outputImage"), PortType::Image);
    }
    void execute(ExecutionContext&, double) override
    {
        setOutput(*image_, filter_->apply(FilterInputs(ports_, normalized_)));
    }

private:
    const FilterDefinition* filter_;
    bool normalized_;
    FilterInputs::Ports ports_;
    OutputPort* image_;
};

}  // namespace

void registerImageFilterPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCImageFilter"), factoryOf<ImageFilterPatch>(),
                 [](const QString& identifier) { return findFilterDefinition(identifier) != nullptr; });
}

}  // namespace runtime
