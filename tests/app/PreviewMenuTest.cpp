// The editor's way into the preview: the toolbar item, the Composition
// menu's preview, full screen and slideshow, File > Render Movie…, and the
// one preview window of the application.

#include "AppFixture.h"

#include "../playout/MovieProbe.h"

#include "canvas/VLMainToolbar.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "playout/MovieEncoder.h"
#include "preview/QCViewWithVideo.h"

#include <QFile>
#include <QLabel>
#include <QProgressDialog>
#include <QTest>
#include <QTimer>

class PreviewMenuTest : public AppFixture {
protected:
    preview::VLPreviewController* shown() { return controller.preview().controller(); }
};

TEST_F(PreviewMenuTest, TheToolbarItemAndTheMenuItemShowTheDocumentsPreview)
{
    QAction* item = window->mainToolbar()->itemAction(QStringLiteral("Preview"));
    ASSERT_TRUE(item);
    EXPECT_TRUE(item->isEnabled());
    item->trigger();
    ASSERT_TRUE(shown());
    EXPECT_TRUE(shown()->isVisible());
    EXPECT_EQ(shown()->currentDocument(), window->document());
    EXPECT_EQ(shown()->statusTextField()->text(), QStringLiteral("Playing %1").arg(window->displayName()));

    app::VLWindowController* second = newWindow();
    second->action(QStringLiteral("showPreview"))->trigger();
    EXPECT_EQ(shown()->currentDocument(), second->document()) << "the same one window, now playing the other";
    for (const char* name : {"togglePreviewFullscreen", "runSlideshow", "renderMovie"})
        EXPECT_TRUE(window->action(QString::fromLatin1(name))) << name;
}

TEST_F(PreviewMenuTest, TheSlideshowPlaysEveryOpenDocumentAndForgetsClosedOnes)
{
    app::VLWindowController* second = newWindow();
    window->action(QStringLiteral("runSlideshow"))->trigger();
    ASSERT_TRUE(shown());
    const auto& show = shown()->slideshow();
    ASSERT_EQ(show.documents().size(), 2u);
    EXPECT_EQ(shown()->currentDocument(), window->document());
    const document::CompositionDocument* closing = second->document();
    second->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_EQ(show.documents().size(), 1u);
    EXPECT_NE(show.documents().front(), closing);
}

TEST_F(PreviewMenuTest, FullScreenNeedsAWindowAndTogglesIt)
{
    window->action(QStringLiteral("togglePreviewFullscreen"))->trigger();
    EXPECT_FALSE(shown()) << "nothing to make full screen yet";
    window->showPreview();
    window->action(QStringLiteral("togglePreviewFullscreen"))->trigger();
    EXPECT_TRUE(shown()->isPreviewFullScreen());
    window->action(QStringLiteral("togglePreviewFullscreen"))->trigger();
    EXPECT_FALSE(shown()->isPreviewFullScreen());
}

TEST_F(PreviewMenuTest, RenderMovieWritesTheTemplateKeyedAndCanBeCancelled)
{
    window->document()->composition()->setDuration(0.4);
    const QString path = dir.filePath(QStringLiteral("movie.mov"));
    ASSERT_TRUE(window->renderMovieTo(path, playout::MovieCodec::Animation));
    const MovieFacts movie = probeMovie(path, 0);
    EXPECT_EQ(movie.frames, 10);
    EXPECT_TRUE(movie.alpha);
    EXPECT_EQ(movie.decoded.pixelColor(10, 10).alpha(), 0) << "keyed: no background";

    // Cancel as soon as the progress dialog shows.
    window->document()->composition()->setDuration(20);
    const QString cancelled = dir.filePath(QStringLiteral("cancelled.mov"));
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (auto* progress = window->findChild<QProgressDialog*>(QStringLiteral("RenderMovieProgress"))) progress->cancel();
    });
    poll.start(20);
    EXPECT_FALSE(window->renderMovieTo(cancelled, playout::MovieCodec::ProRes4444));
    EXPECT_FALSE(QFile::exists(cancelled)) << "a cancelled movie leaves no file";
}

TEST_F(PreviewMenuTest, ClosingThePreviewLetsGoOfIt)
{
    window->showPreview();
    QPointer<preview::VLPreviewController> first = shown();
    first->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(first);
    EXPECT_FALSE(shown());
    window->showPreview();
    EXPECT_TRUE(shown());
}
