// The title, transform, appearance and timing panes edit the components
// through the same write path as everything else: sizes keep their
// proportions when asked, times are timecode in the document's rate.

#include "InspectorFixture.h"

#include "inspector/CheckboxAttributeEditor.h"
#include "inspector/NumberAttributeEditor.h"
#include "inspector/OpacityEditor.h"
#include "inspector/PropertyPanes.h"
#include "inspector/TextAttributeEditor.h"
#include "inspector/TimecodeEditor.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QSlider>

class PropertyPanes : public InspectorFixture {
protected:
    PropertyPanes()
    {
        box = addComponent(QStringLiteral("Box"), QStringLiteral("box.qtz"));
        select({box});
        startCounting();
    }
    model::QuartzComponent* box = nullptr;
};

TEST_F(PropertyPanes, TitleIsTypedIntoTheComponent)
{
    auto* title = paneEditor<inspector::TextAttributeEditor>(inspector.titleController(), QStringLiteral("title"));
    EXPECT_EQ(title->field()->text(), QStringLiteral("Box"));
    retype(title->field(), QStringLiteral("Lower third"));
    EXPECT_EQ(box->title(), QStringLiteral("Lower third"));
    EXPECT_EQ(undoManager().undoCount(), 1u);
}

TEST_F(PropertyPanes, WidthKeepsTheProportionsWhenConstrained)
{
    QWidget* pane = inspector.transformController();
    paneEditor<inspector::CheckboxAttributeEditor>(pane, QStringLiteral("constrainProportions"))->checkBox()->click();
    EXPECT_TRUE(box->constrainProportions());
    retype(paneEditor<inspector::NumberAttributeEditor>(pane, QStringLiteral("Width"))->field(), QStringLiteral("400"));
    EXPECT_EQ(box->width(), 400.0);
    EXPECT_EQ(box->height(), 200.0);
    // The height row follows the partner change.
    EXPECT_EQ(paneEditor<inspector::NumberAttributeEditor>(pane, QStringLiteral("Height"))->field()->text(), QStringLiteral("200"));
    undoManager().undo();
    EXPECT_EQ(box->width(), 200.0);
    EXPECT_EQ(box->height(), 100.0);
}

TEST_F(PropertyPanes, SizesAndMarginsCannotGoBelowZero)
{
    QWidget* pane = inspector.transformController();
    retype(paneEditor<inspector::NumberAttributeEditor>(pane, QStringLiteral("Height"))->field(), QStringLiteral("-50"));
    EXPECT_EQ(box->height(), 0.0);
    retype(paneEditor<inspector::NumberAttributeEditor>(pane, QStringLiteral("Margin X"))->field(), QStringLiteral("-3"));
    EXPECT_EQ(box->marginX(), 0.0);
    retype(paneEditor<inspector::NumberAttributeEditor>(pane, QStringLiteral("Rotation"))->field(), QStringLiteral("-45"));
    EXPECT_EQ(box->zRotation(), -45.0);
}

TEST_F(PropertyPanes, OpacitySliderDragIsOneStepInPercent)
{
    auto* opacity = paneEditor<inspector::OpacityEditor>(inspector.appearanceController(), QStringLiteral("opacity"));
    EXPECT_EQ(opacity->slider()->value(), 100);
    Q_EMIT opacity->slider()->sliderPressed();
    opacity->slider()->setValue(80);
    opacity->slider()->setValue(50);
    Q_EMIT opacity->slider()->sliderReleased();
    EXPECT_FLOAT_EQ(float(box->opacity()), 0.5f);
    EXPECT_EQ(opacity->field()->text(), QStringLiteral("50"));
    EXPECT_EQ(undoManager().undoCount(), 1u);
    retype(opacity->field(), QStringLiteral("25"));
    EXPECT_FLOAT_EQ(float(box->opacity()), 0.25f);
}

TEST_F(PropertyPanes, VisibleInEditorSwitch)
{
    paneEditor<inspector::CheckboxAttributeEditor>(inspector.appearanceController(), QStringLiteral("visibleInCompositionEditor"))
        ->checkBox()
        ->click();
    EXPECT_FALSE(box->visibleInCompositionEditor());
}

TEST_F(PropertyPanes, TimesAreTypedAsTimecodeAndKeptInOrder)
{
    QWidget* pane = inspector.timingController();
    auto* start = paneEditor<inspector::TimecodeEditor>(pane, QStringLiteral("startTime"));
    auto* end = paneEditor<inspector::TimecodeEditor>(pane, QStringLiteral("endTime"));
    auto* duration = paneEditor<inspector::TimecodeEditor>(pane, QStringLiteral("duration"));
    EXPECT_EQ(end->field()->text(), QStringLiteral("00:00:10:00"));
    retype(start->field(), QStringLiteral("00:00:01:05"));
    EXPECT_DOUBLE_EQ(box->startTime(), 1.2);
    EXPECT_EQ(duration->field()->text(), QStringLiteral("00:00:08:20"));
    retype(duration->field(), QStringLiteral("2:00"));
    EXPECT_NEAR(box->endTime(), 3.2, 1e-6);
    // An end before the start is held at the start.
    retype(end->field(), QStringLiteral("00:00:00:10"));
    EXPECT_NEAR(box->endTime(), 1.2, 1e-6);
    EXPECT_EQ(undoManager().undoCount(), 3u);
}
