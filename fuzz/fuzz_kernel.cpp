// libFuzzer target for the Core Image kernel compiler and interpreter: any
// source must compile or fail with an error, and a compiled kernel must run
// over a small region, with an image for each sampler, without a crash, a
// hang or an outsized allocation.
#include "runtime/Image.h"
#include "runtime/kernel/KernelProgram.h"

#include <cstddef>
#include <cstdint>

using runtime::kernel::KernelProgram;
using runtime::kernel::Sampler;
using runtime::kernel::Type;
using runtime::kernel::Vec;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString source = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    QString error;
    const auto program = KernelProgram::compile(source, &error);
    if (!program) return 0;
    QImage pixels(8, 8, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(qRgba(40, 80, 120, 200));
    const runtime::Image image = runtime::Image::fromRaster(pixels, QPoint(-3, 2));
    std::vector<Sampler> samplers;
    std::vector<Vec> arguments;
    for (const auto& p : program->parameters()) {
        if (p.type == Type::Sampler) {
            arguments.push_back(Vec::splat(float(samplers.size())));
            samplers.emplace_back(image, QRect(), Sampler::Filter::Linear, Sampler::Wrap::Transparent);
        } else {
            arguments.push_back(Vec{{0.5f, -2.0f, 3.0f, 1.0f}});
        }
    }
    QImage out(40, 3, QImage::Format_ARGB32_Premultiplied);
    program->render(arguments, samplers, QRect(-5, 0, 40, 3), out);
    return 0;
}
