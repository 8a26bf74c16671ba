// The inspector in the document window: it shows the window's document,
// follows the canvas selection, runs the window's commands, and edits the
// demo's lower third through the same write path as `doc apply`.

#include "AppFixture.h"

#include "app/WindowScreenshot.h"
#include "document/CompositionDocument.h"
#include "document/DocumentCommands.h"
#include "inspector/TextAttributeEditor.h"
#include "inspector/VLInspectorAttributesController.h"
#include "inspector/DocumentPanes.h"
#include "inspector/VLInspectorController.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/StopFrame.h"

#include <QDockWidget>
#include <QLineEdit>
#include <QTest>

class InspectorWindowTest : public AppFixture {
protected:
    app::VLWindowController* openDemo()
    {
        app::VLWindowController* demo =
            controller.openDocument(QStringLiteral(VELLORAN_SOURCE_DIR "/resources/demo/Demo.composition"));
        EXPECT_NE(demo, nullptr);
        if (demo) demo->setCloseQuestion(dontSave);
        return demo;
    }
};

TEST_F(InspectorWindowTest, TheDockHoldsTheInspectorOfTheWindowsDocument)
{
    ASSERT_NE(window->inspector(), nullptr);
    EXPECT_EQ(window->inspectorDock()->widget(), static_cast<QWidget*>(window->inspector()));
    EXPECT_EQ(window->inspector()->document(), window->document());
    EXPECT_EQ(window->inspector()->commands(), window->commands());
}

TEST_F(InspectorWindowTest, TypingTheLowerThirdsNameReachesTheModel)
{
    app::VLWindowController* demo = openDemo();
    ASSERT_NE(demo, nullptr);
    model::Composition* composition = demo->document()->composition();
    QString missing;
    ASSERT_TRUE(app::selectComponentsWithTitles(*composition, {QStringLiteral("Lower Third")}, &missing));
    QCoreApplication::processEvents();
    demo->inspector()->updateIfNeeded();
    auto* name = qobject_cast<inspector::TextAttributeEditor*>(
        demo->inspector()->attributesController()->editorForKey(QStringLiteral("CIName")));
    ASSERT_NE(name, nullptr);
    name->field()->setFocus();
    name->field()->selectAll();
    QTest::keyClicks(name->field(), QStringLiteral("Ada Lovelace"));
    QTest::keyClick(name->field(), Qt::Key_Return);
    const auto selected = composition->selectedComponents();
    ASSERT_EQ(selected.size(), 1u);
    EXPECT_EQ(selected.front()->valueForKey(QStringLiteral("CIName")).toString(), QStringLiteral("Ada Lovelace"));
}

TEST_F(InspectorWindowTest, SelectingByTitleRefusesAnUnknownTitleAndKeepsTheSelection)
{
    app::VLWindowController* demo = openDemo();
    ASSERT_NE(demo, nullptr);
    model::Composition* composition = demo->document()->composition();
    QString missing;
    ASSERT_TRUE(app::selectComponentsWithTitles(*composition, {QStringLiteral("Clock"), QStringLiteral("Ticker")}, &missing));
    EXPECT_EQ(composition->selectedComponents().size(), 2u);
    EXPECT_FALSE(app::selectComponentsWithTitles(*composition, {QStringLiteral("Clock"), QStringLiteral("Nobody")}, &missing));
    EXPECT_EQ(missing, QStringLiteral("Nobody"));
    EXPECT_EQ(composition->selectedComponents().size(), 2u);
}

TEST_F(InspectorWindowTest, AddStopFrameRunsTheWindowsCommand)
{
    model::Composition* composition = window->document()->composition();
    composition->setEditorTimepoint(1.0);
    window->inspector()->setupForTab(inspector::InspectorTab::Document);
    window->inspector()->documentTimingController()->addStopFrame();
    ASSERT_EQ(composition->stopFrames().size(), 1u);
    // The command refuses a second stop frame at the same time.
    window->inspector()->documentTimingController()->addStopFrame();
    EXPECT_EQ(composition->stopFrames().size(), 1u);
}
