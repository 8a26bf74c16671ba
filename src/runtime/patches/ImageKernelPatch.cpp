// QCImageKernel: a Core Image kernel written into the patch ("sourceCode"),
// compiled once and run on the CPU. Each kernel parameter is an input:
// a sampler an image, a float or int a number, a bool a boolean, a __color a
// colour, and a vecN N numbers named name_X, name_Y, name_Z, name_W. With
// sampler options shown, a sampler also has "name-FilterMode" (0 linear,
// 1 nearest) and "name-WrapMode" (0 transparent outside, 1 edge pixels).

#include "runtime/RendererServices.h"
#include "runtime/kernel/KernelProgram.h"
#include "runtime/patches/PatchFamilies.h"

#include <QLoggingCategory>

#include <atomic>

namespace runtime {

namespace {

using kernel::KernelProgram;
using kernel::Sampler;
using kernel::Vec;

// Rendered around the asked region of a generator a kernel samples, so
// kernels that read neighbours see some of them.
constexpr int kInfiniteInputMargin = 32;

struct SamplerInput {
    Image image;
    Sampler::Filter filter;
    Sampler::Wrap wrap;
};

std::vector<Sampler> makeSamplers(const std::vector<SamplerInput>& inputs, const QRect& region)
{
    std::vector<Sampler> samplers;
    samplers.reserve(inputs.size());
    const QRect needed = region.adjusted(-kInfiniteInputMargin, -kInfiniteInputMargin, kInfiniteInputMargin, kInfiniteInputMargin);
    for (const SamplerInput& in : inputs) samplers.emplace_back(in.image, needed, in.filter, in.wrap);
    return samplers;
}

class ImageKernelPatch : public Patch {
public:
    explicit ImageKernelPatch(const PatchSetup& setup) : Patch(setup)
    {
        if (stateBool(setup, "advancedMode", false)) {
            setup.report(QStringLiteral("kernels in advanced (JavaScript) mode are not supported"));
        } else {
            QString error;
            program_ = KernelProgram::compile(stateString(setup, "sourceCode"), &error);
            if (!program_) setup.report(QStringLiteral("the kernel does not compile: %1").arg(error));
        }
        if (program_) addParameterPorts(stateBool(setup, "showSamplerOptions", false));
        image_ = &addOutput(QStringLiteral("outputImage"), PortType::Image);
    }

    void execute(ExecutionContext&, double) override
    {
        if (!program_) return;
        std::vector<Vec> arguments;
        std::vector<SamplerInput> samplers;
        QRect extent;
        bool infinite = false;
        for (const Binding& b : bindings_) {
            if (b.type == kernel::Type::Sampler) {
                const Image image = b.ports[0]->value.toImage();
                // Core Image gives no result when an input image is missing.
                if (image.isNull()) {
                    setOutput(*image_, {});
                    return;
                }
                infinite = infinite || image.isInfinite();
                extent = extent.united(image.extent());
                arguments.push_back(Vec::splat(float(samplers.size())));
                samplers.push_back({image, index(b.filter) == 1 ? Sampler::Filter::Nearest : Sampler::Filter::Linear,
                                    index(b.wrap) == 1 ? Sampler::Wrap::ClampToEdge : Sampler::Wrap::Transparent});
            } else {
                arguments.push_back(argument(b));
            }
        }
        // A kernel without finite inputs draws everywhere; otherwise over
        // its inputs, as Core Image's automatic domain of definition does.
        if (infinite || samplers.empty()) {
            setOutput(*image_, generator(std::move(arguments), std::move(samplers)));
            return;
        }
        QImage out(extent.size(), QImage::Format_ARGB32_Premultiplied);
        if (out.isNull() || !program_->render(arguments, makeSamplers(samplers, extent), extent, out)) {
            reportLooping(*reported_, path());
            setOutput(*image_, {});
            return;
        }
        setOutput(*image_, Image::fromRaster(std::move(out), extent.topLeft()));
    }

private:
    struct Binding {
        kernel::Type type;
        bool isColor = false;
        InputPort* ports[4] = {};
        InputPort* filter = nullptr;
        InputPort* wrap = nullptr;
    };

    void addParameterPorts(bool samplerOptions)
    {
        static const char* const suffixes[] = {"_X", "_Y", "_Z", "_W"};
        for (const kernel::Parameter& p : program_->parameters()) {
            Binding b;
            b.type = p.type;
            b.isColor = p.isColor;
            switch (p.type) {
            case kernel::Type::Sampler:
                b.ports[0] = &addInput(p.name, PortType::Image);
                if (samplerOptions) {
                    b.filter = &addInput(p.name + QStringLiteral("-FilterMode"), PortType::Index, Value(0.0));
                    b.wrap = &addInput(p.name + QStringLiteral("-WrapMode"), PortType::Index, Value(0.0));
                }
                break;
            case kernel::Type::Bool: b.ports[0] = &addInput(p.name, PortType::Boolean, Value(false)); break;
            case kernel::Type::Vec4:
                if (p.isColor) {
                    b.ports[0] = &addInput(p.name, PortType::Color, Value(Color{0, 0, 0, 1}));
                    break;
                }
                [[fallthrough]];
            case kernel::Type::Vec2:
            case kernel::Type::Vec3:
                for (int i = 0; i < kernel::laneCount(p.type); ++i)
                    b.ports[i] = &addInput(p.name + QLatin1String(suffixes[i]), PortType::Number, Value(0.0));
                break;
            default: b.ports[0] = &addInput(p.name, PortType::Number, Value(0.0)); break;
            }
            bindings_.push_back(b);
        }
    }

    static Vec argument(const Binding& b)
    {
        if (b.isColor) {
            // Kernels see colours premultiplied, like every other pixel.
            const Color c = b.ports[0]->value.toColor();
            return {{float(c.red * c.alpha), float(c.green * c.alpha), float(c.blue * c.alpha), float(c.alpha)}};
        }
        const int lanes = kernel::laneCount(b.type);
        if (lanes == 1) {
            const double v = b.ports[0]->value.toNumber();
            if (b.type == kernel::Type::Int) return Vec::splat(float(saturatedInt(v)));
            if (b.type == kernel::Type::Bool) return Vec::splat(v != 0 ? 1.0f : 0.0f);
            return Vec::splat(float(v));
        }
        Vec out;
        for (int i = 0; i < lanes; ++i) out.v[i] = float(b.ports[i]->value.toNumber());
        return out;
    }

    Image generator(std::vector<Vec> arguments, std::vector<SamplerInput> samplers) const
    {
        std::shared_ptr<const KernelProgram> program = program_;
        std::shared_ptr<std::atomic<bool>> reported = reported_;
        return Image::infinite([program, reported, path = path(), arguments = std::move(arguments),
                                samplers = std::move(samplers)](const QRect& region) {
            QImage out(region.size(), QImage::Format_ARGB32_Premultiplied);
            if (out.isNull()) return out;
            if (!program->render(arguments, makeSamplers(samplers, region), region, out)) {
                reportLooping(*reported, path);
                out.fill(Qt::transparent);
            }
            return out;
        });
    }

    static void reportLooping(std::atomic<bool>& reported, const QString& path)
    {
        if (reported.exchange(true)) return;
        qCWarning(lcRuntime).noquote() << QStringLiteral("%1: the kernel loops too long and was stopped").arg(path);
    }

    std::shared_ptr<const KernelProgram> program_;
    std::vector<Binding> bindings_;
    OutputPort* image_ = nullptr;
    // Shared with the generators this patch hands out, so a looping kernel
    // is reported once however its images are used.
    std::shared_ptr<std::atomic<bool>> reported_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace

void registerImageKernelPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCImageKernel"), factoryOf<ImageKernelPatch>());
}

}  // namespace runtime
