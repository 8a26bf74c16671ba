// 3-D environments and objects: Track Ball, Replicator and Lighting (macros
// that set what their children draw with), Sphere and Cube (meshes). Without a
// pointer the track ball never turns. Lighting applies to meshes only:
// sprites and billboards inside it draw unlit (an approximation).

#include "runtime/ExecutionContext.h"
#include "runtime/Lighting.h"
#include "runtime/MacroPatch.h"
#include "runtime/patches/ObjectPatch.h"
#include "runtime/patches/PatchFamilies.h"

#include <cmath>
#include <numbers>

namespace runtime {

namespace {

class TrackBallPatch : public MacroPatch {
public:
    explicit TrackBallPatch(const PatchSetup& setup) : MacroPatch(setup)
    {
        for (const char* key : {"inputOriginX", "inputOriginY", "inputOriginZ"}) addInput(QString::fromLatin1(key), PortType::Number, 0.0);
        addInput(QStringLiteral("inputResetSignal"), PortType::Boolean, false);
        addInput(QStringLiteral("inputTrack"), PortType::Boolean, true);
    }
};

// Draws its children inputCopies times, copy k of n moved along by
// t = k / (n − 1) of the translation, rotation and scale (from 1 to the
// given scale), about the origin, in a frame turned by the orientation.
// Quartz Composer's exact composition of these is not known; this one
// keeps the first copy in place and puts the last at the full offset.
class ReplicatorPatch : public MacroPatch {
public:
    explicit ReplicatorPatch(const PatchSetup& setup) : MacroPatch(setup)
    {
        copies_ = &addInput(QStringLiteral("inputCopies"), PortType::Index, 10);
        for (const char* axis : {"X", "Y", "Z"}) {
            origin_.push_back(&addInput(QStringLiteral("inputOrigin") + QLatin1String(axis), PortType::Number, 0.0));
            orientation_.push_back(&addInput(QStringLiteral("inputOrientation") + QLatin1String(axis), PortType::Number, 0.0));
            translation_.push_back(&addInput(QStringLiteral("inputTranslation") + QLatin1String(axis), PortType::Number, 0.0));
            rotation_.push_back(&addInput(QStringLiteral("inputRotation") + QLatin1String(axis), PortType::Number, 0.0));
        }
        scale_ = &addInput(QStringLiteral("inputScale"), PortType::Number, 1.0);
        addInput(QStringLiteral("inputInterpolation"), PortType::Index, 0);
    }
    void execute(ExecutionContext& context, double) override
    {
        const int copies = std::clamp(index(copies_), 0, kMaxCopies);
        const auto vector = [this](const std::vector<InputPort*>& ports, double factor) {
            return QVector3D(float(number(ports[0]) * factor), float(number(ports[1]) * factor), float(number(ports[2]) * factor));
        };
        const QVector3D origin = vector(origin_, 1), orientation = vector(orientation_, 1);
        QMatrix4x4 frame;
        frame.translate(origin);
        frame.rotate(orientation.x(), 1, 0, 0);
        frame.rotate(orientation.y(), 0, 1, 0);
        frame.rotate(orientation.z(), 0, 0, 1);
        const QMatrix4x4 saved = context.modelView();
        for (int k = 0; k < copies; ++k) {
            const double t = copies > 1 ? double(k) / (copies - 1) : 0.0;
            const QVector3D turn = vector(rotation_, t);
            QMatrix4x4 step;
            step.translate(vector(translation_, t));
            step.rotate(turn.x(), 1, 0, 0);
            step.rotate(turn.y(), 0, 1, 0);
            step.rotate(turn.z(), 0, 0, 1);
            const float scale = float(1.0 + (number(scale_) - 1.0) * t);
            step.scale(scale);
            // The copies show the same values: no new pass, processors
            // inside run once.
            context.modelView() = saved * frame * step * frame.inverted();
            context.renderConsumers(*this);
        }
        context.modelView() = saved;
    }

private:
    static constexpr int kMaxCopies = 10000;
    InputPort* copies_;
    std::vector<InputPort*> origin_, orientation_, translation_, rotation_;
    InputPort* scale_;
};

class LightingPatch : public MacroPatch {
public:
    explicit LightingPatch(const PatchSetup& setup) : MacroPatch(setup)
    {
        ambient_ = &addInput(QStringLiteral("inputAmbientColor"), PortType::Color, Color{0.1, 0.1, 0.1, 1});
        shininess_ = &addInput(QStringLiteral("inputObjectShininess"), PortType::Number, 64.0);
        specular_ = &addInput(QStringLiteral("inputObjectSpecular"), PortType::Number, 0.5);
        twoSides_ = &addInput(QStringLiteral("inputObjectTwoSides"), PortType::Boolean, false);
        const double stored = stateNumber(setup, "lightCount", stateNumber(setup, "numberOfLights", 1));
        const int count = std::clamp(saturatedInt(stored), 0, Lighting::kMaxLights);
        for (int i = 1; i <= count; ++i) {
            const auto key = [i](const char* name) { return QStringLiteral("%1_%2").arg(QLatin1String(name)).arg(i); };
            LightPorts light;
            light.color = &addInput(key("color"), PortType::Color, Color::white());
            light.x = &addInput(key("positionX"), PortType::Number, -1.0);
            light.y = &addInput(key("positionY"), PortType::Number, 1.0);
            light.z = &addInput(key("positionZ"), PortType::Number, 1.0);
            light.attenuation = &addInput(key("attenuation"), PortType::Number, 0.0);
            // Shadows are not drawn; the ports are kept for connections.
            addInput(key("castShadows"), PortType::Boolean, false);
            addInput(key("quality"), PortType::Number, 1.0);
            addInput(key("shadowColor"), PortType::Color, Color{0, 0, 0, 1});
            lights_.push_back(light);
        }
    }
    void execute(ExecutionContext& context, double time) override
    {
        lighting_.ambient = ambient_->value.toColor();
        lighting_.shininess = number(shininess_);
        lighting_.specular = number(specular_);
        lighting_.twoSided = boolean(twoSides_);
        lighting_.lights.clear();
        for (const LightPorts& ports : lights_) {
            Light light;
            // Positions move with the patch's surroundings (a camera around it).
            light.position = context.modelView().map(QVector3D(float(number(ports.x)), float(number(ports.y)), float(number(ports.z))));
            light.color = ports.color->value.toColor();
            light.attenuation = number(ports.attenuation);
            lighting_.lights.push_back(light);
        }
        const Lighting* outer = context.setLighting(&lighting_);
        MacroPatch::execute(context, time);
        context.setLighting(outer);
    }

private:
    struct LightPorts {
        InputPort* color;
        InputPort* x;
        InputPort* y;
        InputPort* z;
        InputPort* attenuation;
    };
    InputPort* ambient_;
    InputPort* shininess_;
    InputPort* specular_;
    InputPort* twoSides_;
    std::vector<LightPorts> lights_;
    Lighting lighting_;
};

class SpherePatch : public ObjectPatch {
public:
    explicit SpherePatch(const PatchSetup& setup) : ObjectPatch(setup)
    {
        image_ = &addInput(QStringLiteral("inputImage"), PortType::Image);
        color_ = &addInput(QStringLiteral("inputColor"), PortType::Color, Color::white());
        diameter_ = &addInput(QStringLiteral("inputScale"), PortType::Number, 1.0);
        const int slices = std::clamp(saturatedInt(stateNumber(setup, "slices", 24)), 3, 256);
        const int stacks = std::clamp(saturatedInt(stateNumber(setup, "stacks", 12)), 2, 256);
        buildUnitSphere(slices, stacks);
    }
    void execute(ExecutionContext& context, double) override
    {
        if (!context.target()) return;
        MeshDraw draw = prepared(context);
        const float d = float(number(diameter_));
        draw.transform.scale(d, d, d);
        draw.vertices = &vertices_;
        draw.image = image_->value.toImage();
        draw.color = color_->value.toColor();
        context.target()->drawMesh(draw);
    }

private:
    // Radius ½ (diameter 1), poles on the y axis, the image wrapped once
    // around with its top row at the north pole.
    void buildUnitSphere(int slices, int stacks)
    {
        const auto point = [&](int slice, int stack) {
            const double theta = 2 * std::numbers::pi * slice / slices, phi = std::numbers::pi * stack / stacks;
            const QVector3D n(float(std::sin(phi) * std::sin(theta)), float(std::cos(phi)), float(std::sin(phi) * std::cos(theta)));
            return MeshVertex{n * 0.5f, n, QVector2D(float(slice) / float(slices), float(stack) / float(stacks))};
        };
        for (int stack = 0; stack < stacks; ++stack)
            for (int slice = 0; slice < slices; ++slice) {
                const MeshVertex a = point(slice, stack), b = point(slice, stack + 1), c = point(slice + 1, stack + 1),
                                 e = point(slice + 1, stack);
                vertices_.insert(vertices_.end(), {a, b, c, a, c, e});
            }
    }

    InputPort* image_;
    InputPort* color_;
    InputPort* diameter_;
    std::vector<MeshVertex> vertices_;
};

class CubePatch : public ObjectPatch {
public:
    explicit CubePatch(const PatchSetup& setup) : ObjectPatch(setup)
    {
        width_ = &addInput(QStringLiteral("inputWidth"), PortType::Number, 1.0);
        height_ = &addInput(QStringLiteral("inputHeight"), PortType::Number, 1.0);
        depth_ = &addInput(QStringLiteral("inputDepth"), PortType::Number, 1.0);
        for (const char* face : {"Front", "Back", "Left", "Right", "Top", "Bottom"}) {
            faces_.push_back({&addInput(QStringLiteral("inputImage") + QLatin1String(face), PortType::Image),
                              &addInput(QStringLiteral("inputColor") + QLatin1String(face), PortType::Color, Color::white()), {}});
        }
        // Unit cube faces, counter-clockwise from outside: front +z, back −z,
        // left −x, right +x, top +y, bottom −y.
        const QVector3D normals[] = {{0, 0, 1}, {0, 0, -1}, {-1, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}};
        const QVector3D ups[] = {{0, 1, 0}, {0, 1, 0}, {0, 1, 0}, {0, 1, 0}, {0, 0, -1}, {0, 0, 1}};
        for (std::size_t f = 0; f < faces_.size(); ++f) {
            const QVector3D n = normals[f], up = ups[f], right = QVector3D::crossProduct(up, n);
            const auto corner = [&](float sx, float sy) {
                return MeshVertex{(n + right * sx + up * sy) * 0.5f, n, QVector2D((sx + 1) / 2, (1 - sy) / 2)};
            };
            const MeshVertex ll = corner(-1, -1), lr = corner(1, -1), ur = corner(1, 1), ul = corner(-1, 1);
            faces_[f].vertices = {ll, lr, ur, ll, ur, ul};
        }
    }
    void execute(ExecutionContext& context, double) override
    {
        if (!context.target()) return;
        MeshDraw draw = prepared(context);
        draw.transform.scale(float(number(width_)), float(number(height_)), float(number(depth_)));
        for (const Face& face : faces_) {
            draw.vertices = &face.vertices;
            draw.image = face.image->value.toImage();
            draw.color = face.color->value.toColor();
            context.target()->drawMesh(draw);
        }
    }

private:
    struct Face {
        InputPort* image;
        InputPort* color;
        std::vector<MeshVertex> vertices;
    };
    InputPort* width_;
    InputPort* height_;
    InputPort* depth_;
    std::vector<Face> faces_;
};

}  // namespace

void registerThreeDPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCTrackBall"), factoryOf<TrackBallPatch>());
    registry.add(QStringLiteral("QCReplicator"), factoryOf<ReplicatorPatch>());
    registry.add(QStringLiteral("QCLighting"), factoryOf<LightingPatch>());
    registry.add(QStringLiteral("QCSphere"), factoryOf<SpherePatch>());
    registry.add(QStringLiteral("QCCube"), factoryOf<CubePatch>());
}

}  // namespace runtime
