// What a template hands to the people who run it:
//  - BM_FieldSchema200Components: the field schema of a 200-component
//    document with every attribute open to the operator (≤ 20 ms).
//  - BM_StepPicturesDemo: the picture at each stop frame of the demo,
//    played from its export (≤ 1 s for all).
//  - BM_TextCheckDemo: the worst-case text check of the demo with the
//    default samples (≤ 2 s).

#include "BenchTools.h"
#include "DemoDocument.h"
#include "document/CompositionDocument.h"
#include "document/FieldSchema.h"
#include "document/TextCheck.h"
#include "document/Thumbnail.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/StandardComponents.h"
#include "model/VideoResolution.h"

#include <QTemporaryDir>
#include <QUrl>

#include <benchmark/benchmark.h>

namespace {

void BM_FieldSchema200Components(benchmark::State& state)
{
    bench::ensureApplication();
    auto document =
        document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution::defaultVideoResolution());
    model::Composition& c = *document->composition();
    {
        model::UndoRegistrationPause quiet(document->store().undoManager());
        const QString files[] = {QStringLiteral("Box"), QStringLiteral("Text"), QStringLiteral("LowerThird"),
                                 QStringLiteral("Clock")};
        for (int i = 0; i < 200; ++i) {
            model::QuartzComponent* component =
                c.addComponenWithQuartzCompositionFile(model::StandardComponents::pathForComponent(files[i % 4]));
            if (!component) continue;
            component->setTitle(QStringLiteral("Layer %1").arg(i));
            for (model::Attribute* attribute : component->attributes()) attribute->setPermissionToChange(true);
        }
        for (double t : {5.0, 10.0}) c.addStopFrame(t);
        document->store().processPendingChanges();
    }
    int fields = 0;
    for (auto _ : state) {
        const QJsonObject schema = document::fieldSchema(c, QStringLiteral("Big"));
        fields = int(schema.value(QLatin1String("properties")).toObject().size());
        benchmark::DoNotOptimize(fields);
    }
    state.counters["fields"] = fields;
}
BENCHMARK(BM_FieldSchema200Components)->Unit(benchmark::kMillisecond);

void BM_StepPicturesDemo(benchmark::State& state)
{
    auto document = bench::openDemo(state);
    if (!document) return;
    QTemporaryDir dir;
    int pictures = 0;
    for (auto _ : state) {
        QString error;
        const auto written =
            document::exportStepPictures(*document->composition(), dir.path(), {},
                                         QUrl::fromLocalFile(bench::demoPath()), &error);
        pictures = written ? int(written->size()) : -1;
    }
    state.counters["pictures"] = pictures;
}
BENCHMARK(BM_StepPicturesDemo)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_TextCheckDemo(benchmark::State& state)
{
    auto document = bench::openDemo(state);
    if (!document) return;
    int results = 0;
    for (auto _ : state) results = int(document::checkTextFields(*document->composition()).size());
    state.counters["renders"] = results;
}
BENCHMARK(BM_TextCheckDemo)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
