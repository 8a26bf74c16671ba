// Inside one undo group a key written many times on one object is recorded
// once, with its first old value: a drag is one small step, and undo and
// redo still give back exactly the states before and after it.

#include "ModelFixture.h"

#include "model/StoreFile.h"

using namespace model;

class UndoMergeTest : public ModelFixture {
protected:
    QByteArray snapshot() { return StoreFile::write(store); }
};

TEST_F(UndoMergeTest, ALongDragKeepsOneEntryPerObjectAndKey)
{
    std::vector<QuartzComponent*> components;
    for (int i = 0; i < 10; ++i) components.push_back(addComponent(QStringLiteral("C%1").arg(i), QRectF(i * 10, 0, 50, 50)));
    store.undoManager().removeAllActions();
    const QByteArray before = snapshot();
    {
        UndoGroup drag(store.undoManager(), QStringLiteral("Move"));
        for (int step = 1; step <= 200; ++step)
            for (QuartzComponent* c : components) c->moveBy(1, 0.5);
    }
    EXPECT_EQ(store.undoManager().undoCount(), 1u);
    EXPECT_EQ(store.undoManager().actionCountOfUndoStep(), 20u) << "originX and originY of ten components";
    const QByteArray after = snapshot();
    store.undoManager().undo();
    EXPECT_EQ(snapshot(), before);
    EXPECT_EQ(components[3]->originX(), 30.0);
    store.undoManager().redo();
    EXPECT_EQ(snapshot(), after);
    EXPECT_EQ(components[3]->originX(), 230.0);
    store.undoManager().undo();
    EXPECT_EQ(snapshot(), before);
}

TEST_F(UndoMergeTest, ADragBackToItsStartLeavesNoStep)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    store.undoManager().removeAllActions();
    {
        UndoGroup drag(store.undoManager());
        c->moveBy(25, 0);
        c->moveBy(-25, 0);
    }
    EXPECT_FALSE(store.undoManager().canUndo());
}

TEST_F(UndoMergeTest, MergedWritesUndoTogetherWithAddsDeletesAndReorders)
{
    QuartzComponent* a = addComponent(QStringLiteral("A"));
    QuartzComponent* b = addComponent(QStringLiteral("B"));
    addComponent(QStringLiteral("C"));
    store.undoManager().removeAllActions();
    store.processPendingChanges();
    const QByteArray before = snapshot();
    {
        UndoGroup gesture(store.undoManager());
        a->moveBy(5, 5);
        QuartzComponent* d = addComponent(QStringLiteral("D"));
        d->moveBy(3, 0);
        a->moveBy(5, 5);
        composition->removeComponents({b});
        d->moveBy(3, 0);
        a->setSelected(true);
        composition->bringSelectionToFront();
        a->moveBy(5, 5);
        a->setTitle(QStringLiteral("A2"));
        a->setTitle(QStringLiteral("A3"));
    }
    store.processPendingChanges();
    const QByteArray after = snapshot();
    ASSERT_EQ(store.undoManager().undoCount(), 1u);
    store.undoManager().undo();
    store.processPendingChanges();
    EXPECT_EQ(snapshot(), before);
    store.undoManager().redo();
    store.processPendingChanges();
    EXPECT_EQ(snapshot(), after);
    store.undoManager().undo();
    store.processPendingChanges();
    EXPECT_EQ(snapshot(), before);
}

TEST_F(UndoMergeTest, KeyframeMovesKeepTheirFirstStateAndSelection)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    Attribute* x = c->attributeForKey(QStringLiteral("originX"));
    x->addTimepoint(1.0, 10.0f);
    x->addTimepoint(2.0, 20.0f);
    x->setTimePointSelected(2.0, true);
    store.undoManager().removeAllActions();
    const KeyframeValues start = x->values();
    {
        UndoGroup drag(store.undoManager());
        for (int i = 0; i < 128; ++i) x->adjustTimepointsBy(1.0 / 128, true);  // exact in binary
    }
    EXPECT_LE(store.undoManager().actionCountOfUndoStep(), 2u) << "the keyframe table and the selection";
    EXPECT_TRUE(x->isTimePointSelected(3.0));
    const KeyframeValues moved = x->values();
    store.undoManager().undo();
    EXPECT_EQ(x->values(), start);
    EXPECT_TRUE(x->isTimePointSelected(2.0));
    EXPECT_FALSE(x->isTimePointSelected(3.0));
    store.undoManager().redo();
    EXPECT_EQ(x->values(), moved);
    EXPECT_TRUE(x->isTimePointSelected(3.0)) << "redo brings the selection along";
    EXPECT_FALSE(x->isTimePointSelected(2.0));
    store.undoManager().undo();
    EXPECT_TRUE(x->isTimePointSelected(2.0)) << "and a second undo takes it back again";
}

TEST_F(UndoMergeTest, WritesInSeparateGroupsStaySeparateSteps)
{
    QuartzComponent* c = addComponent(QStringLiteral("C"));
    store.undoManager().removeAllActions();
    for (int i = 0; i < 2; ++i) {
        UndoGroup drag(store.undoManager());
        c->moveBy(10, 0);
        c->moveBy(10, 0);
    }
    EXPECT_EQ(store.undoManager().undoCount(), 2u);
    store.undoManager().undo();
    EXPECT_EQ(c->originX(), 20.0);
    store.undoManager().undo();
    EXPECT_EQ(c->originX(), 0.0);
}

// Work cancelled half way takes back what it did inside its group and
// leaves no step; what the outer group did before stays, and a key written
// again after the roll-back is recorded again.
TEST_F(UndoMergeTest, RollingBackAGroupUndoesItsWorkAndLeavesNoStep)
{
    QuartzComponent* kept = addComponent(QStringLiteral("Kept"));
    store.undoManager().removeAllActions();
    store.processPendingChanges();
    const QByteArray before = snapshot();
    {
        UndoGroup import(store.undoManager(), QStringLiteral("Import"));
        addComponent(QStringLiteral("New 1"));
        addComponent(QStringLiteral("New 2"));
        kept->moveBy(40, 0);
        import.rollBack();
    }
    store.processPendingChanges();
    EXPECT_EQ(snapshot(), before);
    EXPECT_EQ(composition->componentArray().size(), 1u);
    EXPECT_FALSE(store.undoManager().canUndo());
    EXPECT_FALSE(store.undoManager().canRedo());

    {
        UndoGroup outer(store.undoManager(), QStringLiteral("Outer"));
        kept->moveBy(5, 0);
        {
            UndoGroup inner(store.undoManager());
            addComponent(QStringLiteral("Dropped"));
            kept->setTitle(QStringLiteral("Renamed"));
            inner.rollBack();
        }
        kept->setTitle(QStringLiteral("Renamed later"));
    }
    EXPECT_EQ(composition->componentArray().size(), 1u);
    EXPECT_EQ(kept->originX(), 5.0);
    store.undoManager().undo();
    EXPECT_EQ(snapshot(), before) << "the title written after the roll-back is undone too";
}
