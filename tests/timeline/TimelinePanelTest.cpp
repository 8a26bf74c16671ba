// The panel around the timeline: the first animated component opens with a
// document, the timecode field follows and sets the playhead, the zoom
// slider and Control with the wheel zoom, and the rows follow the playhead.

#include "TimelineViewFixture.h"

#include <QLineEdit>
#include <QScrollBar>
#include <QSlider>
#include <QWheelEvent>

using namespace timeline;

class TimelinePanelTest : public TimelineViewFixture {};

TEST_F(TimelinePanelTest, TheFrontMostAnimatedComponentOpensWithTheDocument)
{
    model::QuartzComponent* back = addComponent(QStringLiteral("Back"));
    animate(back, QStringLiteral("originX"), {1, 2});
    model::QuartzComponent* front = addComponent(QStringLiteral("Front"));
    animate(front, QStringLiteral("opacity"), {0, 1});
    addComponent(QStringLiteral("Still"));
    panel.setDocument(document.get(), [this] { return &commands; });
    EXPECT_TRUE(front->expanded());
    EXPECT_FALSE(back->expanded()) << "one only, so a large template's rows stay few";
    EXPECT_EQ(view()->rows().count(), 3 + int(front->children().size()));
    EXPECT_EQ(expandFirstAnimatedComponent(*composition), front);
    EXPECT_TRUE(qobject_cast<VLTimelneClipView*>(panel.scrollView()->viewport())) << "the rows' background view";
    EXPECT_EQ(panel.scrollView()->widget(), view());
}

TEST_F(TimelinePanelTest, TheTimecodeFieldFollowsAndSetsThePlayhead)
{
    QLineEdit* field = panel.timecodeField();
    composition->setEditorTimepoint(2.48);
    EXPECT_EQ(field->text(), QStringLiteral("00:00:02:12"));
    field->setText(QStringLiteral("00:00:07:05"));
    Q_EMIT field->returnPressed();
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 7.2);
    field->setText(QStringLiteral("03:10"));
    Q_EMIT field->returnPressed();
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 3.4) << "fewer fields count from the right";
    field->setText(QStringLiteral("nonsense"));
    Q_EMIT field->returnPressed();
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 3.4);
    EXPECT_EQ(field->text(), QStringLiteral("00:00:03:10")) << "what cannot be read gives way to the playhead's time";
    field->setText(QStringLiteral("00:01:00:00"));
    Q_EMIT field->returnPressed();
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 10) << "held at the end";
}

TEST_F(TimelinePanelTest, TheSliderAndControlWheelZoomAroundAPoint)
{
    panel.resize(900, 400);  // narrower than the 3050 points of the rows
    QCoreApplication::processEvents();
    QSlider* slider = panel.zoomSlider();
    EXPECT_EQ(slider->value(), slider->maximum()) << "the slider shows the view's zoom";
    slider->setValue(0);
    EXPECT_DOUBLE_EQ(view()->unitWidth(), 25);
    EXPECT_EQ(view()->width(), std::max(25 * 10 + 50, panel.scrollView()->viewport()->width()));

    slider->setValue(slider->maximum() / 2);
    QScrollBar* bar = panel.scrollView()->horizontalScrollBar();
    bar->setValue(300);
    const double underMouse = view()->timelineGeometry().exactTimeAt(bar->value() + 200);
    const QPointF at(bar->value() + 200, 10);
    QWheelEvent wheel(at, view()->mapToGlobal(at), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::ControlModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(view(), &wheel);
    EXPECT_GT(view()->unitWidth(), unitWidthForZoom(0.5)) << "Control and the wheel zoom in";
    EXPECT_NEAR(view()->timelineGeometry().exactTimeAt(bar->value() + 200), underMouse, 1.0 / view()->unitWidth())
        << "the time under the mouse stays there";
    EXPECT_EQ(slider->value(), int(std::lround(view()->zoomValue() * slider->maximum())));
}

TEST_F(TimelinePanelTest, TheRowsFollowThePlayheadOutOfView)
{
    panel.resize(900, 400);
    QCoreApplication::processEvents();
    QScrollBar* bar = panel.scrollView()->horizontalScrollBar();
    ASSERT_GT(bar->maximum(), 0);
    composition->setEditorTimepoint(8);
    const double x = view()->timelineGeometry().xPositionAtTime(8, false);
    EXPECT_LE(bar->value(), x);
    EXPECT_GE(bar->value() + panel.scrollView()->viewport()->width(), x) << "the jump brought the playhead into view";
    const int scrolled = bar->value();
    composition->setEditorTimepoint(8.04);
    EXPECT_EQ(bar->value(), scrolled) << "a step inside the view does not scroll";
    commands.jumpToBeginning();
    EXPECT_EQ(bar->value(), 0);
}
