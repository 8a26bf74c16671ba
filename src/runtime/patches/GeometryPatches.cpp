// Anchor Position: the centre of a box of the given size whose anchor
// point sits at (X, Y). Anchors in menu order: top left, top centre, top
// right, centre left, centre, centre right, bottom left, bottom centre,
// bottom right.

#include "runtime/patches/PatchFamilies.h"

namespace runtime {

namespace {

class AnchorPositionPatch : public Patch {
public:
    explicit AnchorPositionPatch(const PatchSetup& setup) : Patch(setup)
    {
        mode_ = &addInput(QStringLiteral("inputMode"), PortType::Index, 4);
        x_ = &addInput(QStringLiteral("inputX"), PortType::Number, 0.0);
        y_ = &addInput(QStringLiteral("inputY"), PortType::Number, 0.0);
        width_ = &addInput(QStringLiteral("inputWidth"), PortType::Number, 0.0);
        height_ = &addInput(QStringLiteral("inputHeight"), PortType::Number, 0.0);
        outX_ = &addOutput(QStringLiteral("outputX"), PortType::Number);
        outY_ = &addOutput(QStringLiteral("outputY"), PortType::Number);
    }
    InputHints inputHints(const InputPort& port) const override
    {
        if (&port != mode_) return {};
        return {{}, {}, {"Top Left", "Top Center", "Top Right", "Center Left", "Center", "Center Right", "Bottom Left",
                         "Bottom Center", "Bottom Right"}};
    }
    void execute(ExecutionContext&, double) override
    {
        const int mode = std::clamp(index(mode_), 0, 8);
        const int column = mode % 3, row = mode / 3;  // 0 left/top, 1 centre, 2 right/bottom
        const double w = number(width_), h = number(height_);
        setOutput(*outX_, number(x_) + (1 - column) * w / 2);
        setOutput(*outY_, number(y_) + (row - 1) * h / 2);
    }

private:
    InputPort* mode_;
    InputPort* x_;
    InputPort* y_;
    InputPort* width_;
    InputPort* height_;
    OutputPort* outX_;
    OutputPort* outY_;
};

}  // namespace

void registerGeometryPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCAnchorPosition"), factoryOf<AnchorPositionPatch>());
}

}  // namespace runtime
