#pragma once
// The ports every 3-D object has (Sphere, Cube, Teapot, Mesh Renderer):
// position, rotation in degrees (X, then Y, then Z), blending, depth
// testing and face culling, and the mesh draw they make.

#include "runtime/Backend.h"
#include "runtime/ExecutionContext.h"
#include "runtime/Patch.h"

#include <cmath>
#include <vector>

namespace runtime {

class ObjectPatch : public Patch {
public:
    explicit ObjectPatch(const PatchSetup& setup) : Patch(setup)
    {
        for (const char* key : {"inputX", "inputY", "inputZ", "inputRX", "inputRY", "inputRZ"})
            placement_.push_back(&addInput(QString::fromLatin1(key), PortType::Number, 0.0));
        blending_ = &addInput(QStringLiteral("inputBlending"), PortType::Index, 0);
        depth_ = &addInput(QStringLiteral("inputZBuffer"), PortType::Index, 1);
        culling_ = &addInput(QStringLiteral("inputCulling"), PortType::Index, 0);
    }
    ExecutionMode executionMode() const override { return ExecutionMode::Consumer; }

protected:
    // Placed in the current model view, lit by an enclosing Lighting; the
    // caller adds its scale, vertices, image and colour.
    MeshDraw prepared(ExecutionContext& context) const
    {
        const auto v = [this](std::size_t i) {
            const double n = number(placement_[i]);
            return std::isfinite(n) ? float(n) : 0.0f;
        };
        MeshDraw draw;
        draw.transform = context.modelView();
        draw.transform.translate(v(0), v(1), v(2));
        draw.transform.rotate(v(3), 1, 0, 0);
        draw.transform.rotate(v(4), 0, 1, 0);
        draw.transform.rotate(v(5), 0, 0, 1);
        draw.blend = blendModeFromIndex(index(blending_));
        draw.depthTest = index(depth_) != 0;
        const int culling = index(culling_);
        draw.culling = culling == 1 ? Culling::Back : culling == 2 ? Culling::Front : Culling::None;
        draw.lighting = context.lighting();
        return draw;
    }

private:
    std::vector<InputPort*> placement_;
    InputPort* blending_;
    InputPort* depth_;
    InputPort* culling_;
};

}  // namespace runtime
