// The document window: menus reach the commands, closing always asks, and
// a failed save never loses the open document.

#include "app/CompositionDocumentsController.h"
#include "app/VLWindowController.h"
#include "canvas/AlertSheet.h"
#include "canvas/CompositionView.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/StandardComponents.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using app::VLWindowController;

class DocumentWindowTest : public ::testing::Test {
protected:
    DocumentWindowTest()
    {
        window = controller.newDocument();
        window->setCloseQuestion([this](VLWindowController&) {
            ++questions;
            return answer;
        });
    }
    ~DocumentWindowTest() override
    {
        answer = VLWindowController::CloseAnswer::DontSave;
        if (window) window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    model::Composition* composition() const { return window->document()->composition(); }
    QMessageBox* alertShown() const { return window->findChild<QMessageBox*>(canvas::alertSheetObjectName()); }

    app::CompositionDocumentsController controller;
    QPointer<VLWindowController> window;
    VLWindowController::CloseAnswer answer = VLWindowController::CloseAnswer::Cancel;
    int questions = 0;
    QTemporaryDir dir;
};

TEST_F(DocumentWindowTest, ANewDocumentUsesTheDefaultModeAndNamesIt)
{
    EXPECT_EQ(composition()->broadcastMode(), QStringLiteral("1080i25 RGBA"));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Untitled - 1080i25 RGBA"));
    VLWindowController* second = controller.newDocumentWithMode(QStringLiteral("720p50 RGBA"));
    EXPECT_EQ(second->windowTitle(), QStringLiteral("Untitled 2 - 720p50 RGBA"));
    second->setCloseQuestion([](VLWindowController&) { return VLWindowController::CloseAnswer::DontSave; });
    second->close();
}

TEST_F(DocumentWindowTest, ClosingAlwaysAsksAndCancelKeepsTheWindow)
{
    EXPECT_FALSE(window->close());
    EXPECT_EQ(questions, 1);
    EXPECT_TRUE(window->isVisible());
    answer = VLWindowController::CloseAnswer::DontSave;
    EXPECT_TRUE(window->close());
    EXPECT_EQ(questions, 2);
}

TEST_F(DocumentWindowTest, ClosingStopsPlaybackBeforeItAsks)
{
    composition()->setPlayMode(1);
    int modeWhenAsked = -1;
    window->setCloseQuestion([&](VLWindowController& w) {
        modeWhenAsked = w.document()->composition()->playMode();
        return VLWindowController::CloseAnswer::Cancel;
    });
    EXPECT_FALSE(window->close());
    EXPECT_EQ(modeWhenAsked, 0) << "the template does not play on behind the question";
}

TEST_F(DocumentWindowTest, SaveAsWritesThePackageAndRenamesTheWindow)
{
    const QString path = dir.filePath(QStringLiteral("Show"));
    ASSERT_TRUE(window->saveDocumentTo(path));
    EXPECT_TRUE(QFileInfo::exists(path + QStringLiteral(".composition/data.xml")));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Show - 1080i25 RGBA"));
    EXPECT_TRUE(window->action(QStringLiteral("revert"))->isEnabled());
}

TEST_F(DocumentWindowTest, AFailedSaveOnCloseKeepsTheDocumentOpen)
{
    // A package path below a regular file can never be created.
    QFile blocker(dir.filePath(QStringLiteral("file")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    window->setPathChooser([&](VLWindowController&, const QString&) { return blocker.fileName() + QStringLiteral("/Show"); });
    answer = VLWindowController::CloseAnswer::Save;
    EXPECT_FALSE(window->close());
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(alertShown());
    EXPECT_TRUE(window->document()->fileURL().isEmpty());
}

TEST_F(DocumentWindowTest, RevertReadsTheSavedVersionAndTheCanvasFollows)
{
    ASSERT_TRUE(window->saveDocumentTo(dir.filePath(QStringLiteral("Show"))));
    composition()->addComponenWithQuartzCompositionFile(model::StandardComponents::pathForComponent(QStringLiteral("Box")));
    ASSERT_EQ(composition()->componentArray().size(), 1u);
    window->revertDocumentToSaved();
    EXPECT_TRUE(composition()->componentArray().empty());
    EXPECT_EQ(window->compositionView()->composition(), composition());
}

TEST_F(DocumentWindowTest, EditMenuUndoesAndNamesTheLastStep)
{
    model::QuartzComponent* box =
        composition()->addComponenWithQuartzCompositionFile(model::StandardComponents::pathForComponent(QStringLiteral("Box")));
    ASSERT_TRUE(box);
    QCoreApplication::processEvents();
    const double x = box->originX();
    window->action(QStringLiteral("bringToFront"))->trigger();
    window->action(QStringLiteral("deleteForward"))->trigger();
    QCoreApplication::processEvents();
    EXPECT_TRUE(composition()->componentArray().empty());
    QAction* undo = window->action(QStringLiteral("undo"));
    ASSERT_TRUE(undo->isEnabled());
    undo->trigger();
    ASSERT_EQ(composition()->componentArray().size(), 1u);
    EXPECT_EQ(composition()->componentArray().front()->originX(), x);
}

TEST_F(DocumentWindowTest, CopyAndPasteGoThroughTheDesktopClipboardBetweenWindows)
{
    model::QuartzComponent* box =
        composition()->addComponenWithQuartzCompositionFile(model::StandardComponents::pathForComponent(QStringLiteral("Box")));
    ASSERT_TRUE(box);
    box->setTitle(QStringLiteral("Logo"));
    QCoreApplication::processEvents();
    window->action(QStringLiteral("copy"))->trigger();
    const QMimeData* offered = QGuiApplication::clipboard()->mimeData();
    ASSERT_TRUE(offered);
    EXPECT_TRUE(offered->hasFormat(QStringLiteral("application/x-velloran-component")));

    VLWindowController* other = controller.newDocument();
    ASSERT_TRUE(other);
    other->setCloseQuestion([](VLWindowController&) { return VLWindowController::CloseAnswer::DontSave; });
    QAction* paste = other->action(QStringLiteral("paste"));
    ASSERT_TRUE(paste->isEnabled());
    paste->trigger();
    model::Composition* target = other->document()->composition();
    ASSERT_EQ(target->componentArray().size(), 1u);
    EXPECT_EQ(target->componentArray().front()->title(), QStringLiteral("Logo"));
    other->action(QStringLiteral("undo"))->trigger();
    EXPECT_TRUE(target->componentArray().empty()) << "a paste is one undo step";
    other->close();
}

TEST_F(DocumentWindowTest, ViewMenuSetsZoomAndOverlays)
{
    window->action(QStringLiteral("zoom50"))->trigger();
    EXPECT_DOUBLE_EQ(window->compositionView()->zoomFactor(), 0.5);
    const bool safe = composition()->showsSafeZones();
    window->action(QStringLiteral("showsSafeZones"))->trigger();
    EXPECT_NE(composition()->showsSafeZones(), safe);
    EXPECT_EQ(window->action(QStringLiteral("showsSafeZones"))->isChecked(), !safe);
}

TEST_F(DocumentWindowTest, OpeningAMissingPackageReportsWhyAndOpensNothing)
{
    QString error;
    EXPECT_EQ(controller.openDocument(dir.filePath(QStringLiteral("Missing.composition")), nullptr, &error), nullptr);
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(controller.windows().size(), 1u);
}

TEST_F(DocumentWindowTest, OpeningAnOpenDocumentBringsItsWindowForward)
{
    const QString path = dir.filePath(QStringLiteral("Show.composition"));
    ASSERT_TRUE(window->saveDocumentTo(path));
    EXPECT_EQ(controller.openDocument(path), window.data());
    EXPECT_EQ(controller.openDocument(path + QStringLiteral("/data.xml")), window.data());
}

TEST_F(DocumentWindowTest, MaintenanceCommandsAnswerInASheet)
{
    window->action(QStringLiteral("makePathsRelative"))->trigger();
    QMessageBox* box = alertShown();
    ASSERT_TRUE(box);
    EXPECT_EQ(box->text(), QStringLiteral("Save Document"));
    box->close();
}
