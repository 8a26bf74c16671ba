// The composition runtime.
//  - BM_RenderBroadcastFrame: a 1920×1080 frame with a full-frame background
//    image, three Image With String layers and two rotated sprites; the
//    target is a median under 10 ms on one core. "/changing_text" retypes
//    one string every frame (a ticker), the worst case for text. "/gl" is
//    the same frame on the OpenGL backend (run under xvfb-run for Mesa's
//    llvmpipe): within 2× of raster.
//  - BM_LoadCorpusFile/<name>: loading each file of the shared corpus
//    (parse, build, describe ports); the target is under 20 ms each.
//  - BM_FirstCorpusFrame/<backend>/<name>: a new renderer's first frame at
//    640×360 (scripts compiled, images decoded); under 2 s each.
//  - BM_ScriptsInIterator: ten JavaScript patches inside a 100-pass
//    iterator, a frame of 1 000 script calls.
#include "../tests/support/AllocationCounter.h"
#include "BenchTools.h"
#include "runtime/BackendFactory.h"
#include "runtime/Composition.h"
#include "runtime/Renderer.h"

#include "plist/Value.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>

#include <benchmark/benchmark.h>

namespace {

plist::Value portStates(std::initializer_list<std::pair<const char*, plist::Value>> values)
{
    plist::Dictionary ports;
    for (const auto& [key, value] : values) ports[key] = plist::Value(plist::Dictionary{{"value", value}});
    return plist::Value(ports);
}

plist::Value node(const char* className, const std::string& key, plist::Dictionary state)
{
    return plist::Value(plist::Dictionary{{"class", plist::Value(className)}, {"key", plist::Value(key)}, {"state", plist::Value(state)}});
}

plist::Value color(double r, double g, double b, double a)
{
    return plist::Value(plist::Dictionary{{"red", r}, {"green", g}, {"blue", b}, {"alpha", a}});
}

std::string png(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes.toStdString();
}

plist::Value connection(const std::string& from, const char* out, const std::string& to, const char* in)
{
    return plist::Value(plist::Dictionary{{"sourceNode", plist::Value(from)}, {"sourcePort", plist::Value(out)},
                                          {"destinationNode", plist::Value(to)}, {"destinationPort", plist::Value(in)}});
}

std::shared_ptr<const runtime::Composition> broadcastScene()
{
    QImage background(1920, 1080, QImage::Format_RGB32);
    QPainter painter(&background);
    QLinearGradient gradient(0, 0, 1920, 1080);
    gradient.setColorAt(0, QColor(20, 30, 80));
    gradient.setColorAt(1, QColor(120, 20, 40));
    painter.fillRect(background.rect(), gradient);
    painter.end();
    QImage logo(256, 256, QImage::Format_ARGB32);
    logo.fill(QColor(255, 200, 0, 200));

    plist::Array nodes;
    plist::Dictionary connections;
    int n = 0;
    auto connect = [&](const std::string& from, const char* out, const std::string& to, const char* in) {
        connections["connection_" + std::to_string(++n)] = connection(from, out, to, in);
    };
    nodes.push_back(node("QCClear", "Clear_1", {{"ivarInputPortStates", portStates({{"inputColor", color(0, 0, 0, 1)}})}}));
    nodes.push_back(node("QCImageLoader", "Background", {{"imageData", plist::Value::data(png(background))}}));
    nodes.push_back(node("QCBillboard", "BackgroundLayer", {{"sizeMode", "real"}}));
    connect("Background", "outputImage", "BackgroundLayer", "inputImage");
    const char* lines[] = {"BREAKING NEWS", "Velloran renders Quartz Composer templates", "Live from the studio"};
    for (int i = 0; i < 3; ++i) {
        const std::string text = "Text_" + std::to_string(i), layer = "TextLayer_" + std::to_string(i);
        nodes.push_back(node("QCTextImage", text,
                             {{"fontName", "LiberationSans-Bold"}, {"horizontalAlignment", "Normal"}, {"manualLayout", false},
                              {"ivarInputPortStates", portStates({{"inputString", plist::Value(lines[i])}, {"inputGlyphSize", 0.08 - 0.02 * i}})}}));
        nodes.push_back(node("QCBillboard", layer,
                             {{"sizeMode", "real"}, {"ivarInputPortStates", portStates({{"inputX", -0.3}, {"inputY", -0.2 - 0.12 * i}})}}));
        connect(text, "outputImage", layer, "inputImage");
    }
    nodes.push_back(node("QCImageLoader", "Logo", {{"imageData", plist::Value::data(png(logo))}}));
    for (int i = 0; i < 2; ++i) {
        const std::string sprite = "Sprite_" + std::to_string(i);
        nodes.push_back(node("QCSprite", sprite,
                             {{"ivarInputPortStates", portStates({{"inputX", 0.6 + 0.2 * i}, {"inputY", 0.3}, {"inputRZ", 15.0 + 20 * i},
                                                                  {"inputWidth", 0.25}, {"inputHeight", 0.25}})}}));
        connect("Logo", "outputImage", sprite, "inputImage");
    }
    plist::Dictionary ticker{{"key", "Ticker"}, {"node", "Text_2"}, {"port", "inputString"}};
    plist::Dictionary backgroundX{{"key", "BackgroundX"}, {"node", "BackgroundLayer"}, {"port", "inputX"}};
    plist::Dictionary rootState{{"nodes", plist::Value(nodes)}, {"connections", plist::Value(connections)},
                                {"publishedInputPorts", plist::Array{plist::Value(ticker), plist::Value(backgroundX)}}};
    plist::Dictionary document{{"rootPatch", plist::Value(plist::Dictionary{{"class", "QCPatch"}, {"state", plist::Value(rootState)}})}};
    return runtime::Composition::fromPlist(plist::Value(document));
}

// What changes from one frame to the next: nothing, the ticker's text, or
// the full-frame background's position (every pixel redrawn).
enum class FrameChange { Still, Ticker, Everything };

void renderBroadcastFrame(benchmark::State& state, FrameChange change, runtime::BackendPreference backend)
{
    bench::ensureApplication();
    runtime::Renderer renderer(broadcastScene(), QSize(1920, 1080), backend);
    if (backend == runtime::BackendPreference::OpenGL && renderer.backendKind() != runtime::BackendKind::OpenGL) {
        state.SkipWithError("no OpenGL context (run under xvfb-run)");
        return;
    }
    renderer.render(0);     // decode the images and lay out the text once
    renderer.render(0.02);  // still layers are pictured from their second draw on
    double t = 0;
    int frame = 0;
    const std::uint64_t allocationsBefore = counting::heapAllocationCount();
    for (auto _ : state) {
        ++frame;
        if (change == FrameChange::Ticker) renderer.setInputValue("Ticker", QStringLiteral("Live from the studio, frame %1").arg(frame));
        if (change == FrameChange::Everything) renderer.setInputValue("BackgroundX", 0.001 * (frame % 2));
        renderer.render(t += 0.04);
        benchmark::DoNotOptimize(renderer.snapshot().constBits());
    }
    state.counters["allocations/frame"] = benchmark::Counter(
        double(counting::heapAllocationCount() - allocationsBefore), benchmark::Counter::kAvgIterations);
}

// Ten scripts chained inside an iterator of 100 passes; half in the older
// inputs/outputs form.
std::shared_ptr<const runtime::Composition> iteratedScripts()
{
    plist::Array nodes{node("QCIteratorVariables", "Variables", {})}, connections;
    std::string previous = "Variables", previousPort = "outputPosition";
    for (int i = 0; i < 10; ++i) {
        const std::string key = "JavaScript_" + std::to_string(i);
        const bool typed = i % 2 == 0;
        plist::Dictionary state{{"script", typed ? "function (__number out) main (__number x) { return {out: x * 0.9 + 0.01}; }"
                                                 : "outputs[0] = inputs[0] + 0.001;"}};
        if (!typed) state["inputCount"] = 1, state["outputCount"] = 1;
        nodes.push_back(node("QCJavaScript", key, state));
        connections.push_back(connection(previous, previousPort.c_str(), key, typed ? "x" : "input_0"));
        previous = key, previousPort = typed ? "out" : "output_0";
    }
    nodes.push_back(node("QCSprite", "Sprite", {{"ivarInputPortStates", portStates({{"inputWidth", 0.1}, {"inputHeight", 0.1}})}}));
    connections.push_back(connection(previous, previousPort.c_str(), "Sprite", "inputX"));
    plist::Dictionary connectionMap;
    for (std::size_t i = 0; i < connections.size(); ++i) connectionMap["connection_" + std::to_string(i)] = connections[i];
    plist::Dictionary iteratorState{{"nodes", plist::Value(nodes)}, {"connections", plist::Value(connectionMap)},
                                    {"ivarInputPortStates", portStates({{"inputCount", 100}})}};
    plist::Dictionary rootState{{"nodes", plist::Array{node("QCClear", "Clear", {}), node("QCIterator", "Iterator", iteratorState)}}};
    plist::Dictionary document{{"rootPatch", plist::Value(plist::Dictionary{{"class", "QCPatch"}, {"state", plist::Value(rootState)}})}};
    return runtime::Composition::fromPlist(plist::Value(document));
}

void BM_ScriptsInIterator(benchmark::State& state)
{
    bench::ensureApplication();
    runtime::Renderer renderer(iteratedScripts(), QSize(64, 36), runtime::BackendPreference::Raster);
    renderer.render(0);
    double t = 0;
    const std::uint64_t allocationsBefore = counting::heapAllocationCount();
    for (auto _ : state) renderer.render(t += 0.04);
    state.counters["allocations/call"] = benchmark::Counter(
        double(counting::heapAllocationCount() - allocationsBefore) / 1000.0, benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_ScriptsInIterator)->Unit(benchmark::kMillisecond);

// What each player and renderer pays for the automatic backend choice once
// the first one has looked at the machine's OpenGL.
void BM_AutomaticBackendChoice(benchmark::State& state)
{
    bench::ensureApplication();
    runtime::makeBackend(runtime::BackendPreference::Automatic);
    for (auto _ : state) benchmark::DoNotOptimize(runtime::makeBackend(runtime::BackendPreference::Automatic));
}
BENCHMARK(BM_AutomaticBackendChoice)->Unit(benchmark::kMillisecond);

void registerCorpusBenchmarks()
{
    // The shared corpus sits next to the repository; VELLORAN_CORPUS_DIR overrides.
    const QString fallback = QFileInfo(QStringLiteral(__FILE__)).absoluteDir().filePath(QStringLiteral("../../shared/qtz-corpus"));
    const QDir corpus(qEnvironmentVariableIsSet("VELLORAN_CORPUS_DIR") ? qEnvironmentVariable("VELLORAN_CORPUS_DIR") : fallback);
    for (const QString& name : corpus.entryList({QStringLiteral("*.qtz")}, QDir::Files, QDir::Name)) {
        const QString path = corpus.filePath(name);
        benchmark::RegisterBenchmark(("BM_LoadCorpusFile/" + name.toStdString()).c_str(), [path](benchmark::State& state) {
            bench::ensureApplication();
            for (auto _ : state) benchmark::DoNotOptimize(runtime::Composition::loadFile(path));
        })->Unit(benchmark::kMillisecond);
        for (const auto backend : {runtime::BackendPreference::Raster, runtime::BackendPreference::OpenGL}) {
            const std::string label = backend == runtime::BackendPreference::OpenGL ? "gl" : "raster";
            benchmark::RegisterBenchmark(("BM_FirstCorpusFrame/" + label + "/" + name.toStdString()).c_str(),
                                         [path, backend](benchmark::State& state) {
                                             bench::ensureApplication();
                                             const auto composition = runtime::Composition::loadFile(path);
                                             if (!composition) return state.SkipWithError("does not load");
                                             for (auto _ : state) {
                                                 runtime::Renderer renderer(composition, QSize(640, 360), backend);
                                                 renderer.render(1.0);
                                                 benchmark::DoNotOptimize(renderer.snapshot().constBits());
                                             }
                                         })
                ->Unit(benchmark::kMillisecond)
                ->Iterations(2);
        }
    }
}

const bool registered = [] {
    registerCorpusBenchmarks();
    return true;
}();

}  // namespace

BENCHMARK_CAPTURE(renderBroadcastFrame, static_text, FrameChange::Still, runtime::BackendPreference::Raster)->Name("BM_RenderBroadcastFrame/static_text")->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(renderBroadcastFrame, changing_text, FrameChange::Ticker, runtime::BackendPreference::Raster)->Name("BM_RenderBroadcastFrame/changing_text")->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(renderBroadcastFrame, moving_background, FrameChange::Everything, runtime::BackendPreference::Raster)->Name("BM_RenderBroadcastFrame/moving_background")->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(renderBroadcastFrame, static_text_gl, FrameChange::Still, runtime::BackendPreference::OpenGL)->Name("BM_RenderBroadcastFrame/static_text/gl")->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(renderBroadcastFrame, changing_text_gl, FrameChange::Ticker, runtime::BackendPreference::OpenGL)->Name("BM_RenderBroadcastFrame/changing_text/gl")->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(renderBroadcastFrame, moving_background_gl, FrameChange::Everything, runtime::BackendPreference::OpenGL)->Name("BM_RenderBroadcastFrame/moving_background/gl")->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);