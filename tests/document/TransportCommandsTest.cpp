#include "CommandsFixture.h"

using model::QuartzComponent;

class TransportCommandsTest : public CommandsFixture {
protected:
    // Keyframes on the component's opacity at the given times.
    void keyframes(QuartzComponent* c, std::initializer_list<double> times)
    {
        for (double t : times) c->attributeForKey(QStringLiteral("opacity"))->addTimepoint(t, 0.5f);
    }
};

TEST_F(TransportCommandsTest, JumpsToTheEndsAndRestartsPlayback)
{
    composition->setEditorTimepoint(3.0);
    commands.jumpToEnd();
    EXPECT_EQ(composition->editorTimepoint(), composition->duration());
    commands.jumpToBeginning();
    EXPECT_EQ(composition->editorTimepoint(), 0.0);
    EXPECT_EQ(composition->playMode(), 0) << "jumping does not start playback";

    composition->setEditorTimepoint(4.0);
    commands.play();
    commands.jumpToBeginning();
    EXPECT_EQ(composition->playMode(), 1) << "playback goes on from the beginning";
    EXPECT_EQ(composition->editorTimepoint(), 0.0);
    commands.play();
    EXPECT_EQ(composition->playMode(), 0);
}

TEST_F(TransportCommandsTest, SpaceBarTogglesPlayback)
{
    EXPECT_TRUE(commands.keyDown(Qt::Key_Space));
    EXPECT_EQ(composition->playMode(), 1);
    EXPECT_FALSE(commands.keyDown(Qt::Key_A));
    EXPECT_EQ(composition->playMode(), 1);
    EXPECT_TRUE(commands.keyDown(Qt::Key_Space));
    EXPECT_EQ(composition->playMode(), 0);
}

TEST_F(TransportCommandsTest, KeyframeJumpsWithNothingSelectedAreNotSymmetric)
{
    QuartzComponent* c = addComponent(QStringLiteral("A"));
    keyframes(c, {2.0, 5.0});
    composition->clearSelection();
    composition->setEditorTimepoint(3.0);

    commands.jumpToNextKeyframe();
    EXPECT_EQ(composition->editorTimepoint(), 3.0) << "next with nothing selected stays";
    commands.jumpToPreviousKeyframe();
    EXPECT_EQ(composition->editorTimepoint(), 0.0) << "previous with nothing selected goes to the beginning";
}

TEST_F(TransportCommandsTest, KeyframeJumpsVisitTheSelectedComponentsKeyframesInOrder)
{
    QuartzComponent* a = addComponent(QStringLiteral("A"));
    QuartzComponent* b = addComponent(QStringLiteral("B"));
    QuartzComponent* ignored = addComponent(QStringLiteral("Unselected"));
    keyframes(a, {2.0, 5.0});
    keyframes(b, {3.5});
    keyframes(ignored, {1.0, 4.0});
    select({a, b});
    composition->setEditorTimepoint(0.0);

    std::vector<double> visited;
    for (int i = 0; i < 4; ++i) {
        commands.jumpToNextKeyframe();
        visited.push_back(composition->editorTimepoint());
    }
    EXPECT_EQ(visited, (std::vector<double>{2.0, 3.5, 5.0, 5.0})) << "past the last keyframe every answer is 1e14: stay";

    visited.clear();
    for (int i = 0; i < 4; ++i) {
        commands.jumpToPreviousKeyframe();
        visited.push_back(composition->editorTimepoint());
    }
    EXPECT_EQ(visited, (std::vector<double>{3.5, 2.0, 0.0, 0.0}));
}

TEST_F(TransportCommandsTest, KeyframeJumpWithoutAnimationStaysPut)
{
    QuartzComponent* a = addComponent(QStringLiteral("Still"));
    select({a});
    composition->setEditorTimepoint(1.0);
    commands.jumpToNextKeyframe();
    EXPECT_EQ(composition->editorTimepoint(), 1.0);
}

TEST_F(TransportCommandsTest, FrameStepsFollowTheTickGridAndStopAtTheEnds)
{
    ASSERT_EQ(composition->ticksPerSecond(), 25u);
    startCounting();
    composition->setEditorTimepoint(1.0);
    commands.jumpToNextFrame();
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 1.04);
    commands.jumpToPreviousFrame();
    commands.jumpToPreviousFrame();
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 0.96);

    composition->setEditorTimepoint(1.013);  // off the grid, as a stopped playback can leave it
    commands.jumpToNextFrame();
    EXPECT_DOUBLE_EQ(composition->editorTimepoint(), 1.04) << "the step lands on the grid";

    composition->setEditorTimepoint(composition->duration());
    commands.jumpToNextFrame();
    EXPECT_EQ(composition->editorTimepoint(), composition->duration()) << "a step past the end is refused";
    composition->setEditorTimepoint(0.0);
    commands.jumpToPreviousFrame();
    EXPECT_EQ(composition->editorTimepoint(), 0.0);

    EXPECT_EQ(undoSteps(), 0u) << "moving the playhead is not an edit";
}
