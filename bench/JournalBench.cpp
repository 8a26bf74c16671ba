// The crash journal's cost: one undo step of a 200-component document
// recorded and written, and a document brought back from 1,000 records.

#include "BenchTools.h"
#include "document/CompositionDocument.h"
#include "document/DocumentJournal.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/StandardComponents.h"
#include "model/UndoManager.h"
#include "model/VideoResolution.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

// 200 components of the standard files, saved; journals in a folder of their own.
struct JournalledDocument {
    QTemporaryDir dir;
    QString package = dir.filePath(QStringLiteral("Journal.composition"));

    JournalledDocument()
    {
        bench::ensureApplication();
        document::DocumentJournal::setFolderForTesting(dir.filePath(QStringLiteral("journals")));
        auto doc = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution::defaultVideoResolution());
        model::UndoRegistrationPause quiet(doc->store().undoManager());
        const QString files[] = {QStringLiteral("Box"), QStringLiteral("Text"), QStringLiteral("LowerThird"), QStringLiteral("Clock")};
        for (int i = 0; i < 200; ++i)
            if (auto* c = doc->composition()->addComponenWithQuartzCompositionFile(model::StandardComponents::pathForComponent(files[i % 4])))
                c->setTitle(QStringLiteral("Layer %1").arg(i));
        doc->saveAs(package, nullptr);
    }
};

JournalledDocument& fixture()
{
    static JournalledDocument made;
    return made;
}

// A drag of three components as the canvas makes it: one undo group.
void dragStep(document::CompositionDocument& doc, int n)
{
    model::UndoGroup step(doc.store().undoManager());
    const auto components = doc.composition()->componentsSortedByZLevel();
    for (int k = 0; k < 3; ++k) components[size_t((n * 3 + k) % components.size())]->moveBy(1, 1);
}

void BM_JournalStep200Components(benchmark::State& state)
{
    QString error;
    auto doc = document::CompositionDocument::open(fixture().package, &error);
    if (!doc) {
        state.SkipWithError(qPrintable(error));
        return;
    }
    doc->enableJournal();
    int n = 0;
    for (auto _ : state) {
        state.PauseTiming();
        dragStep(*doc, n++);
        state.ResumeTiming();
        // The step's record: built, checksummed and written.
        doc->journal()->flush();
    }
}

void BM_JournalRecover1000Records(benchmark::State& state)
{
    QString error;
    document::JournalStatus status;
    {
        auto doc = document::CompositionDocument::open(fixture().package, &error);
        doc->enableJournal();
        for (int n = 0; n < 1000; ++n) {
            dragStep(*doc, n);
            doc->journal()->flush();
        }
        doc->journal()->flush();
        const QString path = doc->journal()->journalPath();
        QFile::copy(path, path + QStringLiteral(".kept"));
        doc.reset();
        QFile::rename(path + QStringLiteral(".kept"), path);
        status = document::DocumentJournal::statusForPackage(fixture().package);
    }
    if (status.records != 1000) {
        state.SkipWithError("the journal does not hold 1000 records");
        return;
    }
    for (auto _ : state) {
        auto doc = document::CompositionDocument::open(fixture().package, &error);
        if (!doc || !doc->recoverFromJournal(status, &error)) {
            state.SkipWithError(qPrintable(error));
            return;
        }
        // Recovering goes on in the same journal; keep it for the next round.
        state.PauseTiming();
        const QString path = doc->journal()->journalPath();
        QFile::copy(path, path + QStringLiteral(".kept"));
        doc.reset();
        QFile::rename(path + QStringLiteral(".kept"), path);
        state.ResumeTiming();
    }
}

}  // namespace

BENCHMARK(BM_JournalStep200Components)->Unit(benchmark::kMillisecond)->Iterations(300);
BENCHMARK(BM_JournalRecover1000Records)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
