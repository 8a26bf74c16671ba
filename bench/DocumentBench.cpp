// Documents at scale: 200 components made from the standard files (half of
// them animated), 3 stop frames. Export, save (store, export, info and a
// 1920×1080 thumbnail) and open; and making one text component.

#include "BenchTools.h"
#include "document/CompositionDocument.h"
#include "document/CompositionExport.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/StandardComponents.h"
#include "model/VideoResolution.h"

#include <QColor>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

constexpr int kComponents = 200;

struct BigDocument {
    std::unique_ptr<document::CompositionDocument> document =
        document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution::defaultVideoResolution());
    QTemporaryDir dir;
    QString package = dir.filePath(QStringLiteral("Big.composition"));

    BigDocument()
    {
        model::Composition& c = *document->composition();
        model::UndoRegistrationPause quiet(document->store().undoManager());
        c.setDuration(30);
        const QString files[] = {QStringLiteral("Box"), QStringLiteral("Text"), QStringLiteral("LowerThird"),
                                 QStringLiteral("Clock")};
        for (int i = 0; i < kComponents; ++i) {
            const QString path = model::StandardComponents::pathForComponent(files[i % 4]);
            model::QuartzComponent* component = c.addComponenWithQuartzCompositionFile(path);
            if (!component) continue;
            component->setTitle(QStringLiteral("Layer %1").arg(i));
            component->setOriginX(i * 7 % 1700);
            component->setOriginY(i * 13 % 900);
            if (i % 2 == 0) {
                model::Attribute* x = component->attributeForKey(QStringLiteral("originX"));
                x->setAnimateable(true);
                for (int k = 0; k < 5; ++k) x->addTimepoint(k * 2.0, float(k * 100));
                model::Attribute* colour = component->attributeForKey(QStringLiteral("Color"));
                if (colour) {
                    colour->setAnimateable(true);
                    colour->addTimepoint(0, QColor(Qt::red));
                    colour->addTimepoint(4, QColor(Qt::blue));
                }
            }
        }
        for (double t : {5.0, 10.0, 20.0}) c.addStopFrame(t);
        document->store().processPendingChanges();
        document->saveAs(package, nullptr);
    }
};

BigDocument& big()
{
    bench::ensureApplication();
    static BigDocument document;
    return document;
}

void BM_Export200Components(benchmark::State& state)
{
    BigDocument& d = big();
    const QString target = d.dir.filePath(QStringLiteral("Export.qtz"));
    for (auto _ : state)
        benchmark::DoNotOptimize(document::CompositionExport::exportToPath(*d.document->composition(), target, false,
                                                                           &document::CompositionExport::documentKey));
}
BENCHMARK(BM_Export200Components)->Unit(benchmark::kMillisecond);

void BM_Save200Components(benchmark::State& state)
{
    BigDocument& d = big();
    for (auto _ : state) benchmark::DoNotOptimize(d.document->save(nullptr));
}
BENCHMARK(BM_Save200Components)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Open200Components(benchmark::State& state)
{
    BigDocument& d = big();
    for (auto _ : state) benchmark::DoNotOptimize(document::CompositionDocument::open(d.package, nullptr));
}
BENCHMARK(BM_Open200Components)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_CreateTextComponent(benchmark::State& state)
{
    bench::ensureApplication();
    auto document =
        document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution::defaultVideoResolution());
    const QString text = model::StandardComponents::pathForComponent(QStringLiteral("Text"));
    model::UndoRegistrationPause quiet(document->store().undoManager());
    for (auto _ : state) {
        auto* c = model::QuartzComponent::initWithQuartzCompositionFile(text, document->composition(), {}, nullptr);
        benchmark::DoNotOptimize(c);
        state.PauseTiming();
        document->store().deleteObject(c);
        document->store().processPendingChanges();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_CreateTextComponent)->Unit(benchmark::kMillisecond);

}  // namespace
