// The OpenCL Kernel patch on the machine's OpenCL device (PoCL's CPU device
// here): a frame that doubles a structure of numbers, a 1920 × 1080 image
// kernel, and building a new kernel. Each reports nothing where no device
// exists.

#include "BenchTools.h"

#include "plist/Value.h"
#include "runtime/Composition.h"
#include "runtime/Renderer.h"
#include "runtime/cl/ClDevice.h"

#include <QImage>
#include <QVariantList>

#include <benchmark/benchmark.h>

namespace {

plist::Value kernelDocument(const std::string& source, const char* input, const char* output)
{
    plist::Dictionary state;
    state["source"] = source;
    plist::Dictionary node;
    node["class"] = "QCOpenCL";
    node["key"] = "OpenCL_1";
    node["state"] = plist::Value(std::move(state));
    const auto port = [](const char* key) {
        plist::Dictionary p;
        p["key"] = key;
        p["node"] = "OpenCL_1";
        p["port"] = key;
        return plist::Value(std::move(p));
    };
    plist::Dictionary rootState;
    rootState["nodes"] = plist::Value(plist::Array{plist::Value(std::move(node))});
    rootState["publishedInputPorts"] = plist::Value(plist::Array{port(input)});
    rootState["publishedOutputPorts"] = plist::Value(plist::Array{port(output)});
    plist::Dictionary root;
    root["class"] = "QCPatch";
    root["state"] = plist::Value(std::move(rootState));
    plist::Dictionary document;
    document["rootPatch"] = plist::Value(std::move(root));
    return plist::Value(std::move(document));
}

bool haveDevice(benchmark::State& state)
{
    QString reason;
    if (runtime::cl::Device::shared(&reason)) return true;
    state.SkipWithError(reason.toUtf8().constData());
    return false;
}

void BM_OpenCLDoubleStructure(benchmark::State& state)
{
    bench::ensureApplication();
    if (!haveDevice(state)) return;
    auto composition = runtime::Composition::fromPlist(kernelDocument(R"(
        __kernel void twice(__global const float* values, __global float* doubled) {
            size_t i = get_global_id(0);
            doubled[i] = 2.0f * values[i];
        })", "values", "doubled"));
    runtime::Renderer renderer(composition, QSize(64, 36), runtime::BackendPreference::Raster);
    QVariantList values;
    for (int i = 0; i < state.range(0); ++i) values << double(i);
    double t = 0;
    for (auto _ : state) {
        values[0] = t;  // a new input every frame, so the kernel runs
        renderer.setInputValue("values", values);
        renderer.render(t += 0.04);
        benchmark::DoNotOptimize(renderer.outputValue("doubled"));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_OpenCLDoubleStructure)->Arg(100)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_OpenCLInvertImage1080(benchmark::State& state)
{
    bench::ensureApplication();
    if (!haveDevice(state)) return;
    auto composition = runtime::Composition::fromPlist(kernelDocument(R"(
        const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
        __kernel void invert(read_only image2d_t source, write_only image2d_t inverted) {
            int2 p = (int2)(get_global_id(0), get_global_id(1));
            float4 c = read_imagef(source, nearest, p);
            write_imagef(inverted, p, (float4)(c.w - c.xyz, c.w));
        })", "source", "inverted"));
    runtime::Renderer renderer(composition, QSize(64, 36), runtime::BackendPreference::Raster);
    QImage frames[2] = {QImage(1920, 1080, QImage::Format_ARGB32_Premultiplied), QImage(1920, 1080, QImage::Format_ARGB32_Premultiplied)};
    frames[0].fill(qRgba(10, 20, 30, 255));
    frames[1].fill(qRgba(30, 20, 10, 255));
    int n = 0;
    for (auto _ : state) {
        renderer.setInputValue("source", frames[++n % 2]);
        renderer.render(n * 0.04);
        benchmark::DoNotOptimize(renderer.outputValue("inverted"));
    }
}
BENCHMARK(BM_OpenCLInvertImage1080)->Unit(benchmark::kMillisecond)->UseRealTime();

// Loading a composition with a kernel not built before in this process.
void BM_OpenCLBuildNewKernel(benchmark::State& state)
{
    bench::ensureApplication();
    if (!haveDevice(state)) return;
    static int n = 0;  // across repetitions too: a source built before is cached
    for (auto _ : state) {
        const std::string source = "__kernel void k(__global const float* a, __global float* b) { b[get_global_id(0)] = a[0] + " +
                                   std::to_string(++n) + "; }";
        benchmark::DoNotOptimize(runtime::Composition::fromPlist(kernelDocument(source, "a", "b")));
    }
}
BENCHMARK(BM_OpenCLBuildNewKernel)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(10);

}  // namespace
