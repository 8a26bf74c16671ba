// The whole import of a large Photoshop file, as `velloran-cli doc add`
// does it: a 3840x2160, 20-layer RLE document (an opaque gradient
// background, then boxes of gradients with a noisy band and soft edges over
// transparency, as tests/fixtures/psd/make_bench_file.mjs makes them) to a
// saved package. Each phase is reported on its own: decode, build (the
// components), encode (the layer images as TIFF), store (data.xml), export
// (Composition.qtz and the preview file), thumbnail; then opening the package.
#include "../tests/psd/PsdTestBuilder.h"

#include "document/ComponentDrop.h"
#include "document/CompositionDocument.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/StandardComponents.h"
#include "model/VideoResolution.h"
#include "psd/PSDLayerImporter.h"
#include "quartz/TiffCodec.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

constexpr int kWidth = 3840, kHeight = 2160, kLayers = 20;

// The same pictures as the node script draws, one plane per channel.
psdtest::Layer benchLayer(int index, uint32_t& seed)
{
    auto random = [&seed] {
        seed = (seed * 1103515245u + 12345u) & 0x7fffffffu;
        return uint8_t((seed >> 16) & 0xff);
    };
    psdtest::Layer layer;
    layer.rect = QRect(0, 0, kWidth, kHeight);
    layer.pascalName = "Layer " + QByteArray::number(index);
    layer.opacity = index == 0 ? 255 : 230;
    std::vector<uint8_t> r(size_t(kWidth) * kHeight), g(r.size()), b(r.size()), a(r.size());
    if (index == 0) {
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                const size_t p = size_t(y) * kWidth + x;
                r[p] = uint8_t(x >> 4), g[p] = uint8_t(y >> 4), b[p] = 128, a[p] = 255;
            }
    } else {
        const int bw = 1600, bh = 900, left = (index * 397) % (kWidth - bw), top = (index * 211) % (kHeight - bh);
        for (int y = top; y < top + bh; ++y)
            for (int x = left; x < left + bw; ++x) {
                const bool noisy = y - top < 120;
                const size_t p = size_t(y) * kWidth + x;
                r[p] = noisy ? random() : uint8_t((x - left) >> 3);
                g[p] = noisy ? random() : uint8_t((y - top) >> 2);
                b[p] = uint8_t((index * 12) & 0xff);
                a[p] = uint8_t(std::min({255, (x - left) * 2, (left + bw - 1 - x) * 2}));
            }
    }
    layer.channels = {{0, std::move(r)}, {1, std::move(g)}, {2, std::move(b)}, {-1, std::move(a)}};
    return layer;
}

QString benchFile()
{
    const QString path = QDir::temp().filePath(QStringLiteral("velloran-import-bench-4k.psd"));
    if (QFileInfo::exists(path)) return path;
    psdtest::Document document;
    document.width = kWidth;
    document.height = kHeight;
    document.layerCompression = psdtest::Rle;
    document.compositeCompression = psdtest::Rle;
    document.rleRuns = true;
    uint32_t seed = 12345;
    for (int i = 0; i < kLayers; ++i) document.layers.push_back(benchLayer(i, seed));
    document.composite.assign(3, std::vector<uint8_t>(size_t(kWidth) * kHeight, 128));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(psdtest::build(document)) < 0) return {};
    return path;
}

qint64 folderBytes(const QString& path)
{
    qint64 total = 0;
    QDirIterator it(path, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) total += QFileInfo(it.next()).size();
    return total;
}

class PhaseClock {
public:
    double lap()
    {
        const double ms = double(timer_.nsecsElapsed()) / 1e6;
        timer_.restart();
        return ms;
    }

private:
    QElapsedTimer timer_ = [] {
        QElapsedTimer t;
        t.start();
        return t;
    }();
};

void BM_ImportPsd4kToPackage(benchmark::State& state)
{
    const QString psdPath = benchFile();
    if (psdPath.isEmpty()) {
        state.SkipWithError("cannot write the Photoshop file");
        return;
    }
    const QString componentFile = model::StandardComponents::pathForComponent(QStringLiteral("ImageComponent"));
    std::map<std::string, double> phases;
    qint64 packageBytes = 0;
    for (auto _ : state) {
        QTemporaryDir dir;
        const QString package = dir.filePath(QStringLiteral("Big.composition"));
        auto document = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(QStringLiteral("2160p25 RGBA")));
        PhaseClock clock;
        std::string error;
        auto importer = psd::PSDLayerImporter::fromPath(psdPath, false, &error);
        if (!importer) {
            state.SkipWithError(error.c_str());
            return;
        }
        phases["decode_ms"] += clock.lap();
        document::importPSDLayers(*document->composition(), *importer, componentFile);
        importer.reset();
        phases["build_ms"] += clock.lap();
        // What the first save encodes; the store and the exports then reuse it.
        for (model::QuartzComponent* c : document->composition()->componentArray())
            for (model::Attribute* a : c->attributes())
                if (a->type() == model::kTypeImage) benchmark::DoNotOptimize(quartz::tiff::encode(a->currentValue().value<QImage>()));
        phases["encode_ms"] += clock.lap();
        QString saveError;
        if (!document->saveAs(package, &saveError)) {
            state.SkipWithError(qPrintable(saveError));
            return;
        }
        const double save = clock.lap();
        const document::SaveTimings& timings = document->lastSaveTimings();
        phases["store_ms"] += timings.storeMs;
        phases["export_ms"] += timings.exportMs;
        phases["thumbnail_ms"] += timings.thumbnailMs;
        phases["save_ms"] += save;
        packageBytes = folderBytes(package);
    }
    for (const auto& [name, total] : phases) state.counters[name] = total / double(state.iterations());
    state.counters["package_MB"] = double(packageBytes) / 1e6;
    state.counters["psd_MB"] = double(QFileInfo(psdPath).size()) / 1e6;
}

void BM_OpenImportedPackage(benchmark::State& state)
{
    const QString psdPath = benchFile();
    QTemporaryDir dir;
    const QString package = dir.filePath(QStringLiteral("Big.composition"));
    {
        auto document = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(QStringLiteral("2160p25 RGBA")));
        document::addComponentsFromPaths(*document->composition(), {psdPath});
        QString error;
        if (!document->saveAs(package, &error)) {
            state.SkipWithError(qPrintable(error));
            return;
        }
    }
    for (auto _ : state) {
        QString error;
        auto opened = document::CompositionDocument::open(package, &error);
        if (!opened) {
            state.SkipWithError(qPrintable(error));
            return;
        }
        benchmark::DoNotOptimize(opened);
    }
}

}  // namespace

BENCHMARK(BM_ImportPsd4kToPackage)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_OpenImportedPackage)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
