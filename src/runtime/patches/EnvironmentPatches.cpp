// Projection and Fog: macros that change how their children's draws are
// seen, by setting the target's draw environment (Backend.h) for them and
// restoring it afterwards.

#include "runtime/ExecutionContext.h"
#include "runtime/MacroPatch.h"
#include "runtime/patches/PatchFamilies.h"

#include <cmath>
#include <limits>
#include <numbers>

namespace runtime {

namespace {

// Runs the children with `environment` on the current target.
void renderWithin(MacroPatch& macro, ExecutionContext& context, double time, const DrawEnvironment& environment)
{
    RenderTarget* target = context.target();
    if (!target) {
        macro.MacroPatch::execute(context, time);
        return;
    }
    const DrawEnvironment previous = target->setEnvironment(environment);
    macro.MacroPatch::execute(context, time);
    target->setEnvironment(previous);
}

// A perspective of `inputFieldOfView` degrees across the destination's
// width, with the eye placed so that z = 0 still maps one to one (60° is
// the standard view); 0 is an orthographic view. Whether Quartz Composer
// measures the angle across the width or the height, and where it puts
// the eye, is not known.
class ProjectionPatch : public MacroPatch {
public:
    explicit ProjectionPatch(const PatchSetup& setup) : MacroPatch(setup)
    {
        fieldOfView_ = &addInput(QStringLiteral("inputFieldOfView"), PortType::Number, 60.0);
    }
    void execute(ExecutionContext& context, double time) override
    {
        DrawEnvironment environment = context.target() ? context.target()->environment() : DrawEnvironment{};
        environment.eyeDistance = eyeDistanceFor(number(fieldOfView_));
        renderWithin(*this, context, time, environment);
    }

    static double eyeDistanceFor(double degrees)
    {
        if (!(degrees > 0.01)) return std::numeric_limits<double>::infinity();  // 0, negative, NaN
        // Nearly 180° would put the eye on the plane; keep it a little off.
        const double half = std::min(degrees, 179.0) * std::numbers::pi / 360.0;
        return 1.0 / std::tan(half);
    }

private:
    InputPort* fieldOfView_;
};

// Fog over the meshes and sprites inside: Type 0 linear (from Linear Start to Linear
// End, in units from the eye), 1 exponential, 2 exponential squared (by
// Exponential Density), as OpenGL's fog. Quality and Distance Mode are
// kept as ports; we always measure depth along the line of sight.
class FogPatch : public MacroPatch {
public:
    explicit FogPatch(const PatchSetup& setup) : MacroPatch(setup)
    {
        type_ = &addInput(QStringLiteral("inputType"), PortType::Index, 0);
        color_ = &addInput(QStringLiteral("inputColor"), PortType::Color, Color{0.5, 0.5, 0.5, 1});
        density_ = &addInput(QStringLiteral("inputDensity"), PortType::Number, 0.5);
        start_ = &addInput(QStringLiteral("inputStart"), PortType::Number, 1.0);
        end_ = &addInput(QStringLiteral("inputEnd"), PortType::Number, 4.0);
        addInput(QStringLiteral("inputQuality"), PortType::Index, 0);
        addInput(QStringLiteral("inputDistanceMode"), PortType::Index, 0);
    }
    void execute(ExecutionContext& context, double time) override
    {
        const int type = index(type_);
        fog_.mode = type == 1 ? Fog::Mode::Exponential : type == 2 ? Fog::Mode::ExponentialSquared : Fog::Mode::Linear;
        fog_.color = color_->value.toColor();
        fog_.density = number(density_);
        fog_.start = number(start_);
        fog_.end = number(end_);
        DrawEnvironment environment = context.target() ? context.target()->environment() : DrawEnvironment{};
        environment.fog = &fog_;
        renderWithin(*this, context, time, environment);
    }

private:
    InputPort* type_;
    InputPort* color_;
    InputPort* density_;
    InputPort* start_;
    InputPort* end_;
    Fog fog_;
};

}  // namespace

void registerEnvironmentPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCProjection"), factoryOf<ProjectionPatch>());
    registry.add(QStringLiteral("QCFog"), factoryOf<FogPatch>());
}

}  // namespace runtime
