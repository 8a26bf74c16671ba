// TIFF encoding and decoding of 3840x2160 layers like those of the
// Photoshop benchmark file (tests/fixtures/psd/make_bench_file.mjs): an
// opaque gradient background, and mostly transparent layers holding a
// 1600x900 box of gradients with soft edges and a band of noise. Layers come
// from the importer as straight RGBA8888; decoded ones are premultiplied.
// Counters: "bytes" is the TIFF size of one layer.
#include "quartz/EncodedImageCache.h"
#include "quartz/QuartzValues.h"
#include "quartz/TiffCodec.h"

#include <QBuffer>
#include <QImageWriter>

#include <benchmark/benchmark.h>
#include <sys/resource.h>

namespace {

constexpr int kWidth = 3840, kHeight = 2160;

// CPU of every thread of the process so far, in milliseconds: the strips are
// compressed on all cores, so wall time alone hides what a layer costs.
double processCpuMilliseconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto ms = [](const timeval& t) { return double(t.tv_sec) * 1e3 + double(t.tv_usec) / 1e3; };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

class CpuCounter {
public:
    explicit CpuCounter(benchmark::State& state) : state_(state), start_(processCpuMilliseconds()) {}
    ~CpuCounter() { state_.counters["cpu_ms"] = (processCpuMilliseconds() - start_) / double(std::max<int64_t>(1, state_.iterations())); }

private:
    benchmark::State& state_;
    double start_;
};

// Layer i of the benchmark file: 0 is the background.
QImage psdLayer(int i)
{
    QImage image(kWidth, kHeight, QImage::Format_RGBA8888);
    image.fill(Qt::transparent);
    if (i == 0) {
        for (int y = 0; y < kHeight; ++y) {
            uchar* p = image.scanLine(y);
            for (int x = 0; x < kWidth; ++x, p += 4) p[0] = uchar(x >> 4), p[1] = uchar(y >> 4), p[2] = 128, p[3] = 255;
        }
        return image;
    }
    uint32_t seed = 12345 + uint32_t(i);
    auto random = [&] { return uchar(((seed = (seed * 1103515245u + 12345u) & 0x7fffffff) >> 16) & 0xff); };
    const int bw = 1600, bh = 900, left = (i * 397) % (kWidth - bw), top = (i * 211) % (kHeight - bh);
    for (int y = top; y < top + bh; ++y) {
        uchar* p = image.scanLine(y) + 4 * left;
        for (int x = left; x < left + bw; ++x, p += 4) {
            const bool noisy = y - top < 120;
            p[0] = noisy ? random() : uchar((x - left) >> 3);
            p[1] = noisy ? random() : uchar((y - top) >> 2);
            p[2] = uchar(i * 12);
            p[3] = uchar(std::min({255, (x - left) * 2, (left + bw - 1 - x) * 2}));
        }
    }
    return image;
}

const QImage& layer(int i)
{
    static std::map<int, QImage> layers;
    auto it = layers.find(i);
    if (it == layers.end()) it = layers.emplace(i, psdLayer(i)).first;
    return it->second;
}

void BM_TiffEncode4kLayer(benchmark::State& state)
{
    const QImage& image = layer(int(state.range(0)));
    qsizetype bytes = 0;
    CpuCounter cpu(state);
    for (auto _ : state) bytes = quartz::tiff::encodeUncached(image).size();
    state.counters["bytes"] = double(bytes);
    state.SetBytesProcessed(state.iterations() * image.sizeInBytes());
}

void BM_TiffDecode4kLayer(benchmark::State& state)
{
    const QByteArray bytes = quartz::tiff::encodeUncached(layer(int(state.range(0))));
    CpuCounter cpu(state);
    for (auto _ : state) benchmark::DoNotOptimize(quartz::tiff::decodeUncached(bytes));
    state.counters["bytes"] = double(bytes.size());
    state.SetBytesProcessed(state.iterations() * qint64(kWidth) * kHeight * 4);
}

// The whole import's share: all twenty layers of the file, once each.
void BM_TiffEncode4kTwentyLayers(benchmark::State& state)
{
    for (int i = 0; i < 20; ++i) layer(i);
    qsizetype bytes = 0;
    CpuCounter cpu(state);
    for (auto _ : state) {
        bytes = 0;
        for (int i = 0; i < 20; ++i) bytes += quartz::tiff::encodeUncached(layer(i)).size();
    }
    state.counters["total_MB"] = double(bytes) / (1024.0 * 1024.0);
}

// A save after the first: every layer comes from the cache.
void BM_TiffEncodeCached4kLayer(benchmark::State& state)
{
    const QImage& image = layer(1);
    quartz::tiff::encode(image);
    for (auto _ : state) benchmark::DoNotOptimize(quartz::tiff::encode(image));
}

// The export's file value of an image already encoded: the cached bytes
// copied into a plist::Value (std::string), the one copy left on the way.
void BM_TiffFileValueCached4kLayer(benchmark::State& state)
{
    const QImage& image = layer(1);
    quartz::tiff::encode(image);
    for (auto _ : state) benchmark::DoNotOptimize(quartz::fileValueForVariant(image));
    state.counters["bytes"] = double(quartz::tiff::encode(image).size());
}

// What images cost before: Qt's uncompressed TIFF for composition files and
// PNG for the store.
void BM_QtWriter4kLayer(benchmark::State& state, const char* format)
{
    const QImage& image = layer(1);
    qsizetype size = 0;
    for (auto _ : state) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        QImageWriter(&buffer, format).write(image);
        size = bytes.size();
    }
    state.counters["bytes"] = double(size);
}

}  // namespace

BENCHMARK(BM_TiffEncode4kLayer)->Arg(0)->Arg(1)->ArgName("layer")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TiffDecode4kLayer)->Arg(0)->Arg(1)->ArgName("layer")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TiffEncode4kTwentyLayers)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_TiffEncodeCached4kLayer)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TiffFileValueCached4kLayer)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_QtWriter4kLayer, qt_tiff, "tiff")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_QtWriter4kLayer, png, "png")->Unit(benchmark::kMillisecond)->UseRealTime();
