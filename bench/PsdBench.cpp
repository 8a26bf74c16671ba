// Photoshop decoding: a 3840x2160, 20-layer, 8-bit RLE document, all layers
// and the composite, with the process's peak memory against the decoded
// pixel bytes. The input is made once, outside the repository, by
// tests/fixtures/psd/make_bench_file.mjs (ag-psd); VELLORAN_PSD_BENCH_FILE
// overrides its default path.
#include "psd/PsdDocument.h"

#include <QFileInfo>

#include <benchmark/benchmark.h>
#include <sys/resource.h>

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

void BM_PsdReadLayerRecords(benchmark::State& state)
{
    psd::DecodeOptions recordsOnly;
    recordsOnly.layerPixels = false;
    recordsOnly.composite = false;
    decodeDocument(state, recordsOnly);
}

}  // namespace

BENCHMARK(BM_PsdDecode4kTwentyLayers)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PsdReadLayerRecords)->Unit(benchmark::kMillisecond)->UseRealTime();
