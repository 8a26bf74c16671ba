// The editor keeps a crash journal for every document and offers what a
// crash left behind: when the document opens, or at start for one never
// saved. A normal close leaves nothing behind.

#include "AppFixture.h"

#include "document/CompositionDocument.h"
#include "document/DocumentJournal.h"
#include "model/Composition.h"
#include "model/VideoResolution.h"

#include <QDir>
#include <QFile>

using Answer = app::CompositionDocumentsController::RecoveryAnswer;

class CrashRecoveryOfferTest : public AppFixture {
protected:
    CrashRecoveryOfferTest()
    {
        package = folder.filePath(QStringLiteral("Show.composition"));
        auto document = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(QStringLiteral("720p25 RGBA")));
        QString error;
        EXPECT_TRUE(document->saveAs(package, &error)) << error.toStdString();
        controller.setCrashRecovery(true);
        controller.setRecoveryQuestion([this](const QString& name, int changes) {
            asked << QStringLiteral("%1:%2").arg(name).arg(changes);
            return answer;
        });
    }

    // Edits the package in a window, then "crashes": the journal is kept
    // as the window closes without saving.
    void editAndCrash(double duration)
    {
        app::VLWindowController* w = controller.openDocument(package);
        ASSERT_NE(w, nullptr);
        w->document()->composition()->setDuration(duration);
        QCoreApplication::processEvents();
        w->document()->journal()->flush();
        const QString journal = w->document()->journal()->journalPath();
        ASSERT_TRUE(QFile::copy(journal, journal + QStringLiteral(".kept")));
        w->setCloseQuestion(dontSave);
        w->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        ASSERT_FALSE(QFile::exists(journal)) << "closing without saving drops the journal";
        ASSERT_TRUE(QFile::rename(journal + QStringLiteral(".kept"), journal));
    }

    QTemporaryDir folder;
    QString package;
    QStringList asked;
    Answer answer = Answer::Recover;
};

TEST_F(CrashRecoveryOfferTest, OpeningADocumentOffersWhatACrashLeft)
{
    editAndCrash(21);
    app::VLWindowController* w = controller.openDocument(package);
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(asked, QStringList{QStringLiteral("Show:1")});
    EXPECT_EQ(w->document()->composition()->duration(), 21.0);
    // Saved: nothing is offered any more.
    QString error;
    ASSERT_TRUE(w->document()->save(&error)) << error.toStdString();
    w->setCloseQuestion(dontSave);
    w->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    asked.clear();
    controller.openDocument(package);
    EXPECT_TRUE(asked.isEmpty());
}

TEST_F(CrashRecoveryOfferTest, DiscardingDropsTheJournal)
{
    editAndCrash(21);
    answer = Answer::Discard;
    app::VLWindowController* w = controller.openDocument(package);
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(asked.size(), 1);
    EXPECT_NE(w->document()->composition()->duration(), 21.0);
    EXPECT_EQ(document::DocumentJournal::statusForPackage(package).records, 0);
}

TEST_F(CrashRecoveryOfferTest, AnUntitledDocumentIsOfferedAtStart)
{
    app::VLWindowController* w = controller.newDocument();
    w->document()->composition()->setDuration(17);
    QCoreApplication::processEvents();
    w->document()->journal()->flush();
    const QString journal = w->document()->journal()->journalPath();
    ASSERT_TRUE(QFile::copy(journal, journal + QStringLiteral(".kept")));
    w->setCloseQuestion(dontSave);
    w->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_TRUE(QFile::rename(journal + QStringLiteral(".kept"), journal));

    const std::size_t before = controller.windows().size();
    controller.offerRecoveryAtStart();
    ASSERT_EQ(controller.windows().size(), before + 1);
    EXPECT_EQ(controller.windows().back()->document()->composition()->duration(), 17.0);
    EXPECT_EQ(asked.size(), 1);
}
