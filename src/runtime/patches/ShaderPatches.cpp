// GLSL Shader: a macro whose children draw with the GLSL program stored in
// the node ("vertexShader", "fragmentShader"). The uniforms the sources
// declare are its input ports: float a Number, vec2/vec3 Numbers
// "name_X", "name_Y"(, "name_Z"), vec4 a Color, int an Index, bool a
// Boolean, sampler2D an Image. The sources are checked when the file loads
// (glslang, GlslValidator.h) and compiled by the driver on first use; a
// program that does not compile, or a backend without GLSL, leaves the
// children drawing unshaded, with the reason listed or logged.

#include "runtime/ExecutionContext.h"
#include "runtime/GlslDeclarations.h"
#include "runtime/GlslValidator.h"
#include "runtime/MacroPatch.h"
#include "runtime/RendererServices.h"
#include "runtime/patches/PatchFamilies.h"

#include <functional>

namespace runtime {

namespace {

const QLatin1String kRasterNote("GLSL shaders draw on the OpenGL backend only; on the raster backend the patches "
                                "inside them draw unshaded");

class GlslShaderPatch : public MacroPatch {
public:
    explicit GlslShaderPatch(const PatchSetup& setup) : MacroPatch(setup)
    {
        program_.vertexSource = stateString(setup, "vertexShader");
        program_.fragmentSource = stateString(setup, "fragmentShader");
        const QString both = program_.vertexSource + QChar(0) + program_.fragmentSource;
        program_.key = std::hash<QString>{}(both);
        for (const UniformDeclaration& uniform : declaredUniforms({program_.vertexSource, program_.fragmentSource}))
            addUniform(uniform);
        check(setup);
    }

    void execute(ExecutionContext& context, double time) override
    {
        RenderTarget* target = context.target();
        if (!target) {
            MacroPatch::execute(context, time);
            return;
        }
        const QString error = target->prepareProgram(program_);
        if (!error.isEmpty()) {
            // Said once per reason: a still frame allocates nothing.
            if (error != lastError_) {
                lastError_ = error;
                context.services().logOnce(
                    QStringLiteral("%1: %2; the patches inside draw unshaded").arg(path(), error.left(2000)));
            }
            MacroPatch::execute(context, time);
            return;
        }
        for (Bound& bound : bound_) {
            ShaderUniform& uniform = program_.uniforms[bound.uniform];
            if (uniform.kind == UniformKind::Sampler) {
                uniform.image = bound.ports[0]->value.toImage();
            } else if (uniform.kind == UniformKind::Vec4) {
                const Color c = bound.ports[0]->value.toColor();
                uniform.value = {float(c.red), float(c.green), float(c.blue), float(c.alpha)};
            } else {
                for (std::size_t i = 0; i < bound.ports.size(); ++i) uniform.value[i] = float(number(bound.ports[i]));
            }
        }
        DrawEnvironment environment = target->environment();
        environment.program = &program_;
        const DrawEnvironment previous = target->setEnvironment(environment);
        MacroPatch::execute(context, time);
        target->setEnvironment(previous);
        // Images are held only while drawing.
        for (Bound& bound : bound_)
            if (program_.uniforms[bound.uniform].kind == UniformKind::Sampler) program_.uniforms[bound.uniform].image = {};
    }

private:
    struct Bound {
        std::size_t uniform;
        std::vector<InputPort*> ports;
    };

    void addUniform(const UniformDeclaration& declaration)
    {
        ShaderUniform uniform;
        uniform.name = declaration.name.toUtf8();
        uniform.kind = declaration.kind;
        Bound bound{program_.uniforms.size(), {}};
        const QString& name = declaration.name;
        const auto components = [&](int n) {
            for (int i = 0; i < n; ++i)
                bound.ports.push_back(&addInput(name + QStringLiteral("_") + QLatin1Char("XYZW"[i]), PortType::Number, 0.0));
        };
        switch (declaration.kind) {
        case UniformKind::Float: bound.ports.push_back(&addInput(name, PortType::Number, 0.0)); break;
        case UniformKind::Vec2: components(2); break;
        case UniformKind::Vec3: components(3); break;
        case UniformKind::Vec4: bound.ports.push_back(&addInput(name, PortType::Color, Color::white())); break;
        case UniformKind::Int: bound.ports.push_back(&addInput(name, PortType::Index, 0)); break;
        case UniformKind::Bool: bound.ports.push_back(&addInput(name, PortType::Boolean, false)); break;
        case UniformKind::Sampler: bound.ports.push_back(&addInput(name, PortType::Image)); break;
        }
        program_.uniforms.push_back(uniform);
        bound_.push_back(std::move(bound));
    }

    // Compile errors without a context, one problem line each; and, once
    // per composition, that the raster backend cannot run the program.
    void check(const PatchSetup& setup) const
    {
        if (!setup.problems) return;
        const struct {
            const QString& source;
            ShaderStage stage;
            const char* name;
        } stages[] = {{program_.vertexSource, ShaderStage::Vertex, "vertex"},
                      {program_.fragmentSource, ShaderStage::Fragment, "fragment"}};
        for (const auto& stage : stages) {
            if (stage.source.trimmed().isEmpty()) continue;
            for (const QString& error : glslErrors(stage.source, stage.stage))
                setup.report(QStringLiteral("the %1 shader does not compile: %2").arg(QLatin1String(stage.name), error));
        }
        bool noted = false;
        for (const QString& line : *setup.problems) noted = noted || line.endsWith(kRasterNote);
        if (!noted) setup.report(kRasterNote);
    }

    QString lastError_;
    ShaderProgram program_;
    std::vector<Bound> bound_;
};

}  // namespace

void registerShaderPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCGLSLShader"), factoryOf<GlslShaderPatch>());
}

}  // namespace runtime
