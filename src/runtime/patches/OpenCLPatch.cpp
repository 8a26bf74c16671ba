// QCOpenCL, the OpenCL Kernel patch: the first kernel of the OpenCL C
// source in the node's state ("source"), run on the process's OpenCL device
// (src/runtime/cl/). Each kernel parameter becomes a port:
//   __global const T* / __constant T*  input structure (numbers, or
//                                      structures of 2–4 numbers for vectors)
//   __global T*                        output structure of the same shape
//   float, int, uint                   input number
//   floatN, intN, uintN                N numbers name_X, name_Y, name_Z, name_W
//   image2d_t (read_only)              input image
//   image2d_t write_only               output image
// The range: a kernel that writes an image runs over a 2-D range the size
// of its first input image (inputWidth × inputHeight when it reads none);
// any other kernel over the count of its first input structure
// (inputCount when it reads none). Output structures get one element per
// work item. Images reach the kernel as premultiplied RGBA with 8 bits a
// channel, coordinate (0, 0) at the lower left as in image space.
//
// The program is built once per source text; each renderer's patch keeps
// its own kernel, queue and device buffers. Without a device, or when the
// kernel does not build, the composition's problems say so and the outputs
// stay empty.

#include "runtime/RendererServices.h"
#include "runtime/ExecutionContext.h"
#include "runtime/cl/KernelRun.h"
#include "runtime/patches/PatchFamilies.h"

#include <QRegularExpression>

#include <algorithm>
#include <cstring>

namespace runtime {

namespace {

using cl::ElementType;
using cl::KernelArgument;
using cl::KernelParameter;

constexpr int kMaxImageSide = 8192;
constexpr int kMaxItems = 1 << 24;
// Build logs can run to pages; problems list the start.
constexpr int kMaxLogLines = 12;

const char* const kComponentSuffixes[] = {"_X", "_Y", "_Z", "_W"};

QString sourceFromState(const PatchSetup& setup)
{
    for (const char* key : {"source", "sourceCode", "kernelSource", "code"}) {
        const QString text = Patch::stateString(setup, key);
        if (!text.trimmed().isEmpty()) return text;
    }
    return {};
}

// Numbers of one structure member: a number, a structure of numbers or a colour.
void memberNumbers(const Value& value, int components, double* out)
{
    std::fill(out, out + components, 0.0);
    if (value.kind() == Value::Kind::Structure) {
        const StructurePtr s = value.toStructure();
        for (int c = 0; c < components && std::size_t(c) < s->count(); ++c) out[c] = s->memberAt(std::size_t(c))->toNumber();
    } else if (value.kind() == Value::Kind::Color) {
        const Color color = value.toColor();
        const double rgba[] = {color.red, color.green, color.blue, color.alpha};
        std::copy(rgba, rgba + components, out);
    } else {
        out[0] = value.toNumber();
    }
}

void storeElement(ElementType type, double v, char* at)
{
    if (type == ElementType::Float) {
        const float f = float(v);
        std::memcpy(at, &f, 4);
    } else if (type == ElementType::Int) {
        const std::int32_t i = saturatedInt(v);
        std::memcpy(at, &i, 4);
    } else {
        const auto u = std::uint32_t(std::clamp(std::isnan(v) ? 0.0 : v, 0.0, 4294967295.0));
        std::memcpy(at, &u, 4);
    }
}

double loadElement(ElementType type, const char* at)
{
    if (type == ElementType::Float) {
        float f;
        std::memcpy(&f, at, 4);
        return double(f);
    }
    if (type == ElementType::Int) {
        std::int32_t i;
        std::memcpy(&i, at, 4);
        return double(i);
    }
    std::uint32_t u;
    std::memcpy(&u, at, 4);
    return double(u);
}

QByteArray packStructure(const KernelParameter& p, const Structure& s)
{
    QByteArray bytes(qsizetype(s.count()) * p.stride(), '\0');
    double numbers[4];
    for (std::size_t i = 0; i < s.count(); ++i) {
        memberNumbers(s.members()[i].value, p.components, numbers);
        for (int c = 0; c < p.components; ++c) storeElement(p.element, numbers[c], bytes.data() + qsizetype(i) * p.stride() + 4 * c);
    }
    return bytes;
}

Value unpackStructure(const KernelParameter& p, const QByteArray& bytes)
{
    const qsizetype count = bytes.size() / p.stride();
    std::vector<Structure::Member> members;
    members.reserve(std::size_t(count));
    for (qsizetype i = 0; i < count; ++i) {
        const char* at = bytes.constData() + i * p.stride();
        if (p.components == 1) {
            members.push_back({QString(), Value(loadElement(p.element, at))});
            continue;
        }
        std::vector<Structure::Member> vector;
        for (int c = 0; c < p.components; ++c) vector.push_back({QString(), Value(loadElement(p.element, at + 4 * c))});
        members.push_back({QString(), Value(std::make_shared<const Structure>(std::move(vector)))});
    }
    return Value(std::make_shared<const Structure>(std::move(members)));
}

// Our images are top row first; the kernel sees the bottom row first.
QImage toKernelImage(const Image& image)
{
    return image.raster().convertToFormat(QImage::Format_RGBA8888_Premultiplied).mirrored();
}

Image fromKernelImage(const QImage& pixels)
{
    QImage image = pixels.mirrored().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    // A kernel may write colour brighter than its alpha, which is not a
    // premultiplied pixel: clamp it.
    const int width = image.width(), height = image.height();
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int a = qAlpha(row[x]);
            row[x] = qRgba(std::min(qRed(row[x]), a), std::min(qGreen(row[x]), a), std::min(qBlue(row[x]), a), a);
        }
    }
    return Image::fromRaster(std::move(image));
}

class OpenCLPatch : public Patch {
public:
    explicit OpenCLPatch(const PatchSetup& setup) : Patch(setup)
    {
        const QString source = sourceFromState(setup);
        QString error;
        auto signature = cl::readKernelSignature(source, &error);
        if (!signature) {
            setup.report(QStringLiteral("the OpenCL kernel cannot be used: %1").arg(error));
            return;
        }
        signature_ = *signature;
        addPorts();

        QString reason;
        cl::Device* device = cl::Device::shared(&reason);
        if (!device) {
            setup.report(QStringLiteral("%1; the OpenCL kernel does nothing").arg(reason));
            return;
        }
        auto program = device->build(source);
        if (!program->program) {
            const QStringList lines = program->log.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
            setup.report(QStringLiteral("the OpenCL kernel does not build (%1 line%2 from the compiler follow)")
                             .arg(lines.size()).arg(lines.size() == 1 ? "" : "s"));
            // The compiler names a temporary file of its own; the line is what helps.
            static const QRegularExpression temporaryFile(QStringLiteral("\\S+\\.cl:(\\d+):(\\d+):"));
            for (int i = 0; i < std::min(int(lines.size()), kMaxLogLines); ++i)
                setup.report(QStringLiteral("  ") + QString(lines[i]).replace(temporaryFile, QStringLiteral("line \\1:\\2:")).trimmed());
            return;
        }
        run_ = std::make_unique<cl::KernelRun>(*device, std::move(program), signature_);
        if (!run_->isValid()) {
            setup.report(QStringLiteral("the OpenCL kernel cannot run: %1").arg(run_->error()));
            run_.reset();
        }
    }

    void execute(ExecutionContext& context, double) override
    {
        if (!run_) return;
        bool twoDimensional = false;
        const QSize range = workRange(&twoDimensional);
        if (range.isEmpty() || qint64(range.width()) * range.height() > kMaxItems || range.width() > kMaxItems ||
            (twoDimensional && (range.width() > kMaxImageSide || range.height() > kMaxImageSide))) {
            clearOutputs();
            return;
        }
        arguments_.resize(signature_.parameters.size());
        for (std::size_t i = 0; i < signature_.parameters.size(); ++i) {
            const KernelParameter& p = signature_.parameters[i];
            KernelArgument& a = arguments_[i];
            const Binding& b = bindings_[i];
            switch (p.kind) {
            case KernelParameter::Kind::Value:
                a.bytes = QByteArray(p.stride(), '\0');
                for (int c = 0; c < p.components; ++c) storeElement(p.element, number(b.inputs[std::size_t(c)]), a.bytes.data() + 4 * c);
                break;
            case KernelParameter::Kind::InputBuffer: {
                const StructurePtr s = b.inputs[0]->value.toStructure();
                a.bytes = s ? packStructure(p, *s) : QByteArray();
                break;
            }
            case KernelParameter::Kind::InputImage: {
                const Image image = b.inputs[0]->value.toImage();
                // As Core Image does, a missing (or endless) input gives no result.
                if (image.isNull() || image.isInfinite()) {
                    clearOutputs();
                    return;
                }
                a.image = toKernelImage(image);
                break;
            }
            case KernelParameter::Kind::OutputBuffer:
            case KernelParameter::Kind::OutputImage: break;
            }
        }
        if (!run_->run(range, twoDimensional, arguments_)) {
            context.services().logOnce(QStringLiteral("%1: %2").arg(path(), run_->error()));
            clearOutputs();
            return;
        }
        for (std::size_t i = 0; i < signature_.parameters.size(); ++i) {
            const KernelParameter& p = signature_.parameters[i];
            if (p.kind == KernelParameter::Kind::OutputBuffer) setOutput(*bindings_[i].output, unpackStructure(p, arguments_[i].bytes));
            else if (p.kind == KernelParameter::Kind::OutputImage) setOutput(*bindings_[i].output, fromKernelImage(arguments_[i].image));
            arguments_[i].image = QImage();  // do not hold frames between runs
        }
    }

private:
    struct Binding {
        std::vector<InputPort*> inputs;
        OutputPort* output = nullptr;
    };

    void addPorts()
    {
        bool readsImage = false, writesImage = false, readsBuffer = false;
        for (const KernelParameter& p : signature_.parameters) {
            Binding b;
            switch (p.kind) {
            case KernelParameter::Kind::Value:
                if (p.components == 1) b.inputs.push_back(&addInput(p.name, PortType::Number, 0.0));
                else
                    for (int c = 0; c < p.components; ++c)
                        b.inputs.push_back(&addInput(p.name + QLatin1String(kComponentSuffixes[c]), PortType::Number, 0.0));
                break;
            case KernelParameter::Kind::InputBuffer:
                b.inputs.push_back(&addInput(p.name, PortType::Structure));
                readsBuffer = true;
                break;
            case KernelParameter::Kind::InputImage:
                b.inputs.push_back(&addInput(p.name, PortType::Image));
                readsImage = true;
                break;
            case KernelParameter::Kind::OutputBuffer: b.output = &addOutput(p.name, PortType::Structure); break;
            case KernelParameter::Kind::OutputImage:
                b.output = &addOutput(p.name, PortType::Image);
                writesImage = true;
                break;
            }
            bindings_.push_back(std::move(b));
        }
        if (writesImage && !readsImage) {
            width_ = &addInput(QStringLiteral("inputWidth"), PortType::Index, 256);
            height_ = &addInput(QStringLiteral("inputHeight"), PortType::Index, 256);
        } else if (!writesImage && !readsBuffer) {
            count_ = &addInput(QStringLiteral("inputCount"), PortType::Index, 1);
        }
        twoDimensional_ = writesImage;
    }

    QSize workRange(bool* twoDimensional) const
    {
        *twoDimensional = twoDimensional_;
        if (twoDimensional_) {
            if (width_) return QSize(index(width_), index(height_));
            for (std::size_t i = 0; i < signature_.parameters.size(); ++i)
                if (signature_.parameters[i].kind == KernelParameter::Kind::InputImage) {
                    const Image image = bindings_[i].inputs[0]->value.toImage();
                    return image.isNull() || image.isInfinite() ? QSize() : image.pixelSize();
                }
            return {};
        }
        if (count_) return QSize(index(count_), 1);
        for (std::size_t i = 0; i < signature_.parameters.size(); ++i)
            if (signature_.parameters[i].kind == KernelParameter::Kind::InputBuffer) {
                const StructurePtr s = bindings_[i].inputs[0]->value.toStructure();
                return QSize(s ? int(std::min<std::size_t>(s->count(), kMaxItems + 1ull)) : 0, 1);
            }
        return {};
    }

    void clearOutputs()
    {
        for (Binding& b : bindings_)
            if (b.output) setOutput(*b.output, Value());
    }

    cl::KernelSignature signature_;
    std::vector<Binding> bindings_;
    InputPort* width_ = nullptr;
    InputPort* height_ = nullptr;
    InputPort* count_ = nullptr;
    bool twoDimensional_ = false;
    std::unique_ptr<cl::KernelRun> run_;
    std::vector<KernelArgument> arguments_;
};

}  // namespace

void registerOpenCLPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCOpenCL"), factoryOf<OpenCLPatch>());
}

}  // namespace runtime
