// Selecting on the canvas: clicks, Shift and Control toggles, the marquee.
// Selection is editor state and never leaves an undo step.

#include "CanvasFixture.h"

class CanvasSelectionTest : public CanvasFixture {
protected:
    CanvasSelectionTest()
    {
        a = addImage(100, 100);
        b = addImage(600, 400);
        composition->clearSelection();
        startCounting();
    }

    std::vector<model::QuartzComponent*> selected() const { return composition->selectedComponents(); }

    model::QuartzComponent* a = nullptr;
    model::QuartzComponent* b = nullptr;
};

TEST_F(CanvasSelectionTest, AClickSelectsOnlyTheComponentUnderTheMouse)
{
    click({150, 125});
    EXPECT_EQ(selected(), std::vector{a});
    click({650, 425});
    EXPECT_EQ(selected(), std::vector{b});
    click({900, 600});  // empty canvas
    EXPECT_TRUE(selected().empty());
    EXPECT_EQ(undoManager().undoCount(), 0u);
}

TEST_F(CanvasSelectionTest, TheFrontMostComponentTakesTheClick)
{
    model::QuartzComponent* top = addImage(120, 110);
    composition->clearSelection();
    click({150, 125});
    EXPECT_EQ(selected(), std::vector{top});
}

TEST_F(CanvasSelectionTest, ShiftAndControlClicksToggle)
{
    click({150, 125});
    click({650, 425}, Qt::ShiftModifier);
    EXPECT_EQ(selected().size(), 2u);
    click({150, 125}, Qt::ControlModifier);
    EXPECT_EQ(selected(), std::vector{b});
    // Deselecting by Shift starts no move.
    click({650, 425}, Qt::ShiftModifier);
    EXPECT_TRUE(selected().empty());
    EXPECT_EQ(b->originX(), 600);
}

TEST_F(CanvasSelectionTest, AClickInsideASelectionKeepsItForDragging)
{
    composition->selectAllComponents();
    press({150, 125});
    EXPECT_EQ(selected().size(), 2u);
    release({150, 125});
}

TEST_F(CanvasSelectionTest, TheMarqueeSelectsWhatItTouches)
{
    click({150, 125});
    drag({50, 50}, {190, 110});  // overlaps a's lower-left part only
    EXPECT_EQ(selected(), std::vector{a});
    EXPECT_TRUE(view.rubberBandRect().isEmpty());

    drag({50, 50}, {650, 420});
    EXPECT_EQ(selected().size(), 2u);
    EXPECT_EQ(undoManager().undoCount(), 0u);
}

TEST_F(CanvasSelectionTest, AShiftMarqueeTogglesAndAControlMarqueeReplaces)
{
    click({150, 125});
    drag({50, 50}, {650, 420}, Qt::ShiftModifier);
    EXPECT_EQ(selected(), std::vector{b});
    drag({550, 350}, {1000, 700}, Qt::ControlModifier);
    EXPECT_EQ(selected(), std::vector{b});
    drag({50, 50}, {160, 120}, Qt::ControlModifier);
    EXPECT_EQ(selected(), std::vector{a});
}

TEST_F(CanvasSelectionTest, HiddenComponentsAreLeftOutOfTheMarquee)
{
    b->setVisibleInCompositionEditor(false);
    drag({50, 50}, {1000, 700});
    EXPECT_EQ(selected(), std::vector{a});
}
