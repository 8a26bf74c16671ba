// Photoshop decoding: a 3840x2160, 20-layer, 8-bit RLE document, all layers
// and the composite, with the process's peak memory against the decoded
// pixel bytes; and `velloran-cli psd export` of the same file, whole and its
// PNG writing alone. The input is made once, outside the repository, by
// tests/fixtures/psd/make_bench_file.mjs (ag-psd); VELLORAN_PSD_BENCH_FILE
// overrides its default path.
#include "cli/Command.h"
#include "psd/PSDLayerImporter.h"
#include "psd/PngEncoder.h"
#include "psd/PsdDocument.h"
#include "psd/TaskRunner.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

QString benchFile()
{
    const QByteArray env = qgetenv("VELLORAN_PSD_BENCH_FILE");
    return env.isEmpty() ? QStringLiteral("/tmp/psd-bench-4k.psd") : QString::fromLocal8Bit(env);
}

double peakResidentMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;  // kilobytes on Linux
}

// User and kernel CPU so far, in milliseconds: on virtual machines the
// kernel's zeroing of fresh pages for the images can outweigh the decoding.
std::pair<double, double> cpuMilliseconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto ms = [](const timeval& t) { return double(t.tv_sec) * 1e3 + double(t.tv_usec) / 1e3; };
    return {ms(usage.ru_utime), ms(usage.ru_stime)};
}

void decodeDocument(benchmark::State& state, const psd::DecodeOptions& options)
{
    const QString path = benchFile();
    if (!QFileInfo::exists(path)) {
        state.SkipWithError("no input: run tests/fixtures/psd/make_bench_file.mjs or set VELLORAN_PSD_BENCH_FILE");
        return;
    }
    int64_t decodedBytes = 0;
    const auto [userBefore, systemBefore] = cpuMilliseconds();
    for (auto _ : state) {
        std::string error;
        auto doc = psd::decodeFile(path, &error, options);
        if (!doc) {
            state.SkipWithError(error.c_str());
            return;
        }
        decodedBytes = doc->composite.sizeInBytes();
        for (const psd::Layer& layer : doc->layers) decodedBytes += layer.image.sizeInBytes();
        benchmark::DoNotOptimize(doc);
    }
    const auto [userAfter, systemAfter] = cpuMilliseconds();
    state.counters["user_cpu_ms"] = (userAfter - userBefore) / double(state.iterations());
    state.counters["kernel_cpu_ms"] = (systemAfter - systemBefore) / double(state.iterations());
    state.SetBytesProcessed(state.iterations() * decodedBytes);
    state.counters["decoded_MB"] = double(decodedBytes) / (1024.0 * 1024.0);
    state.counters["peak_rss_MB"] = peakResidentMegabytes();
    if (decodedBytes > 0) state.counters["peak_per_decoded"] = peakResidentMegabytes() * 1024.0 * 1024.0 / double(decodedBytes);
    state.counters["file_MB"] = double(QFileInfo(path).size()) / (1024.0 * 1024.0);
}

void BM_PsdDecode4kTwentyLayers(benchmark::State& state) { decodeDocument(state, {}); }

// As an editor or a command decodes a file, once, some seconds after memory
// was last freed: on our virtual machines fresh memory costs far more than
// memory a loop of decodes keeps getting back (see docs/psd.md, "Memory").
void BM_PsdDecode4kAfterIdle(benchmark::State& state)
{
    const QString path = benchFile();
    if (!QFileInfo::exists(path)) {
        state.SkipWithError("no input: run tests/fixtures/psd/make_bench_file.mjs or set VELLORAN_PSD_BENCH_FILE");
        return;
    }
    for (auto _ : state) {
        state.PauseTiming();
        std::this_thread::sleep_for(std::chrono::seconds(4));
        state.ResumeTiming();
        auto doc = psd::decodeFile(path);
        benchmark::DoNotOptimize(doc);
    }
}

// On the calling thread only: what decoding on all cores is measured against.
void BM_PsdDecode4kTwentyLayersOneThread(benchmark::State& state)
{
    psd::DecodeOptions oneThread;
    oneThread.threads = 1;
    decodeDocument(state, oneThread);
}

// With a progress callback, as the editor's import decodes: what telling
// the rows done (one locked call per band) costs against no callback.
void BM_PsdDecode4kWithProgress(benchmark::State& state)
{
    psd::DecodeOptions told;
    std::atomic<int64_t> calls{0};
    told.progress = [&calls](int64_t, int64_t) {
        calls.fetch_add(1, std::memory_order_relaxed);
        return true;
    };
    decodeDocument(state, told);
    state.counters["progress_calls"] = double(calls.load()) / double(std::max<int64_t>(1, state.iterations()));
}

// The layers without the composite, as `psd export` decodes them.
void BM_PsdDecode4kLayersOnly(benchmark::State& state)
{
    psd::DecodeOptions layersOnly;
    layersOnly.composite = false;
    decodeDocument(state, layersOnly);
}

// The editor's and `doc add`'s way in: the importer's layer list from the file.
void BM_PsdImportLayers(benchmark::State& state)
{
    if (!QFileInfo::exists(benchFile())) {
        state.SkipWithError("no input: run tests/fixtures/psd/make_bench_file.mjs or set VELLORAN_PSD_BENCH_FILE");
        return;
    }
    for (auto _ : state) {
        std::string error;
        auto importer = psd::PSDLayerImporter::fromPath(benchFile(), false, &error);
        if (!importer) {
            state.SkipWithError(error.c_str());
            return;
        }
        benchmark::DoNotOptimize(importer);
    }
}

// `velloran-cli psd export` of the benchmark file into a fresh folder: decoding,
// 20 PNG files written on both cores and index.json.
void BM_PsdExport4kTwentyLayers(benchmark::State& state)
{
    const QString path = benchFile();
    if (!QFileInfo::exists(path)) {
        state.SkipWithError("no input: run tests/fixtures/psd/make_bench_file.mjs or set VELLORAN_PSD_BENCH_FILE");
        return;
    }
    QTemporaryDir tmp;
    qint64 written = 0;
    for (auto _ : state) {
        QString out, err;
        QTextStream outStream(&out), errStream(&err);
        cli::Streams io{outStream, errStream};
        const QString dir = tmp.filePath(QStringLiteral("out"));
        if (cli::runCommandLine({"psd", "export", path, dir}, io) != cli::kSuccess) {
            errStream.flush();
            state.SkipWithError(err.toStdString().c_str());
            return;
        }
        state.PauseTiming();
        written = 0;
        for (const QFileInfo& file : QDir(dir).entryInfoList(QDir::Files)) written += file.size();
        QDir(dir).removeRecursively();
        state.ResumeTiming();
    }
    state.counters["written_MB"] = double(written) / (1024.0 * 1024.0);
}

// The export's second half alone: the decoded layers written as PNG files on both cores.
void BM_PsdWriteLayerPngs(benchmark::State& state)
{
    psd::DecodeOptions layersOnly;
    layersOnly.composite = false;
    std::string error;
    const auto doc = QFileInfo::exists(benchFile()) ? psd::decodeFile(benchFile(), &error, layersOnly) : std::nullopt;
    if (!doc) {
        state.SkipWithError("no input: run tests/fixtures/psd/make_bench_file.mjs or set VELLORAN_PSD_BENCH_FILE");
        return;
    }
    QTemporaryDir tmp;
    for (auto _ : state) {
        psd::runTasks(int(doc->layers.size()), 0, [&](int i) {
            return psd::savePng(doc->layers[size_t(i)].image, tmp.filePath(QString::number(i) + ".png"));
        });
    }
    state.SetBytesProcessed(state.iterations() * int64_t(doc->layers.size()) * doc->layers.front().image.sizeInBytes());
}

void BM_PsdReadLayerRecords(benchmark::State& state)
{
    psd::DecodeOptions recordsOnly;
    recordsOnly.layerPixels = false;
    recordsOnly.composite = false;
    decodeDocument(state, recordsOnly);
}

}  // namespace

BENCHMARK(BM_PsdDecode4kTwentyLayers)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PsdDecode4kAfterIdle)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_PsdDecode4kWithProgress)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PsdDecode4kTwentyLayersOneThread)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PsdDecode4kLayersOnly)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PsdImportLayers)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PsdExport4kTwentyLayers)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PsdWriteLayerPngs)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PsdReadLayerRecords)->Unit(benchmark::kMillisecond)->UseRealTime();
