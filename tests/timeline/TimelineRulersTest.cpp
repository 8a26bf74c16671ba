// The rulers and the keys: the playhead set in the time ruler, stop frames
// dragged in its strip, the stop-frame buttons in its corner, the name
// column's disclosure and keyframe buttons, the keys and the transport.

#include "TimelineViewFixture.h"

#include "widgets/VLSegmentedControl.h"

#include <QLineEdit>
#include <QSlider>
#include <QToolButton>

using namespace timeline;
using Buttons = VLTimelineControlButtons;

class TimelineRulersTest : public TimelineViewFixture {};

TEST_F(TimelineRulersTest, APressInTheRulerMovesThePlayheadByWholeFrames)
{
    startCounting();
    pressRuler(rulerAt(4));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 4);
    dragRulerTo(rulerAt(5.6) + QPointF(5, 0));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 5.6) << "5 pixels past a frame: that frame";
    dragRulerTo(rulerAt(5.5));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 5.48) << "half a second lies inside the frame from 5.48";
    dragRulerTo(rulerAt(20));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 10) << "held at the end";
    releaseRuler(rulerAt(20));
    EXPECT_EQ(steps(), 0u) << "the playhead is not stored";
}

TEST_F(TimelineRulersTest, AStopFrameDraggedInItsStripIsOneStep)
{
    composition->addStopFrame(2);
    composition->setEditorTimepoint(1);
    startCounting();
    const QString before = snapshot();
    pressRuler(stopStripAt(2) + QPointF(3, 0));
    EXPECT_TRUE(view()->draggingStopFrame());
    EXPECT_FALSE(view()->markerSelected());
    dragRulerTo(stopStripAt(3));
    dragRulerTo(stopStripAt(3.6));
    releaseRuler(stopStripAt(3.6));
    EXPECT_EQ(composition->stopFrameTimepoints(), std::vector<double>{3.6});
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 1) << "dragging a stop frame leaves the playhead";
    EXPECT_FALSE(view()->draggingStopFrame());
    expectOneUndoableStep(before);
}

TEST_F(TimelineRulersTest, APressInTheStripAwayFromStopFramesTakesThePlayhead)
{
    composition->addStopFrame(2);
    pressRuler(stopStripAt(6));
    EXPECT_TRUE(view()->markerSelected());
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 6);
    dragRulerTo(stopStripAt(7));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 7);
    releaseRuler(stopStripAt(7));
    EXPECT_FALSE(view()->markerSelected());
    EXPECT_EQ(composition->stopFrameTimepoints(), std::vector<double>{2});
}

TEST_F(TimelineRulersTest, CornerButtonsAddRemoveAndStepOnReleaseOnly)
{
    composition->setEditorTimepoint(1);
    startCounting();
    pressRuler(cornerButton(Buttons::kAdd));
    EXPECT_TRUE(composition->stopFrames().empty()) << "nothing happens on the press";
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 1) << "and the playhead stays";
    releaseRuler(cornerButton(Buttons::kAdd));
    EXPECT_EQ(composition->stopFrameTimepoints(), std::vector<double>{1}) << "added at the playhead";
    EXPECT_EQ(steps(), 1u);
    pressRuler(cornerButton(Buttons::kRemove));
    releaseRuler(cornerButton(Buttons::kRemove));
    EXPECT_TRUE(composition->stopFrames().empty()) << "the middle button removes the one at the playhead";

    composition->addStopFrame(2);
    composition->addStopFrame(5);
    composition->setEditorTimepoint(3);
    pressRuler(cornerButton(Buttons::kPrevious));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 3) << "never on the press";
    releaseRuler(cornerButton(Buttons::kPrevious));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 2);
    pressRuler(cornerButton(Buttons::kPrevious));
    releaseRuler(cornerButton(Buttons::kPrevious));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 2) << "nothing before the first: the button is dead";
    pressRuler(cornerButton(Buttons::kNext));
    releaseRuler(cornerButton(Buttons::kNext));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 5);
    pressRuler(cornerButton(Buttons::kNext));
    releaseRuler(cornerButton(Buttons::kNext));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 5) << "nothing after the last";
}

TEST_F(TimelineRulersTest, TheNameColumnOpensComponentsAndSelectsThem)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 0, 10);
    model::QuartzComponent* other = addComponent(QStringLiteral("Other"), 0, 10);  // row 0
    QCoreApplication::processEvents();
    const int rowsBefore = view()->rows().count();
    const int heightBefore = view()->height();
    clickName(nameAt(1, 10));
    EXPECT_TRUE(c->expanded()) << "the disclosure triangle opens it";
    QCoreApplication::processEvents();
    EXPECT_EQ(view()->rows().count(), rowsBefore + int(c->children().size()));
    EXPECT_GE(view()->height(), view()->timeAxisSize().height()) << "the view grew with its rows";
    EXPECT_GE(view()->height(), heightBefore);
    clickName(nameAt(1, 10));
    EXPECT_FALSE(c->expanded());
    clickName(nameAt(1, 80));
    EXPECT_TRUE(c->selected()) << "the name selects";
    EXPECT_FALSE(other->selected());
    clickName(nameAt(0, 80), Qt::ShiftModifier);
    EXPECT_TRUE(c->selected() && other->selected());
}

TEST_F(TimelineRulersTest, KeyframeButtonsOnTheRowUnderTheMouse)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), 0, 10);
    model::Attribute* x = animate(c, QStringLiteral("originX"), {1, 4});
    c->setExpanded(true);
    QCoreApplication::processEvents();
    const int row = rowOf(x);
    composition->setEditorTimepoint(2);
    startCounting();
    hoverName(nameAt(row, 40));
    EXPECT_EQ(view()->componentMouseOverRow(), row);
    clickName(keyframeButton(row, Buttons::kAdd));
    EXPECT_EQ(keys(x), (QList<float>{1, 2, 4})) << "a keyframe at the playhead";
    EXPECT_EQ(steps(), 1u);
    clickName(keyframeButton(row, Buttons::kRemove));
    EXPECT_EQ(keys(x), (QList<float>{1, 4}));
    clickName(keyframeButton(row, Buttons::kNext));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 4);
    clickName(keyframeButton(row, Buttons::kNext));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 4) << "nothing after the last keyframe";
    clickName(keyframeButton(row, Buttons::kPrevious));
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 1);
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(nameColumn(), &leave);
    EXPECT_EQ(view()->componentMouseOverRow(), -1);
}

TEST_F(TimelineRulersTest, KeysPlayStepAndJumpThroughTheDocument)
{
    addComponent(QStringLiteral("C"), 0, 10);
    view()->setFocus();
    composition->setEditorTimepoint(2);
    key(Qt::Key_Right);
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 2.04);
    key(Qt::Key_Left);
    key(Qt::Key_Left);
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 1.96);
    key(Qt::Key_End);
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 10);
    key(Qt::Key_Home);
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 0);
    key(Qt::Key_Space);
    EXPECT_EQ(composition->playMode(), 1);
    key(Qt::Key_Space);
    EXPECT_EQ(composition->playMode(), 0);
}

TEST_F(TimelineRulersTest, TheTransportSegments)
{
    composition->setEditorTimepoint(5);
    widgets::VLSegmentedControl* transport = panel.controlsControl();
    auto press = [&](int segment) { transport->buttonForTag(segment)->click(); };
    press(1);
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 4.96);
    press(3);
    press(3);
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 5.04);
    press(4);
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 10);
    press(0);
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 0);
    press(2);
    EXPECT_EQ(composition->playMode(), 1);
    press(2);
    EXPECT_EQ(composition->playMode(), 0);
}
