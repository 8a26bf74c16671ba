// The demo template played as air plays it: on the wall clock at 1080i25
// (50 fields a second, each rendered and woven), and to files with exact
// steps: a PNG sequence, ProRes 4444 and Animation movies, and rendering
// alone.

#include "BenchTools.h"
#include "DemoDocument.h"
#include "document/CompositionDocument.h"
#include "playout/MovieWriter.h"
#include "playout/Player.h"
#include "playout/PlayoutRender.h"
#include "playout/PngSequenceWriter.h"
#include "playout/RealTimePlayback.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

namespace {


// The demo's export, loaded once.
const playout::PlayoutTemplate& demo(bool background)
{
    static std::optional<playout::PlayoutTemplate> played[2];
    std::optional<playout::PlayoutTemplate>& slot = played[background ? 1 : 0];
    if (!slot) {
        bench::ensureApplication();
        QString error;
        auto document = document::CompositionDocument::open(bench::demoPath(), &error);
        QTemporaryDir scratch;
        if (document)
            slot = playout::exportForPlayout(*document, {background, scratch.filePath(QStringLiteral("Demo.qtz"))}, &error);
        if (!slot) qFatal("the demo does not play: %s", qPrintable(error));
    }
    return *slot;
}

// Keeps nothing: what rendering alone costs.
class NullSink : public playout::FrameSink {
public:
    bool open(const playout::FrameFormat&, QString*) override { return true; }
    bool write(const QImage& frame, qint64, QString*) override
    {
        benchmark::DoNotOptimize(frame.constBits());
        return true;
    }
    bool close(QString*) override { return true; }
};

// The preview: the player on the wall clock for 10 s, as the window runs it.
void BM_PreviewDemo1080i25(benchmark::State& state)
{
    const playout::PlayoutTemplate& played = demo(true);
    for (auto _ : state) {
        playout::Player player;
        player.load(played);
        playout::RealTimePlayback playback(player);
        QEventLoop loop;
        // A coarse timer may end ten seconds half a second early.
        QTimer::singleShot(10'000, Qt::PreciseTimer, &loop, &QEventLoop::quit);
        QElapsedTimer played;
        played.start();
        // The operator lets each stop frame stand for a second.
        QObject::connect(&player, &playout::Player::waitingForTriggerChanged, [&](bool waiting) {
            if (waiting) QTimer::singleShot(1000, &player, [&] { player.sendTrigger(); });
        });
        playback.start();
        loop.exec();
        playback.stop();
        const double seconds = double(played.nsecsElapsed()) * 1e-9;
        const auto& s = playback.statistics();
        state.counters["fields"] = double(s.steps);
        state.counters["dropped"] = double(s.dropped);
        state.counters["ms_per_field"] = s.steps ? s.totalMs / double(s.steps) : 0;
        state.counters["max_ms"] = s.maxMs;
        state.counters["seconds"] = seconds;
        state.counters["fields_per_s"] = double(s.steps) / seconds;
    }
}
BENCHMARK(BM_PreviewDemo1080i25)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

// The whole 12-second demo, keyed, at 1920×1080 into `makeSink()`.
template <class MakeSink>
void playDemo(benchmark::State& state, MakeSink makeSink)
{
    const playout::PlayoutTemplate& played = demo(false);
    qint64 frames = 0;
    for (auto _ : state) {
        QTemporaryDir dir;
        auto sink = makeSink(dir);
        playout::Player player;
        player.load(played, playout::PlayerOptions{false, {}, true});
        const playout::RenderOutcome outcome = playout::PlayoutRender::run(player, {}, *sink);
        if (!outcome.ok) state.SkipWithError(qPrintable(outcome.error));
        frames += outcome.framesWritten;
    }
    state.counters["frames_per_s"] = benchmark::Counter(double(frames), benchmark::Counter::kIsRate);
}

void BM_PlayDemoRenderOnly(benchmark::State& state)
{
    playDemo(state, [](QTemporaryDir&) { return std::make_unique<NullSink>(); });
}
BENCHMARK(BM_PlayDemoRenderOnly)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

void BM_PlayDemoToPng(benchmark::State& state)
{
    playDemo(state, [](QTemporaryDir& dir) { return std::make_unique<playout::PngSequenceWriter>(dir.path()); });
}
BENCHMARK(BM_PlayDemoToPng)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

void BM_PlayDemoToProRes4444(benchmark::State& state)
{
    playDemo(state, [](QTemporaryDir& dir) {
        return std::make_unique<playout::MovieWriter>(dir.filePath(QStringLiteral("demo.mov")), playout::MovieCodec::ProRes4444);
    });
}
BENCHMARK(BM_PlayDemoToProRes4444)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

void BM_PlayDemoToAnimation(benchmark::State& state)
{
    playDemo(state, [](QTemporaryDir& dir) {
        return std::make_unique<playout::MovieWriter>(dir.filePath(QStringLiteral("demo.mov")), playout::MovieCodec::Animation);
    });
}
BENCHMARK(BM_PlayDemoToAnimation)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

// One 1920×1080 frame of the demo converted for ProRes, then encoded.
void BM_ProResFrame(benchmark::State& state)
{
    const playout::PlayoutTemplate& played = demo(false);
    playout::Player player;
    player.load(played, playout::PlayerOptions{false, {}, true});
    const QImage frame = player.renderFrame(150).copy();
    QTemporaryDir dir;
    playout::MovieEncoder encoder;
    QString error;
    if (!encoder.open(dir.filePath(QStringLiteral("f.mov")), playout::MovieCodec::ProRes4444, frame.size(), played.timing,
                      int(state.range(0)), 1, &error))
        state.SkipWithError(qPrintable(error));
    const bool encode = state.range(1) != 0;
    for (auto _ : state) {
        encoder.convert(frame, 0, &error);
        if (encode) encoder.encode(0, &error);
    }
    encoder.finish(&error);
}
BENCHMARK(BM_ProResFrame)->ArgNames({"threads", "encode"})->Args({1, 0})->Args({1, 1})->Args({2, 1})->Unit(benchmark::kMillisecond);

}  // namespace
