// The preview window on the offscreen platform: its size, status line,
// trigger button, keys, reload, full screen, slideshow and its one shared
// instance.

#include "../support/ComponentFiles.h"

#include "document/CompositionDocument.h"
#include "document/CompositionExport.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/VideoResolution.h"
#include "preview/PreviewSession.h"
#include "preview/QCViewWithVideo.h"
#include "runtime/Renderer.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using preview::PreviewSession;
using preview::VLPreviewController;

class PreviewWindowTest : public ::testing::Test {
protected:
    // A 576i document (720 × 576) with a red box, playing for `duration`.
    std::unique_ptr<document::CompositionDocument> makeDocument(double duration, std::vector<double> stopFrames = {})
    {
        auto doc = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(QStringLiteral("576i25 RGBA")));
        model::Composition& c = *doc->composition();
        c.setDuration(duration);
        const QString path = testfiles::writeBoxComposition(QDir(dir.path()), QStringLiteral("Box.qtz"), {});
        model::QuartzComponent* box = c.addComponenWithQuartzCompositionFile(path);
        box->attributeForKey(QStringLiteral("Color"))->setCurrentValue(QColor(Qt::red));
        box->setOriginX(100);
        box->setOriginY(100);
        for (double t : stopFrames) c.addStopFrame(t, QString());
        return doc;
    }

    VLPreviewController* preview(const document::CompositionDocument& doc)
    {
        session.togglePreviewForCompositionDocument(&doc);
        return session.controller();
    }

    static QString status(VLPreviewController* c) { return c->statusTextField()->text(); }

    static bool triggerInput(VLPreviewController* c)
    {
        return c->compositionView()->player().renderer()->inputValue(document::CompositionExport::triggerKey()).toBool();
    }

    static void key(VLPreviewController* c, QEvent::Type type, Qt::Key k, bool repeat = false)
    {
        QKeyEvent event(type, k, Qt::NoModifier, QString(), repeat);
        QCoreApplication::sendEvent(c, &event);
    }

    QTemporaryDir dir;
    PreviewSession session;
};

TEST_F(PreviewWindowTest, TheWindowIsTheCompositionPlusTheStatusLine)
{
    auto doc = makeDocument(5);
    VLPreviewController* c = preview(*doc);
    ASSERT_TRUE(c);
    EXPECT_TRUE(c->isVisible());
    EXPECT_TRUE(c->windowFlags() & Qt::WindowStaysOnTopHint) << "floats above the document windows";
    EXPECT_EQ(c->size(), QSize(720, 576 + VLPreviewController::kStatusHeight));
    EXPECT_EQ(c->compositionView()->player().frameSize(), QSize(720, 576));
    EXPECT_TRUE(c->compositionView()->isRendering());
    EXPECT_EQ(status(c), QStringLiteral("Playing Untitled"));
    EXPECT_TRUE(c->reloadButton()->isVisible());
    EXPECT_FALSE(c->triggerButton()->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(c->compositionView()->player().nextStep() > 3, 2000);
    EXPECT_EQ(c->compositionView()->player().frame().pixelColor(150, 576 - 150), QColor(Qt::red)) << "plays the box";
}

TEST_F(PreviewWindowTest, TheStatusLineFollowsStopFramesTriggersAndTheEnd)
{
    auto doc = makeDocument(0.6, {0.2});
    session.setDisplayNames([](const document::CompositionDocument&) { return QStringLiteral("Show"); });
    VLPreviewController* c = preview(*doc);
    EXPECT_EQ(status(c), QStringLiteral("Playing Show"));
    QTRY_VERIFY_WITH_TIMEOUT(c->triggerButton()->isVisible(), 3000);
    EXPECT_EQ(status(c), QStringLiteral("Waiting for Trigger"));
    EXPECT_TRUE(c->isWaitingForTrigger());

    QTest::mouseClick(c->triggerButton(), Qt::LeftButton);
    EXPECT_TRUE(triggerInput(c)) << "the button's pulse";
    QTRY_VERIFY_WITH_TIMEOUT(!c->triggerButton()->isVisible(), 2000);
    EXPECT_EQ(status(c), QStringLiteral("Playing Show"));
    QTRY_VERIFY_WITH_TIMEOUT(!triggerInput(c), 2000);
    QTRY_COMPARE_WITH_TIMEOUT(status(c), QStringLiteral("Playout finished"), 3000);
}

TEST_F(PreviewWindowTest, SpaceHoldsTheTriggerAndRReloads)
{
    auto doc = makeDocument(5, {0.1});
    VLPreviewController* c = preview(*doc);
    key(c, QEvent::KeyPress, Qt::Key_Space);
    key(c, QEvent::KeyRelease, Qt::Key_Space);
    EXPECT_FALSE(triggerInput(c)) << "not waiting yet: nothing happens";

    QTRY_VERIFY_WITH_TIMEOUT(c->isWaitingForTrigger(), 3000);
    key(c, QEvent::KeyPress, Qt::Key_Space);
    EXPECT_TRUE(triggerInput(c));
    QTRY_VERIFY_WITH_TIMEOUT(!c->isWaitingForTrigger(), 2000);
    key(c, QEvent::KeyRelease, Qt::Key_Space, true);
    key(c, QEvent::KeyPress, Qt::Key_Space, true);
    EXPECT_TRUE(triggerInput(c)) << "the keyboard's repeats change nothing";
    key(c, QEvent::KeyRelease, Qt::Key_Space);
    EXPECT_FALSE(triggerInput(c)) << "released even though nothing waits any more";

    QTRY_VERIFY_WITH_TIMEOUT(c->compositionView()->player().time() > 0.3, 3000);
    key(c, QEvent::KeyPress, Qt::Key_R);
    EXPECT_LT(c->compositionView()->player().time(), 0.1) << "from the beginning";
    EXPECT_TRUE(c->compositionView()->isRendering());
    QTRY_VERIFY_WITH_TIMEOUT(c->isWaitingForTrigger(), 3000);
    EXPECT_EQ(status(c), QStringLiteral("Waiting for Trigger")) << "the stop frame holds again";
}

TEST_F(PreviewWindowTest, ATemplateWithoutStopFramesIgnoresTheTriggerKeys)
{
    auto doc = makeDocument(5);
    VLPreviewController* c = preview(*doc);
    QTRY_VERIFY_WITH_TIMEOUT(c->compositionView()->player().nextStep() > 2, 2000);
    key(c, QEvent::KeyPress, Qt::Key_Space);
    EXPECT_FALSE(c->sendTrigger());
    key(c, QEvent::KeyRelease, Qt::Key_Space);
    EXPECT_FALSE(c->triggerButton()->isVisible());
    EXPECT_EQ(status(c), QStringLiteral("Playing Untitled"));
}

TEST_F(PreviewWindowTest, FullScreenHidesTheStatusLineAndEscapeLeavesIt)
{
    auto doc = makeDocument(5);
    VLPreviewController* c = preview(*doc);
    const QSize windowed = c->size();
    session.togglePreviewFullscreen();
    EXPECT_TRUE(c->isPreviewFullScreen());
    EXPECT_FALSE(c->statusTextField()->isVisible());
    EXPECT_EQ(c->geometry(), QGuiApplication::screens().first()->geometry());
    key(c, QEvent::KeyPress, Qt::Key_Escape);
    EXPECT_FALSE(c->isPreviewFullScreen());
    EXPECT_TRUE(c->statusTextField()->isVisible());
    EXPECT_EQ(c->size(), windowed);
}

TEST_F(PreviewWindowTest, ASlideshowOfOneDocumentReplaysIt)
{
    auto doc = makeDocument(0.2);
    session.runSlideshowForCompositions({doc.get()});
    VLPreviewController* c = session.controller();
    ASSERT_TRUE(c);
    int finished = 0;
    QObject::connect(&c->compositionView()->player(), &playout::Player::activeChanged, [&](bool active) {
        if (!active) ++finished;
    });
    QTRY_VERIFY_WITH_TIMEOUT(finished >= 2, 5000);
    EXPECT_EQ(c->currentDocument(), doc.get());
    EXPECT_TRUE(c->compositionView()->isRendering()) << "playing it again";
}

TEST_F(PreviewWindowTest, ASlideshowMovesOnAndForgetsClosedDocuments)
{
    auto first = makeDocument(0.2), second = makeDocument(0.2);
    session.runSlideshowForCompositions({first.get(), second.get()});
    VLPreviewController* c = session.controller();
    EXPECT_EQ(c->currentDocument(), first.get());
    QTRY_COMPARE_WITH_TIMEOUT(c->currentDocument(), second.get(), 5000);
    session.documentWillClose(first.get());
    first.reset();
    QTRY_VERIFY_WITH_TIMEOUT(c->compositionView()->player().nextStep() > 3, 2000);
    QTRY_VERIFY_WITH_TIMEOUT(c->compositionView()->player().nextStep() < 3, 5000);  // started over
    EXPECT_EQ(c->currentDocument(), second.get()) << "only the open one is left";

    // A document previewed on its own ends the slideshow.
    auto third = makeDocument(5);
    session.togglePreviewForCompositionDocument(third.get());
    EXPECT_FALSE(c->slideshow().isRunning());
}

TEST_F(PreviewWindowTest, ClosingTheWindowDropsTheSharedInstance)
{
    auto doc = makeDocument(5);
    VLPreviewController* c = preview(*doc);
    EXPECT_EQ(session.sharedController(), c) << "one window for the application";
    c->close();
    EXPECT_FALSE(c->compositionView()->isRendering());
    QTRY_VERIFY_WITH_TIMEOUT(session.controller() == nullptr, 2000);
    session.togglePreviewFullscreen();  // nothing to do
    VLPreviewController* again = preview(*doc);
    ASSERT_TRUE(again);
    EXPECT_TRUE(again->isVisible());
}

TEST_F(PreviewWindowTest, AnUnsavedDocumentPlaysWithoutAFileLocationAndAFailedExportShowsAnEmptyView)
{
    auto doc = makeDocument(5);
    VLPreviewController* c = preview(*doc);
    EXPECT_TRUE(c->compositionView()->player().renderer()->userInfo().isEmpty());
    const QString before = status(c);
    c->displayCompositionDocument(nullptr);
    EXPECT_FALSE(c->compositionView()->hasComposition());
    EXPECT_TRUE(c->isVisible());
    EXPECT_EQ(status(c), before) << "no status change";
}

TEST_F(PreviewWindowTest, AStillPlayedToATimeStopsAtTheStopFrame)
{
    auto doc = makeDocument(5, {1.0, 2.0});
    VLPreviewController* c = preview(*doc);
    c->showPlayedTo(1.0);
    EXPECT_FALSE(c->compositionView()->isRendering());
    EXPECT_TRUE(c->triggerButton()->isVisible()) << "arrived at the first stop frame";
    EXPECT_EQ(status(c), QStringLiteral("Waiting for Trigger"));
    EXPECT_NEAR(c->compositionView()->player().time(), 1.02, 1e-9) << "both fields of the held frame";

    c->showPlayedTo(1.5);
    EXPECT_FALSE(c->triggerButton()->isVisible()) << "released there, as the thumbnail is";
    EXPECT_EQ(status(c), QStringLiteral("Playing Untitled"));
}

TEST_F(PreviewWindowTest, ATemplateLargerThanTheScreenIsShownSmallerWithItsStatusLine)
{
    auto doc = document::CompositionDocument::emptyDocumentWithResolution(model::VideoResolution(QStringLiteral("2160p25 RGBA")));
    VLPreviewController* c = preview(*doc);
    const QSize room = c->screen()->availableGeometry().size();
    EXPECT_LE(c->height(), room.height());
    EXPECT_LE(c->width(), room.width());
    const QSize content(c->width(), c->height() - VLPreviewController::kStatusHeight);
    EXPECT_NEAR(double(content.width()) / content.height(), 16.0 / 9.0, 0.01) << "the template keeps its shape";
    EXPECT_EQ(c->compositionView()->player().frameSize(), QSize(3840, 2160)) << "rendered at full size all the same";
}
