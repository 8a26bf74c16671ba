#include "CommandsFixture.h"

#include "model/StopFrame.h"

class StopFrameCommandsTest : public CommandsFixture {};

TEST_F(StopFrameCommandsTest, AddingTwiceAtThePlayheadAddsOneStopFrame)
{
    startCounting();
    composition->setEditorTimepoint(2.5);
    commands.addStopFrame();
    ASSERT_EQ(composition->stopFrameTimepoints(), std::vector<double>{2.5});
    EXPECT_EQ(composition->stopFrames().front()->composition(), composition);
    EXPECT_EQ(undoSteps(), 1u);

    commands.addStopFrame();
    composition->setEditorTimepoint(2.504);  // the same hundredth of a second
    commands.addStopFrame();
    EXPECT_EQ(composition->stopFrames().size(), 1u);
    EXPECT_EQ(undoSteps(), 1u) << "adding nothing leaves no step";

    undo();
    EXPECT_TRUE(composition->stopFrames().empty());
}

TEST_F(StopFrameCommandsTest, ToggleRemovesTheStopFrameAtThePlayheadAndUndoBringsItBack)
{
    composition->addStopFrame(1.0, QStringLiteral("Intro"));
    composition->setEditorTimepoint(3.0);
    startCounting();

    commands.toggleStopframe();
    EXPECT_EQ(composition->stopFrameTimepoints(), (std::vector<double>{1.0, 3.0}));
    commands.toggleStopframe();
    EXPECT_EQ(composition->stopFrameTimepoints(), std::vector<double>{1.0});

    composition->setEditorTimepoint(1.0);
    commands.toggleStopframe();
    EXPECT_TRUE(composition->stopFrames().empty());
    EXPECT_EQ(undoSteps(), 3u);

    undo();
    ASSERT_EQ(composition->stopFrames().size(), 1u);
    EXPECT_EQ(composition->stopFrames().front()->triggerInformation(), QStringLiteral("Intro"));
}

TEST_F(StopFrameCommandsTest, TogglingThePosterFrameTwiceKeepsIt)
{
    ASSERT_EQ(composition->posterFrameMode(), 1);
    int modeChanges = 0;
    composition->observe(QStringLiteral("posterFrameMode"), [&](model::ManagedObject*, const QString&) { ++modeChanges; });
    composition->setEditorTimepoint(3.5);
    startCounting();

    commands.togglePosterframe();
    EXPECT_EQ(composition->posterFrameTimepoint(), 3.5);
    EXPECT_EQ(composition->posterFrameMode(), 0);
    EXPECT_EQ(modeChanges, 1) << "controls bound to the mode refresh, once";

    commands.togglePosterframe();
    EXPECT_EQ(composition->posterFrameTimepoint(), 3.5) << "the command sets, it never clears";
    EXPECT_EQ(composition->posterFrameMode(), 0);

    composition->setEditorTimepoint(6.0);
    commands.togglePosterframe();
    EXPECT_EQ(composition->posterFrameTimepoint(), 6.0);
    EXPECT_EQ(undoSteps(), 2u) << "setting the same time again is no step";

    undo();
    undo();
    EXPECT_EQ(composition->posterFrameMode(), 1);
}
