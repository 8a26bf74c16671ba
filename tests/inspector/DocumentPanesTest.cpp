// The Document tab: duration, stop frames, background and poster frame,
// rulers, safe zones and guides, each change one undo step. Timecode is
// read in the document's own frame rate.

#include "InspectorFixture.h"

#include "inspector/CheckboxAttributeEditor.h"
#include "inspector/DocumentPanes.h"
#include "inspector/MenuAttributeEditor.h"
#include "inspector/TimecodeEditor.h"

#include "model/Ruler.h"
#include "model/Timecode.h"
#include "model/VideoModeCatalogue.h"
#include "model/StopFrame.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

class DocumentPanes : public InspectorFixture {
protected:
    explicit DocumentPanes(const QString& mode = QStringLiteral("720p25 RGBA")) : InspectorFixture(mode)
    {
        inspector.setupForTab(inspector::InspectorTab::Document);
        startCounting();
    }
    inspector::VLInspectorBackgroundController* background() const { return inspector.backgroundController(); }
    inspector::VLInspectorDocumentTimingController* timing() const { return inspector.documentTimingController(); }
    inspector::VLInspectorOverlaysController* overlays() const { return inspector.overlaysController(); }
};

TEST_F(DocumentPanes, PosterFrameTimecodeIsReadAt25FramesASecond)
{
    QLineEdit* field = background()->posterFrameField()->field();
    EXPECT_EQ(field->placeholderText(), QStringLiteral("None"));  // -1: no poster frame
    retype(field, QStringLiteral("00:00:02:10"));
    EXPECT_DOUBLE_EQ(composition->posterFrameTimepoint(), 2.4);
    EXPECT_EQ(undoManager().undoCount(), 1u);
    EXPECT_EQ(field->text(), QStringLiteral("00:00:02:10"));
}

TEST_F(DocumentPanes, TextThatIsNoTimecodeChangesNothing)
{
    retype(background()->posterFrameField()->field(), QStringLiteral("soon"));
    EXPECT_EQ(composition->posterFrameTimepoint(), -1.0);
    EXPECT_EQ(undoManager().undoCount(), 0u);
    EXPECT_FALSE(background()->setPosterFrameTime(QStringLiteral("12:xx")));
}

TEST_F(DocumentPanes, SetToPlayheadAndNone)
{
    composition->setEditorTimepoint(3.0);
    background()->findChild<QPushButton*>(QStringLiteral("setPosterFrame"))->click();
    EXPECT_EQ(composition->posterFrameTimepoint(), 3.0);
    EXPECT_EQ(background()->posterFrameField()->field()->text(), QStringLiteral("00:00:03:00"));
    background()->findChild<QPushButton*>(QStringLiteral("clearPosterFrame"))->click();
    EXPECT_LT(composition->posterFrameTimepoint(), 0.0);
    EXPECT_EQ(undoManager().undoCount(), 2u);
}

TEST_F(DocumentPanes, BackgroundModeColourOnePopUpStep)
{
    auto* mode = paneEditor<inspector::MenuAttributeEditor>(background(), QStringLiteral("backgroundMode"));
    mode->popUp()->setFocus();
    QTest::keyClick(mode->popUp(), Qt::Key_Down);
    EXPECT_EQ(composition->backgroundMode(), model::kBackgroundColor);
    undoManager().undo();
    EXPECT_EQ(composition->backgroundMode(), model::kBackgroundNone);
    EXPECT_EQ(mode->popUp()->currentIndex(), 0);
}

TEST_F(DocumentPanes, DurationIsTypedAsTimecode)
{
    retype(paneEditor<inspector::TimecodeEditor>(timing(), QStringLiteral("duration"))->field(),
           QStringLiteral("00:00:20:00"));
    EXPECT_EQ(composition->duration(), 20.0);
}

TEST_F(DocumentPanes, StopFramesAreAddedRenamedAndRemoved)
{
    composition->setEditorTimepoint(1.0);
    timing()->findChild<QPushButton*>(QStringLiteral("addButton"))->click();
    ASSERT_EQ(composition->stopFrames().size(), 1u);
    EXPECT_EQ(composition->stopFrames().front()->timepoint(), 1.0);
    settle();
    timing()->refillIfNeeded();
    QTableWidget* table = timing()->table();
    ASSERT_EQ(table->rowCount(), 1);
    EXPECT_EQ(table->item(0, 0)->text(), QStringLiteral("00:00:01:00"));

    table->item(0, 1)->setText(QStringLiteral("Hold"));
    EXPECT_EQ(composition->stopFrames().front()->triggerInformation(), QStringLiteral("Hold"));
    settle();
    timing()->refillIfNeeded();

    timing()->table()->selectRow(0);
    timing()->findChild<QPushButton*>(QStringLiteral("removeButton"))->click();
    EXPECT_TRUE(composition->stopFrames().empty());
    settle();
    timing()->refillIfNeeded();
    EXPECT_EQ(timing()->table()->rowCount(), 0);
    EXPECT_EQ(undoManager().undoCount(), 3u);
    undoManager().undo();
    settle();
    timing()->refillIfNeeded();
    ASSERT_EQ(timing()->table()->rowCount(), 1);
    EXPECT_EQ(timing()->table()->item(0, 1)->text(), QStringLiteral("Hold"));
}

TEST_F(DocumentPanes, GuidesAreAddedVerticalAtZeroMovedAndRemoved)
{
    overlays()->findChild<QPushButton*>(QStringLiteral("addButton"))->click();
    ASSERT_EQ(composition->rulers().size(), 1u);
    EXPECT_EQ(composition->rulers().front()->position(), 0.0);
    EXPECT_FALSE(composition->rulers().front()->horizontal());
    settle();
    overlays()->refillIfNeeded();
    ASSERT_EQ(overlays()->table()->rowCount(), 1);
    EXPECT_EQ(overlays()->table()->item(0, 0)->text(), QStringLiteral("Vertical"));
    overlays()->table()->item(0, 1)->setText(QStringLiteral("120"));
    EXPECT_EQ(composition->rulers().front()->position(), 120.0);
    settle();
    overlays()->refillIfNeeded();
    overlays()->table()->selectRow(0);
    overlays()->findChild<QPushButton*>(QStringLiteral("removeButton"))->click();
    EXPECT_TRUE(composition->rulers().empty());
}

TEST_F(DocumentPanes, RulersAndSafeZonesSwitches)
{
    const bool rulers = composition->showsRulers();
    paneEditor<inspector::CheckboxAttributeEditor>(overlays(), QStringLiteral("showsRulers"))->checkBox()->click();
    EXPECT_EQ(composition->showsRulers(), !rulers);
    paneEditor<inspector::CheckboxAttributeEditor>(overlays(), QStringLiteral("showsSafeZones"))->checkBox()->click();
    EXPECT_TRUE(composition->showsSafeZones());
    EXPECT_EQ(undoManager().undoCount(), 2u);
}

// A document at 29.97 frames a second counts drop-frame timecode.
class DropFrameDocumentPanes : public DocumentPanes {
protected:
    DropFrameDocumentPanes() : DocumentPanes(QStringLiteral("1080i29.97 RGBA"))
    {
        // Another window at 25 frames a second was the last to set the
        // project's rate: this document still reads its own.
        model::Timecode::setProjectRateCode(model::kRate25);
    }
    ~DropFrameDocumentPanes() override { model::Timecode::setProjectRateCode(model::kRate25); }
};

TEST_F(DropFrameDocumentPanes, PosterFrameTimecodeIsReadInTheDocumentsRate)
{
    ASSERT_EQ(composition->videoResolution().frameRate(), model::kRate2997);
    // Minute one starts at label 02: 1800 frames at 30000/1001 a second.
    retype(background()->posterFrameField()->field(), QStringLiteral("00:01:00;02"));
    EXPECT_NEAR(composition->posterFrameTimepoint(), 1800 * 1001.0 / 30000.0, 1e-6);
}
