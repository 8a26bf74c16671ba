// Teapot and GLSL Shader frames.
//  - BM_TessellateTeapot: cutting the 32 patches into 4 096 triangles (once
//    per process).
//  - BM_RenderTeapot/<backend>: a lit, rotating teapot at 1920×1080, and
//    the same teapot drawn with a file's GLSL program (/gl/shaded); the gl
//    cases need an OpenGL context (run under xvfb-run for llvmpipe).
#include "BenchTools.h"
#include "runtime/Renderer.h"
#include "runtime/TeapotData.h"

#include "plist/Value.h"

#include <benchmark/benchmark.h>

namespace {

plist::Value node(const char* className, const char* key, plist::Dictionary state)
{
    return plist::Value(plist::Dictionary{{"class", className}, {"key", key}, {"state", plist::Value(std::move(state))}});
}

std::shared_ptr<const runtime::Composition> teapotScene(bool shaded)
{
    plist::Dictionary teapotPorts{{"inputScale", plist::Value(plist::Dictionary{{"value", 1.5}})}};
    plist::Value teapot = node("QCTeapot", "Teapot_1", {{"ivarInputPortStates", plist::Value(teapotPorts)}});
    plist::Value inner = teapot;
    if (shaded) {
        plist::Dictionary state{{"vertexShader", "varying vec3 n; void main() { n = gl_NormalMatrix * gl_Normal; "
                                                 "gl_FrontColor = gl_Color; gl_Position = ftransform(); }"},
                                {"fragmentShader", "varying vec3 n; void main() { gl_FragColor = gl_Color * "
                                                   "(0.5 + 0.5 * abs(normalize(n).z)); }"},
                                {"nodes", plist::Array{teapot}}};
        inner = node("QCGLSLShader", "GLSLShader_1", state);
    }
    plist::Dictionary lighting{{"lightCount", 1}, {"nodes", plist::Array{inner}}};
    plist::Dictionary rootState{{"nodes", plist::Array{node("QCClear", "Clear_1", {}), node("QCLighting", "Lighting_1", lighting)}}};
    plist::Dictionary document{{"rootPatch", plist::Value(plist::Dictionary{{"class", "QCPatch"}, {"state", plist::Value(rootState)}})}};
    return runtime::Composition::fromPlist(plist::Value(document));
}

void BM_TessellateTeapot(benchmark::State& state)
{
    for (auto _ : state) benchmark::DoNotOptimize(runtime::teapot::tessellate(8));
}
BENCHMARK(BM_TessellateTeapot)->Unit(benchmark::kMillisecond);

void BM_RenderTeapot(benchmark::State& state, runtime::BackendPreference backend, bool shaded)
{
    bench::ensureApplication();
    runtime::Renderer renderer(teapotScene(shaded), QSize(1920, 1080), backend);
    if (backend == runtime::BackendPreference::OpenGL && renderer.backendKind() != runtime::BackendKind::OpenGL) {
        state.SkipWithError("no OpenGL context (run under xvfb-run)");
        return;
    }
    double angle = 0;
    for (auto _ : state) {
        renderer.setNodeInputValue(QStringLiteral("Lighting_1/") + (shaded ? "GLSLShader_1/Teapot_1" : "Teapot_1"), "inputRY",
                                   angle += 3);
        renderer.render(0);
        benchmark::DoNotOptimize(renderer.snapshot().constBits());
    }
}
BENCHMARK_CAPTURE(BM_RenderTeapot, raster, runtime::BackendPreference::Raster, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_RenderTeapot, gl, runtime::BackendPreference::OpenGL, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_RenderTeapot, gl_shaded, runtime::BackendPreference::OpenGL, true)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
