// The document window's layout: canvas above the timeline, the
// inspector and library panels with their View menu items, the title, and
// the arrangement remembered for the next window.

#include "AppFixture.h"

#include "app/ProductInfo.h"
#include "app/VLLibraryController.h"
#include "canvas/VLZoomScrollView.h"
#include "inspector/VLInspectorController.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "timeline/TimelinePanel.h"

#include <QDockWidget>
#include <QSplitter>
#include <QTest>

using model::Settings;

class DocumentWindowLayoutTest : public AppFixture {};

TEST_F(DocumentWindowLayoutTest, TheCanvasSitsAboveTheTimeline)
{
    QSplitter* splitter = window->splitter();
    ASSERT_TRUE(splitter);
    EXPECT_EQ(window->centralWidget(), splitter);
    EXPECT_EQ(splitter->orientation(), Qt::Vertical);
    ASSERT_EQ(splitter->count(), 2);
    EXPECT_EQ(splitter->widget(0), window->scrollView());
    EXPECT_EQ(splitter->widget(1)->objectName(), QStringLiteral("timelinePanel"));
    EXPECT_EQ(splitter->widget(1), window->timelinePanel());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    // The canvas takes the room; the timeline starts at its own height.
    window->resize(1200, 900);
    QCoreApplication::processEvents();
    EXPECT_EQ(window->timelinePanel()->height(), window->timelinePanel()->sizeHint().height());
    EXPECT_GT(window->scrollView()->height(), 300);
}

TEST_F(DocumentWindowLayoutTest, TheInspectorAndTheLibraryAreDockPanels)
{
    auto* inspector = window->findChild<QDockWidget*>(QStringLiteral("inspectorDock"));
    auto* library = window->findChild<QDockWidget*>(QStringLiteral("libraryDock"));
    ASSERT_TRUE(inspector && library);
    EXPECT_EQ(inspector, window->inspectorDock());
    EXPECT_EQ(library->widget(), window->library());
    EXPECT_EQ(inspector->widget(), static_cast<QWidget*>(window->inspector()));
    EXPECT_EQ(window->dockWidgetArea(inspector), Qt::RightDockWidgetArea);
    EXPECT_EQ(window->dockWidgetArea(library), Qt::LeftDockWidgetArea);
    EXPECT_FALSE(inspector->isHidden());
    EXPECT_FALSE(library->isHidden());
}

TEST_F(DocumentWindowLayoutTest, ViewMenuItemsToggleThePanelsAndFollowThem)
{
    for (const auto& [name, dock] : {std::pair{QStringLiteral("toggleInspector"), window->inspectorDock()},
                                     std::pair{QStringLiteral("toggleLibrary"), window->libraryDock()}}) {
        QAction* toggle = window->action(name);
        ASSERT_TRUE(toggle) << name.toStdString();
        EXPECT_TRUE(toggle->isCheckable());
        EXPECT_TRUE(toggle->isChecked());
        toggle->trigger();
        EXPECT_TRUE(dock->isHidden());
        EXPECT_FALSE(toggle->isChecked());
        toggle->trigger();
        EXPECT_FALSE(dock->isHidden());
        EXPECT_TRUE(toggle->isChecked());
        // Closing the panel by its own button unchecks the item.
        dock->close();
        EXPECT_FALSE(toggle->isChecked());
    }
}

TEST_F(DocumentWindowLayoutTest, TheTitleIsTheNameAndTheBroadcastMode)
{
    EXPECT_EQ(window->windowTitleForDocumentDisplayName(QStringLiteral("Show")), QStringLiteral("Show - 1080i25 RGBA"));
    app::VLWindowController* other = controller.newDocumentWithMode(QStringLiteral("576i25 RGBA"));
    other->setCloseQuestion(dontSave);
    EXPECT_EQ(other->windowTitleForDocumentDisplayName(QStringLiteral("Show")), QStringLiteral("Show - 576i25 RGBA"));
    EXPECT_EQ(other->windowTitle(), QStringLiteral("Untitled 2 - 576i25 RGBA"));
}

TEST_F(DocumentWindowLayoutTest, OnlyTheFirstWindowEverFillsTheScreen)
{
    EXPECT_TRUE(window->windowState() & Qt::WindowMaximized);
    closeAll();
    ASSERT_TRUE(Settings::value(Settings::kWindowState).isValid());
    EXPECT_FALSE(newWindow()->windowState() & Qt::WindowMaximized);
}

TEST_F(DocumentWindowLayoutTest, TheNextWindowStartsWithThePanelsAsTheLastWasLeft)
{
    window->action(QStringLiteral("toggleLibrary"))->trigger();
    closeAll();
    const QVariantMap state = Settings::value(Settings::kWindowState).toMap();
    EXPECT_FALSE(state.value(QStringLiteral("mainWindow")).toByteArray().isEmpty());
    EXPECT_FALSE(state.value(QStringLiteral("splitter")).toByteArray().isEmpty());
    app::VLWindowController* next = newWindow();
    EXPECT_TRUE(next->libraryDock()->isHidden());
    EXPECT_FALSE(next->action(QStringLiteral("toggleLibrary"))->isChecked());
    EXPECT_FALSE(next->inspectorDock()->isHidden());
}

TEST_F(DocumentWindowLayoutTest, AWindowThatShowsSomethingOnceLeavesTheLayoutAlone)
{
    window->setRemembersWindowState(false);
    closeAll();
    EXPECT_FALSE(Settings::value(Settings::kWindowState).isValid());
}

TEST_F(DocumentWindowLayoutTest, TheHelpMenuHasHelpAndAbout)
{
    ASSERT_TRUE(window->action(QStringLiteral("showHelp")));
    ASSERT_TRUE(window->action(QStringLiteral("about")));
    EXPECT_EQ(window->action(QStringLiteral("about"))->text(), QStringLiteral("&About Velloran"));
    EXPECT_EQ(app::product::helpPageUrl().scheme(), QStringLiteral("https"));
}
