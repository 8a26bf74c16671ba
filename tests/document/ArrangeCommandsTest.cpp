#include "CommandsFixture.h"

using model::QuartzComponent;

class ArrangeCommandsTest : public CommandsFixture {
protected:
    void SetUp() override
    {
        a = addComponent(QStringLiteral("A"));
        b = addComponent(QStringLiteral("B"));
        c = addComponent(QStringLiteral("C"));
        d = addComponent(QStringLiteral("D"));
        startCounting();
    }

    QStringList bottomFirst() const
    {
        QStringList titles;
        for (const QuartzComponent* x : composition->componentsSortedByZLevel()) titles.append(x->title());
        return titles;
    }

    QuartzComponent *a = nullptr, *b = nullptr, *c = nullptr, *d = nullptr;
};

TEST_F(ArrangeCommandsTest, StackingCommandsAreOneUndoStepEach)
{
    const QStringList start{"A", "B", "C", "D"};
    struct Case {
        const char* name;
        void (document::DocumentCommands::*command)();
        QStringList expected;
    };
    const Case cases[] = {
        {"sendForward", &document::DocumentCommands::sendForward, {"A", "C", "B", "D"}},
        {"sendBackward", &document::DocumentCommands::sendBackward, {"B", "A", "C", "D"}},
        {"bringToFront", &document::DocumentCommands::bringToFront, {"A", "C", "D", "B"}},
        {"sendToBack", &document::DocumentCommands::sendToBack, {"B", "A", "C", "D"}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        select({b});
        startCounting();
        (commands.*test.command)();
        EXPECT_EQ(bottomFirst(), test.expected);
        EXPECT_EQ(undoSteps(), 1u);
        undo();
        EXPECT_EQ(bottomFirst(), start);
    }
}

TEST_F(ArrangeCommandsTest, SwapNeedsTwoAndOtherwiseAnswersTheAlert)
{
    select({b});
    const std::optional<document::Alert> refused = commands.swapSelected();
    ASSERT_TRUE(refused.has_value());
    EXPECT_EQ(refused->title, QStringLiteral("Swap Selected:"));
    EXPECT_EQ(refused->text, QStringLiteral("Please select two components to swap."));
    EXPECT_EQ(undoSteps(), 0u);

    select({a, d});
    EXPECT_FALSE(commands.swapSelected().has_value());
    EXPECT_EQ(bottomFirst(), (QStringList{"D", "B", "C", "A"}));
    undo();
    EXPECT_EQ(bottomFirst(), (QStringList{"A", "B", "C", "D"}));
}

TEST_F(ArrangeCommandsTest, SoloAndShowAllUndo)
{
    select({c});
    commands.soloComponents();
    EXPECT_TRUE(c->visibleInCompositionEditor());
    EXPECT_FALSE(a->visibleInCompositionEditor());
    EXPECT_EQ(undoSteps(), 1u);
    undo();
    EXPECT_TRUE(a->visibleInCompositionEditor()) << "the whole solo is one step";

    commands.soloComponents();
    commands.showAllComponents();
    for (const QuartzComponent* x : {a, b, c, d}) EXPECT_TRUE(x->visibleInCompositionEditor());
    undo();
    EXPECT_FALSE(a->visibleInCompositionEditor());
}

TEST_F(ArrangeCommandsTest, SelectAllIsNotAnEdit)
{
    composition->clearSelection();
    commands.selectAll();
    EXPECT_EQ(composition->selectedComponents().size(), 4u);
    EXPECT_EQ(undoSteps(), 0u);
}

TEST_F(ArrangeCommandsTest, DeletingRemovesTheSelectionAsOneStep)
{
    select({a, c});
    commands.deleteForward();
    EXPECT_EQ(bottomFirst(), (QStringList{"B", "D"}));
    EXPECT_EQ(undoSteps(), 1u);
    undo();
    EXPECT_EQ(bottomFirst(), (QStringList{"A", "B", "C", "D"}));

    select({d});
    commands.deleteBackward();
    EXPECT_EQ(bottomFirst(), (QStringList{"A", "B", "C"}));

    composition->clearSelection();
    startCounting();
    commands.deleteForward();
    EXPECT_EQ(composition->componentArray().size(), 3u);
    EXPECT_EQ(undoSteps(), 0u);
}
