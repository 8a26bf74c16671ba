#include "CommandsFixture.h"

using model::QuartzComponent;

class AlignCommandsTest : public CommandsFixture {
protected:
    static QRectF frameOf(const QuartzComponent* c) { return c->drawingFrame(); }
};

TEST_F(AlignCommandsTest, TooFewSelectedOrAnUnknownModeDoNothing)
{
    QuartzComponent* a = addComponent(QStringLiteral("A"), QRectF(0, 0, 100, 50));
    QuartzComponent* b = addComponent(QStringLiteral("B"), QRectF(300, 200, 100, 50));
    QuartzComponent* c = addComponent(QStringLiteral("C"), QRectF(700, 400, 100, 50));
    startCounting();

    select({a});
    commands.doAlignComponents(document::kAlignLeft, false);
    select({a, b});
    commands.doAlignComponents(document::kDistributeLeft, false);
    select({a, b, c});
    commands.doAlignComponents(12, false);
    commands.doAlignComponents(-1, false);

    EXPECT_EQ(frameOf(b), QRectF(300, 200, 100, 50));
    EXPECT_EQ(undoSteps(), 0u);
}

TEST_F(AlignCommandsTest, EdgesAlignToTheOuterEdgesOfTheSelection)
{
    QuartzComponent* a = addComponent(QStringLiteral("A"), QRectF(40, 300, 100, 50));
    QuartzComponent* b = addComponent(QStringLiteral("B"), QRectF(500, 20, 200, 80));
    QuartzComponent* outside = addComponent(QStringLiteral("Outside"), QRectF(0, 0, 1000, 1000));
    select({a, b});

    commands.doAlignComponents(document::kAlignLeft, false);
    EXPECT_EQ(a->originX(), 40);
    EXPECT_EQ(b->originX(), 40);
    commands.doAlignComponents(document::kAlignRight, false);
    EXPECT_EQ(a->originX(), 140) << "right edges at the greatest right edge, 240";
    EXPECT_EQ(b->originX(), 40);
    commands.doAlignComponents(document::kAlignTop, false);
    EXPECT_EQ(a->originY(), 300);
    EXPECT_EQ(b->originY(), 270) << "y grows upwards: top edges at 350";
    commands.doAlignComponents(document::kAlignBottom, false);
    EXPECT_EQ(a->originY(), 270);
    EXPECT_EQ(b->originY(), 270);
    EXPECT_EQ(frameOf(outside), QRectF(0, 0, 1000, 1000)) << "unselected components stay";
}

TEST_F(AlignCommandsTest, CentresAlignOnTheWidestAndTallestComponentNotTheBoundingBox)
{
    // The bounding box spans x 0…1000 (centre 500); the widest component is
    // centred on 250, the tallest on y 100.
    QuartzComponent* narrow = addComponent(QStringLiteral("Narrow"), QRectF(900, 400, 100, 50));
    QuartzComponent* wide = addComponent(QStringLiteral("Wide"), QRectF(0, 50, 500, 100));
    QuartzComponent* sameWidth = addComponent(QStringLiteral("Same width later"), QRectF(400, 0, 500, 20));
    select({narrow, wide, sameWidth});

    commands.doAlignComponents(document::kAlignCenterH, false);
    EXPECT_EQ(narrow->originX(), 200);
    EXPECT_EQ(wide->originX(), 0);
    EXPECT_EQ(sameWidth->originX(), 0) << "among equally wide components the first one wins";

    commands.doAlignComponents(document::kAlignCenterV, false);
    EXPECT_EQ(narrow->originY(), 75);
    EXPECT_EQ(wide->originY(), 50);
    EXPECT_EQ(sameWidth->originY(), 90);
}

TEST_F(AlignCommandsTest, TheAnchorIsTheFirstSelectedComponentAndStays)
{
    QuartzComponent* unselected = addComponent(QStringLiteral("Unselected"), QRectF(0, 0, 10, 10));
    QuartzComponent* anchor = addComponent(QStringLiteral("Anchor"), QRectF(300, 200, 100, 60));
    QuartzComponent* other = addComponent(QStringLiteral("Other"), QRectF(10, 20, 300, 20));
    select({other, anchor});
    ASSERT_EQ(composition->selectedComponents().front(), anchor);

    commands.doAlignComponents(document::kAlignLeft, true);
    EXPECT_EQ(other->originX(), 300) << "not the selection's least x, 10";
    commands.doAlignComponents(document::kAlignCenterV, true);
    EXPECT_EQ(other->originY(), 220);
    commands.doAlignComponents(document::kAlignRight, true);
    EXPECT_EQ(other->originX(), 100);
    EXPECT_EQ(frameOf(anchor), QRectF(300, 200, 100, 60));
    EXPECT_EQ(frameOf(unselected), QRectF(0, 0, 10, 10));
}

TEST_F(AlignCommandsTest, DistributionGivesPositionsInSelectionOrderBetweenTheExtremes)
{
    QuartzComponent* left = addComponent(QStringLiteral("Left"), QRectF(0, 0, 100, 50));
    QuartzComponent* far = addComponent(QStringLiteral("Far"), QRectF(300, 0, 100, 50));
    QuartzComponent* near = addComponent(QStringLiteral("Near"), QRectF(100, 0, 100, 50));
    QuartzComponent* right = addComponent(QStringLiteral("Right"), QRectF(600, 0, 100, 50));
    composition->selectAllComponents();
    startCounting();

    commands.doAlignComponents(document::kDistributeLeft, false);
    EXPECT_EQ(left->originX(), 0);
    EXPECT_EQ(far->originX(), 200) << "not sorted by place: the first listed gets the first position";
    EXPECT_EQ(near->originX(), 400);
    EXPECT_EQ(right->originX(), 600);
    EXPECT_EQ(undoSteps(), 1u);

    undo();
    EXPECT_EQ(far->originX(), 300);
    EXPECT_EQ(near->originX(), 100);
}

TEST_F(AlignCommandsTest, DistributionOfCentresAndEdgesAccountsForSize)
{
    QuartzComponent* low = addComponent(QStringLiteral("Low"), QRectF(0, 0, 50, 100));      // centre 50, top 100
    QuartzComponent* middle = addComponent(QStringLiteral("Middle"), QRectF(0, 10, 50, 40));
    QuartzComponent* high = addComponent(QStringLiteral("High"), QRectF(0, 500, 50, 200));  // centre 600, top 700
    composition->selectAllComponents();

    commands.doAlignComponents(document::kDistributeCenterV, false);
    EXPECT_EQ(middle->originY(), 305) << "centre half-way between 50 and 600";
    commands.doAlignComponents(document::kDistributeTop, false);
    EXPECT_EQ(middle->originY(), 360) << "top half-way between 100 and 700";
    commands.doAlignComponents(document::kDistributeBottom, false);
    EXPECT_EQ(middle->originY(), 250);
    EXPECT_EQ(frameOf(low), QRectF(0, 0, 50, 100));
    EXPECT_EQ(frameOf(high), QRectF(0, 500, 50, 200));
}

TEST_F(AlignCommandsTest, DistributionBetweenEqualExtremesMovesNothing)
{
    // Equal left and right edges: the first component is both extremes and
    // the step is 0.
    QuartzComponent* a = addComponent(QStringLiteral("A"), QRectF(100, 0, 100, 50));
    QuartzComponent* b = addComponent(QStringLiteral("B"), QRectF(100, 300, 100, 50));
    QuartzComponent* c = addComponent(QStringLiteral("C"), QRectF(100, 600, 100, 50));
    composition->selectAllComponents();
    startCounting();

    for (int mode : {document::kDistributeLeft, document::kDistributeCenterH, document::kDistributeRight})
        commands.doAlignComponents(mode, false);
    EXPECT_EQ(frameOf(a), QRectF(100, 0, 100, 50));
    EXPECT_EQ(frameOf(b), QRectF(100, 300, 100, 50));
    EXPECT_EQ(frameOf(c), QRectF(100, 600, 100, 50));
    EXPECT_EQ(undoSteps(), 0u);
}

TEST_F(AlignCommandsTest, AlignmentIsOneUndoStep)
{
    QuartzComponent* a = addComponent(QStringLiteral("A"), QRectF(40, 300, 100, 50));
    QuartzComponent* b = addComponent(QStringLiteral("B"), QRectF(500, 20, 200, 80));
    QuartzComponent* c = addComponent(QStringLiteral("C"), QRectF(250, 90, 30, 30));
    composition->selectAllComponents();
    startCounting();
    commands.doAlignComponents(document::kAlignBottom, false);
    EXPECT_EQ(a->originY(), 20);
    EXPECT_EQ(c->originY(), 20);
    EXPECT_EQ(undoSteps(), 1u);
    undo();
    EXPECT_EQ(frameOf(a), QRectF(40, 300, 100, 50));
    EXPECT_EQ(frameOf(b), QRectF(500, 20, 200, 80));
    EXPECT_EQ(frameOf(c), QRectF(250, 90, 30, 30));
}
