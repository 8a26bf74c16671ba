// Teapot: Newell's teapot as a mesh, with the ports of the other 3-D
// objects (position, rotation in degrees, colour, image, blending, depth
// testing, culling) and a scale; at scale 1 it is 1 unit from the spout's
// tip to the back of the handle (Quartz Composer's own size is not known).

#include "runtime/ExecutionContext.h"
#include "runtime/TeapotData.h"
#include "runtime/patches/PatchFamilies.h"

namespace runtime {

namespace {

// Eight steps a patch side: 4 096 triangles, smooth enough to be lit at a
// broadcast frame's size.
constexpr int kSteps = 8;

const std::vector<MeshVertex>& teapotMesh()
{
    static const std::vector<MeshVertex> mesh = teapot::tessellate(kSteps);
    return mesh;
}

class TeapotPatch : public Patch {
public:
    explicit TeapotPatch(const PatchSetup& setup) : Patch(setup)
    {
        for (const char* key : {"inputX", "inputY", "inputZ", "inputRX", "inputRY", "inputRZ"})
            placement_.push_back(&addInput(QString::fromLatin1(key), PortType::Number, 0.0));
        scale_ = &addInput(QStringLiteral("inputScale"), PortType::Number, 1.0);
        color_ = &addInput(QStringLiteral("inputColor"), PortType::Color, Color::white());
        image_ = &addInput(QStringLiteral("inputImage"), PortType::Image);
        blending_ = &addInput(QStringLiteral("inputBlending"), PortType::Index, 0);
        depth_ = &addInput(QStringLiteral("inputZBuffer"), PortType::Index, 1);
        culling_ = &addInput(QStringLiteral("inputCulling"), PortType::Index, 0);
    }
    ExecutionMode executionMode() const override { return ExecutionMode::Consumer; }

    void execute(ExecutionContext& context, double) override
    {
        if (!context.target()) return;
        MeshDraw draw;
        draw.transform = context.modelView();
        draw.transform.translate(float(number(placement_[0])), float(number(placement_[1])), float(number(placement_[2])));
        draw.transform.rotate(float(number(placement_[3])), 1, 0, 0);
        draw.transform.rotate(float(number(placement_[4])), 0, 1, 0);
        draw.transform.rotate(float(number(placement_[5])), 0, 0, 1);
        const float scale = float(number(scale_));
        draw.transform.scale(scale, scale, scale);
        draw.vertices = &teapotMesh();
        draw.image = image_->value.toImage();
        draw.color = color_->value.toColor();
        draw.blend = blendModeFromIndex(index(blending_));
        draw.depthTest = index(depth_) != 0;
        const int culling = index(culling_);
        draw.culling = culling == 1 ? Culling::Back : culling == 2 ? Culling::Front : Culling::None;
        draw.lighting = context.lighting();
        context.target()->drawMesh(draw);
    }

private:
    std::vector<InputPort*> placement_;
    InputPort* scale_;
    InputPort* color_;
    InputPort* image_;
    InputPort* blending_;
    InputPort* depth_;
    InputPort* culling_;
};

}  // namespace

void registerTeapotPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCTeapot"), factoryOf<TeapotPatch>());
}

}  // namespace runtime
