// Teapot: Newell's teapot as a mesh, with the ports of the other 3-D
// objects (position, rotation in degrees, colour, image, blending, depth
// testing, culling) and a scale; at scale 1 it is 1 unit from the spout's
// tip to the back of the handle (Quartz Composer's own size is not known).

#include "runtime/ExecutionContext.h"
#include "runtime/TeapotData.h"
#include "runtime/patches/ObjectPatch.h"
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

class TeapotPatch : public ObjectPatch {
public:
    explicit TeapotPatch(const PatchSetup& setup) : ObjectPatch(setup)
    {
        scale_ = &addInput(QStringLiteral("inputScale"), PortType::Number, 1.0);
        color_ = &addInput(QStringLiteral("inputColor"), PortType::Color, Color::white());
        image_ = &addInput(QStringLiteral("inputImage"), PortType::Image);
    }

    void execute(ExecutionContext& context, double) override
    {
        if (!context.target()) return;
        MeshDraw draw = prepared(context);
        const float scale = float(number(scale_));
        draw.transform.scale(scale, scale, scale);
        draw.vertices = &teapotMesh();
        draw.image = image_->value.toImage();
        draw.color = color_->value.toColor();
        context.target()->drawMesh(draw);
    }

private:
    InputPort* scale_;
    InputPort* color_;
    InputPort* image_;
};

}  // namespace

void registerTeapotPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCTeapot"), factoryOf<TeapotPatch>());
}

}  // namespace runtime
