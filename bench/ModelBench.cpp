// The editing model at scale: 500 components with 20 attributes each, every
// animated attribute carrying 30 keyframes.

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/StoreFile.h"

#include <QColor>

#include <benchmark/benchmark.h>

namespace {

using namespace model;

constexpr int kComponents = 500;
constexpr int kAttributesPerComponent = 20;
constexpr int kKeyframes = 30;

struct BigModel {
    ObjectStore store;
    Composition* composition = nullptr;

    BigModel()
    {
        UndoRegistrationPause pause(store.undoManager());
        composition = store.insertNewObject<Composition>();
        composition->setDuration(60);
        for (int i = 0; i < kComponents; ++i) {
            auto* c = store.insertNewObject<QuartzComponent>();
            c->setTitle(QStringLiteral("Layer %1").arg(i));
            c->setEndTime(60);
            const char* geometry[] = {"originX", "originY", "inputWidth", "inputHeight", "opacity", "zRotation"};
            int made = 0;
            for (const char* key : geometry) {
                Attribute* a = Attribute::create(&store, QString::fromLatin1(key), QString::fromLatin1(key), kTypeNumber, float(i));
                a->setToOne(QStringLiteral("component"), c);
                ++made;
            }
            for (; made < kAttributesPerComponent - 3; ++made) {  // margins and visibility are made below
                const bool colour = made % 4 == 0;
                Attribute* a = Attribute::create(&store, QStringLiteral("input%1").arg(made), QStringLiteral("Input %1").arg(made),
                                                 colour ? kTypeColor : kTypeNumber, colour ? QVariant(QColor(Qt::red)) : QVariant(1.0f));
                a->setToOne(QStringLiteral("component"), c);
                if (made % 2 == 0) {
                    for (int k = 0; k < kKeyframes; ++k)
                        a->addTimepoint(k * 2.0, colour ? QVariant(QColor::fromHsv(k * 10, 200, 200)) : QVariant(float(k)));
                }
            }
            c->initializeAttributeObservers();
            composition->addComponent(c);
        }
        store.processPendingChanges();
    }
};

BigModel& model()
{
    static BigModel big;
    return big;
}

void BM_CurrentValueOfEveryAttribute(benchmark::State& state)
{
    BigModel& m = model();
    m.composition->setEditorTimepoint(17.3);
    const auto components = m.composition->componentArray();
    std::vector<Attribute*> all;
    for (QuartzComponent* c : components) {
        const auto attributes = c->attributes();
        all.insert(all.end(), attributes.begin(), attributes.end());
    }
    for (auto _ : state) {
        for (Attribute* a : all) benchmark::DoNotOptimize(a->currentValue());
    }
    state.counters["attributes"] = double(all.size());
}
BENCHMARK(BM_CurrentValueOfEveryAttribute)->Unit(benchmark::kMillisecond);

void BM_UndoMoveOfEveryComponent(benchmark::State& state)
{
    BigModel& m = model();
    const auto components = m.composition->componentArray();
    UndoManager& undo = m.store.undoManager();
    undo.setGroupsByEvent(false);
    for (auto _ : state) {
        state.PauseTiming();
        undo.removeAllActions();
        {
            UndoGroup drag(undo);
            for (QuartzComponent* c : components) c->moveBy(5, 3);
        }
        state.ResumeTiming();
        undo.undo();
    }
}
BENCHMARK(BM_UndoMoveOfEveryComponent)->Unit(benchmark::kMillisecond);

void BM_StoreWrite(benchmark::State& state)
{
    BigModel& m = model();
    qint64 size = 0;
    for (auto _ : state) size = StoreFile::write(m.store).size();
    state.counters["bytes"] = double(size);
}
BENCHMARK(BM_StoreWrite)->Unit(benchmark::kMillisecond);

void BM_StoreRead(benchmark::State& state)
{
    const QByteArray bytes = StoreFile::write(model().store);
    for (auto _ : state) {
        LoadedStore loaded = StoreFile::read(bytes);
        if (!loaded) state.SkipWithError(qPrintable(loaded.error));
        benchmark::DoNotOptimize(loaded.composition);
    }
}
BENCHMARK(BM_StoreRead)->Unit(benchmark::kMillisecond);

}  // namespace
