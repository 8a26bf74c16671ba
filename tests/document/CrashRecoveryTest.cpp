// Never lose work: an editor killed at any moment leaves a journal from
// which the document comes back as saved plus the steps made since, in
// order and each whole; a damaged journal is reported and the document as
// saved still opens.

#include "../support/ComponentFiles.h"

#include "document/CompositionDocument.h"
#include "document/DocumentJournal.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/StopFrame.h"
#include "model/VideoResolution.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

using document::CompositionDocument;
using document::DocumentJournal;

namespace {

class CrashRecoveryTest : public ::testing::Test {
protected:
    CrashRecoveryTest()
    {
        DocumentJournal::setFolderForTesting(dir.filePath(QStringLiteral("journals")));
        const QString box = testfiles::writeBoxComposition(QDir(dir.path()), QStringLiteral("Box.qtz"), {});
        auto doc = CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(QStringLiteral("720p50 RGBA")));
        doc->composition()->addComponenWithQuartzCompositionFile(box, {});
        doc->composition()->componentsSortedByZLevel().front()->setTitle(QStringLiteral("saved"));
        package = dir.filePath(QStringLiteral("Show.composition"));
        QString error;
        EXPECT_TRUE(doc->saveAs(package, &error)) << error.toStdString();
    }
    ~CrashRecoveryTest() override { DocumentJournal::setFolderForTesting({}); }

    // How many of the child's steps a document holds; -1 when it holds a
    // half step or anything else than saved-plus-steps.
    static int stepsIn(const CompositionDocument& doc)
    {
        const model::QuartzComponent* c = doc.composition()->componentsSortedByZLevel().front();
        const std::vector<model::StopFrame*> stops = doc.composition()->stopFrames();
        const int n = int(stops.size());
        const QString title = n == 0 ? QStringLiteral("saved") : QStringLiteral("edit %1").arg(n);
        const double x = n == 0 ? c->originX() : 10.0 * n;
        if (c->title() != title || c->originX() != x) return -1;
        for (const model::StopFrame* s : stops) {
            const int i = s->triggerInformation().mid(1).toInt();
            if (i < 1 || i > n || std::abs(s->timepoint() - i / 20.0) > 1e-9) return -1;
        }
        return n;
    }

    QTemporaryDir dir;
    QString package;
};

TEST_F(CrashRecoveryTest, AKilledEditorLeavesTheSavedStatePlusWholeStepsInOrder)
{
    const int runs = 100;
    int recoveredSomething = 0;
    QRandomGenerator random(20261125);
    for (int run = 0; run < runs; ++run) {
        QProcess child;
        child.start(QStringLiteral(JOURNAL_CRASH_CHILD), {package, DocumentJournal::folder()});
        ASSERT_TRUE(child.waitForReadyRead(20000)) << "run " << run << ": " << child.readAllStandardError().toStdString();
        QThread::msleep(random.bounded(0, 40));
        child.kill();  // SIGKILL: no destructor, no flush, no goodbye
        child.waitForFinished();

        const auto status = DocumentJournal::statusForPackage(package);
        QString error;
        auto doc = CompositionDocument::open(package, &error);
        ASSERT_TRUE(doc) << "run " << run << ": the document as saved always opens: " << error.toStdString();
        const int before = stepsIn(*doc);
        ASSERT_EQ(before, 0) << "run " << run;
        if (status.recoverable()) {
            ASSERT_TRUE(doc->recoverFromJournal(status, &error)) << "run " << run << ": " << error.toStdString();
            const int after = stepsIn(*doc);
            ASSERT_GE(after, 1) << "run " << run << ": a prefix of whole steps, got something else";
            ++recoveredSomething;
        }
        DocumentJournal::discard(status.path);
    }
    EXPECT_GT(recoveredSomething, runs / 2) << "most kills come after some steps";
}

TEST_F(CrashRecoveryTest, RecoveredEditsAreKeptUntilSavedAndADamagedJournalIsReported)
{
    QProcess child;
    child.start(QStringLiteral(JOURNAL_CRASH_CHILD), {package, DocumentJournal::folder()});
    ASSERT_TRUE(child.waitForReadyRead(20000));
    QThread::msleep(150);
    child.kill();
    child.waitForFinished();
    auto status = DocumentJournal::statusForPackage(package);
    ASSERT_TRUE(status.recoverable()) << status.problem.toStdString();

    // Damage in the middle: what comes before it is still offered.
    QFile journal(status.path);
    ASSERT_TRUE(journal.open(QIODevice::ReadWrite));
    const qint64 middle = journal.size() / 2;
    journal.seek(middle);
    journal.write("#####");
    journal.close();
    status = DocumentJournal::statusForPackage(package);
    EXPECT_FALSE(status.problem.isEmpty());
    QString error;
    auto doc = CompositionDocument::open(package, &error);
    ASSERT_TRUE(doc) << error.toStdString();
    if (status.recoverable()) {
        ASSERT_TRUE(doc->recoverFromJournal(status, &error)) << error.toStdString();
        EXPECT_GE(stepsIn(*doc), 1);
    }
    const int recovered = stepsIn(*doc);

    // A second crash before saving keeps the recovered edits and the new ones.
    doc->composition()->addRulerAtPosition(42, true);
    QCoreApplication::processEvents();
    doc->journal()->flush();
    const auto again = DocumentJournal::statusForPackage(package);
    auto reopened = CompositionDocument::open(package, &error);
    ASSERT_TRUE(reopened->recoverFromJournal(again, &error)) << error.toStdString();
    EXPECT_EQ(stepsIn(*reopened), recovered);
    EXPECT_EQ(reopened->composition()->rulers().size(), 1u);

    // Saved: the journal is cut.
    ASSERT_TRUE(reopened->save(&error)) << error.toStdString();
    EXPECT_FALSE(DocumentJournal::statusForPackage(package).recoverable());
}

TEST_F(CrashRecoveryTest, AnUntitledDocumentComesBackFromItsJournalAlone)
{
    QString untitledJournal;
    {
        auto doc = CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(QStringLiteral("1080i25 RGBA")));
        doc->enableJournal();
        doc->composition()->setDuration(42);
        doc->composition()->addStopFrame(2.0, QStringLiteral("Hold"));
        QCoreApplication::processEvents();
        doc->journal()->flush();
        untitledJournal = doc->journal()->journalPath();
        // A crash: the journal stays behind (a normal close would drop it).
        ASSERT_TRUE(QFile::copy(untitledJournal, untitledJournal + QStringLiteral(".kept")));
    }
    ASSERT_FALSE(QFile::exists(untitledJournal)) << "a normal close drops the journal";
    ASSERT_TRUE(QFile::rename(untitledJournal + QStringLiteral(".kept"), untitledJournal));
    const QList<document::JournalStatus> pending = DocumentJournal::pendingJournals();
    ASSERT_EQ(pending.size(), 1);
    EXPECT_TRUE(pending.front().document.isEmpty());
    QString error;
    auto recovered = CompositionDocument::recoverUntitled(pending.front(), &error);
    ASSERT_TRUE(recovered) << error.toStdString();
    EXPECT_EQ(recovered->composition()->duration(), 42.0);
    EXPECT_EQ(recovered->composition()->stopFrames().size(), 1u);
    EXPECT_EQ(recovered->composition()->broadcastMode(), QStringLiteral("1080i25 RGBA"));
}

TEST_F(CrashRecoveryTest, AJournalOfAnOlderSaveIsNotOffered)
{
    QString error;
    auto doc = CompositionDocument::open(package, &error);
    doc->enableJournal();
    doc->composition()->setDuration(33);
    QCoreApplication::processEvents();
    doc->journal()->flush();
    const QString journal = doc->journal()->journalPath();
    ASSERT_TRUE(QFile::copy(journal, journal + QStringLiteral(".kept")));
    // Another program saves the package meanwhile.
    auto other = CompositionDocument::open(package, &error);
    QThread::msleep(20);
    other->composition()->setDuration(12);
    ASSERT_TRUE(other->save(&error));
    doc.reset();
    ASSERT_TRUE(QFile::rename(journal + QStringLiteral(".kept"), journal));
    const auto status = DocumentJournal::statusForPackage(package);
    EXPECT_EQ(status.records, 1);
    EXPECT_TRUE(status.baseChanged);
    EXPECT_FALSE(status.recoverable());
}

}  // namespace
