// Meshes and model files.
//  - BM_LoadModelObj: reading a 100 000-triangle OBJ (a 250 × 200 grid)
//    through Assimp into a mesh, without the cache: what a new logo costs
//    once, on the loader's worker thread.
//  - BM_RenderModelFrame/<backend>: a 1920×1080 frame of that model, lit,
//    turning a little each frame (the cache already holds it).
#include "BenchTools.h"
#include "runtime/BackendFactory.h"
#include "runtime/Composition.h"
#include "runtime/ModelLoader.h"
#include "runtime/Renderer.h"

#include "plist/Value.h"

#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

constexpr int kColumns = 250, kRows = 200;  // 2 × 250 × 200 = 100 000 triangles

// A gently waved grid one unit wide, written once per process.
const QString& gridObj()
{
    static QTemporaryDir dir;
    static const QString path = [] {
        const QString file = dir.filePath(QStringLiteral("grid.obj"));
        QByteArray obj;
        for (int y = 0; y <= kRows; ++y)
            for (int x = 0; x <= kColumns; ++x) {
                const double u = double(x) / kColumns - 0.5, v = double(y) / kRows - 0.4;
                obj += "v " + QByteArray::number(u) + ' ' + QByteArray::number(v) + ' ' + QByteArray::number(0.05 * std::sin(20 * u)) + '\n';
            }
        for (int y = 0; y < kRows; ++y)
            for (int x = 0; x < kColumns; ++x) {
                const int a = y * (kColumns + 1) + x + 1, b = a + 1, c = a + kColumns + 2, d = a + kColumns + 1;
                obj += "f " + QByteArray::number(a) + ' ' + QByteArray::number(b) + ' ' + QByteArray::number(c) + '\n';
                obj += "f " + QByteArray::number(a) + ' ' + QByteArray::number(c) + ' ' + QByteArray::number(d) + '\n';
            }
        QFile out(file);
        if (out.open(QIODevice::WriteOnly)) out.write(obj);
        return file;
    }();
    return path;
}

void BM_LoadModelObj(benchmark::State& state)
{
    const QString& path = gridObj();
    std::size_t triangles = 0;
    for (auto _ : state) {
        const runtime::LoadedModel model = runtime::loadModel(path);
        triangles = model.mesh->triangleCount();
        benchmark::DoNotOptimize(model.mesh.get());
    }
    state.counters["triangles"] = double(triangles);
    state.SetItemsProcessed(std::int64_t(state.iterations()) * std::int64_t(triangles));
}
BENCHMARK(BM_LoadModelObj)->Unit(benchmark::kMillisecond);

plist::Value node(const char* className, const char* key, plist::Dictionary state)
{
    return plist::Value(plist::Dictionary{{"class", plist::Value(className)}, {"key", plist::Value(key)}, {"state", plist::Value(state)}});
}

void BM_RenderModelFrame(benchmark::State& state)
{
    bench::ensureApplication();
    const auto preference = state.range(0) ? runtime::BackendPreference::OpenGL : runtime::BackendPreference::Raster;
    const plist::Value clear = node("QCClear", "Clear_1", {});
    const plist::Value loader = node("QCCore3DLoader", "Loader_1", {{"path", plist::Value(gridObj().toStdString())}});
    const plist::Value renderer = node("QCMeshRenderer", "Renderer_1", {});
    plist::Dictionary connection{{"sourceNode", plist::Value("Loader_1")}, {"sourcePort", plist::Value("outputMesh")},
                                 {"destinationNode", plist::Value("Renderer_1")}, {"destinationPort", plist::Value("inputMesh")}};
    const plist::Value lighting = node("QCLighting", "Lighting_1",
                                       {{"nodes", plist::Value(plist::Array{loader, renderer})},
                                        {"connections", plist::Value(plist::Dictionary{{"c1", plist::Value(connection)}})}});
    plist::Dictionary rootState{{"nodes", plist::Value(plist::Array{clear, lighting})}};
    const plist::Value document(plist::Dictionary{{"rootPatch", plist::Value(plist::Dictionary{{"class", plist::Value("QCPatch")}, {"state", plist::Value(rootState)}})}});
    QString error;
    auto composition = runtime::Composition::fromPlist(document, &error);
    if (!composition) {
        state.SkipWithError(error.toStdString().c_str());
        return;
    }
    runtime::Renderer r(composition, QSize(1920, 1080), preference);
    if (state.range(0) && r.backendKind() != runtime::BackendKind::OpenGL) {
        state.SkipWithError("no OpenGL context (run under xvfb-run)");
        return;
    }
    r.setNodeInputValue(QStringLiteral("Lighting_1/Renderer_1"), QStringLiteral("inputRY"), 10.0);
    double angle = 0;
    for (auto _ : state) {
        // A turning logo: the draw changes every frame.
        r.setNodeInputValue(QStringLiteral("Lighting_1/Renderer_1"), QStringLiteral("inputRY"), angle += 0.5);
        r.render(0);
        benchmark::DoNotOptimize(r.snapshot().constBits());
    }
}
BENCHMARK(BM_RenderModelFrame)->ArgName("gl")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
