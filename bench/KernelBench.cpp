// Core Image kernels run by the CPU interpreter over a 1920 × 1080 frame:
// a per-pixel kernel reading one image (the soft edge of a corpus file), a
// 25-tap convolution, and a generator with an 8-round loop.

#include "runtime/Image.h"
#include "runtime/kernel/KernelProgram.h"

#include <benchmark/benchmark.h>

using runtime::kernel::KernelProgram;
using runtime::kernel::Sampler;
using runtime::kernel::Vec;

namespace {

const char* const kSoftEdge = R"(
kernel vec4 softRect(sampler image, float radius)
{
    vec4 sf;
    vec2 v = samplerCoord(image);
    vec2 s = samplerSize(image);
    vec4 pixel = sample(image, v);
    sf = vec4(v, s - v);
    sf *= 1.0 / radius;
    sf = smoothstep(0.0, 1.0, clamp(sf, 0.0, 1.0));
    pixel.a = sf.x * sf.y * sf.z * sf.w;
    return pixel;
})";

const char* const kBlur5x5 = R"(
kernel vec4 box(sampler image)
{
    vec4 sum = vec4(0.0);
    for (int y = -2; y <= 2; y++)
        for (int x = -2; x <= 2; x++)
            sum += sample(image, samplerCoord(image) + vec2(x, y));
    return sum / 25.0;
})";

const char* const kJulia = R"(
kernel vec4 julia(float scale, vec2 c)
{
    vec2 p = destCoord() * scale;
    for (int i = 0; i < 8; i++) {
        vec2 q = vec2(p.x * p.x - p.y * p.y, 2.0 * p.x * p.y) + c;
        p = dot(p, p) < 4096.0 ? q : p;
    }
    float m = clamp(dot(p, p) / 64.0, 0.0, 1.0);
    return vec4(m, m, m, 1.0);
})";

void runKernel(benchmark::State& state, const char* source, bool withImage)
{
    const auto program = KernelProgram::compile(QString::fromLatin1(source), nullptr);
    if (!program) {
        state.SkipWithError("the kernel does not compile");
        return;
    }
    const QRect frame(0, 0, 1920, 1080);
    QImage pixels(frame.size(), QImage::Format_ARGB32_Premultiplied);
    pixels.fill(QColor(200, 120, 40));
    const runtime::Image image = runtime::Image::fromRaster(pixels);
    std::vector<Sampler> samplers;
    std::vector<Vec> args;
    if (withImage) {
        samplers.emplace_back(image, frame, Sampler::Filter::Linear, Sampler::Wrap::Transparent);
        args = {Vec::splat(0), Vec::splat(100)};
    } else {
        args = {Vec::splat(0.004f), Vec{{0.3f, 0.5f, 0, 0}}};
    }
    QImage out(frame.size(), QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        program->render(args, samplers, frame, out);
        benchmark::DoNotOptimize(out.constBits());
    }
}

}  // namespace

BENCHMARK_CAPTURE(runKernel, soft_edge, kSoftEdge, true)->Name("BM_Kernel1080p/soft_edge")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(runKernel, blur_5x5, kBlur5x5, true)->Name("BM_Kernel1080p/blur_5x5")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(runKernel, julia, kJulia, false)->Name("BM_Kernel1080p/julia")->Unit(benchmark::kMillisecond);
