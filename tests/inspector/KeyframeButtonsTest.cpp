// The keyframe buttons beside animateable rows: the mark at the playhead,
// add and remove there, previous and next, and an edit of an animated value
// that keys the playhead.

#include "InspectorFixture.h"

#include "inspector/KeyframeButtons.h"
#include "inspector/NumberAttributeEditor.h"
#include "inspector/PropertyPanes.h"

#include <QLineEdit>
#include <QToolButton>

class KeyframeButtonsTest : public InspectorFixture {
protected:
    KeyframeButtonsTest()
    {
        box = addComponent(QStringLiteral("Box"), QStringLiteral("box.qtz"),
                           {{"Size", model::kTypeNumber, 10.0f}, {"Name", model::kTypeString, QStringLiteral("n")},
                            {"Picture", model::kTypeImage, QImage()}});
        select({box});
        startCounting();
    }

    inspector::KeyframeButtons* buttonsOf(const QString& key) const
    {
        // The buttons sit in the same row as the key's editor.
        QWidget* control = attributes()->editorForKey(key)->widget();
        for (inspector::KeyframeButtons* b : attributes()->findChildren<inspector::KeyframeButtons*>())
            if (std::abs(b->geometry().center().y() - control->geometry().center().y()) < 4) return b;
        return nullptr;
    }

    model::Attribute* size() const { return box->attributeForKey(QStringLiteral("Size")); }

    model::QuartzComponent* box = nullptr;
};

TEST_F(KeyframeButtonsTest, OnlyRowsThatCanAnimateHaveThem)
{
    attributes()->form()->adjustSize();
    EXPECT_NE(buttonsOf(QStringLiteral("Size")), nullptr);
    EXPECT_NE(buttonsOf(QStringLiteral("Name")), nullptr);
    EXPECT_EQ(buttonsOf(QStringLiteral("Picture")), nullptr);  // images never animate
    // The margins of the transform pane never animate either.
    EXPECT_EQ(inspector.transformController()->findChildren<inspector::KeyframeButtons*>().size(), 5u);
}

TEST_F(KeyframeButtonsTest, AddingAtThePlayheadTurnsAnimationOnAndMarksIt)
{
    inspector::KeyframeButtons* keys = buttonsOf(QStringLiteral("Size"));
    ASSERT_NE(keys, nullptr);
    composition->setEditorTimepoint(2.0);
    EXPECT_FALSE(keys->keyframeAtPlayhead());
    keys->keyButton()->click();
    EXPECT_TRUE(size()->animateable());
    EXPECT_TRUE(size()->hasKeyframeAtTimePoint(2.0));
    EXPECT_EQ(size()->valueAtTime(2.0).toDouble(), 10.0);
    EXPECT_TRUE(keys->keyframeAtPlayhead());
    EXPECT_TRUE(keys->keyButton()->property("keyframed").toBool());
    EXPECT_EQ(undoManager().undoCount(), 1u);

    composition->setEditorTimepoint(3.0);
    EXPECT_FALSE(keys->keyButton()->property("keyframed").toBool());
    composition->setEditorTimepoint(2.0);
    keys->keyButton()->click();
    EXPECT_FALSE(size()->hasKeyframeAtTimePoint(2.0));
    undoManager().undo();
    EXPECT_TRUE(size()->hasKeyframeAtTimePoint(2.0));
}

TEST_F(KeyframeButtonsTest, EditingAnAnimatedValueKeysThePlayhead)
{
    {
        model::UndoRegistrationPause quiet(undoManager());
        size()->addTimepoint(0.0, 0.0f);
        size()->addTimepoint(4.0, 40.0f);
    }
    composition->setEditorTimepoint(2.0);
    auto* number = editor<inspector::NumberAttributeEditor>(QStringLiteral("Size"));
    EXPECT_EQ(number->field()->text(), QStringLiteral("20"));  // halfway, interpolated
    number->field()->setFocus();
    number->field()->selectAll();
    QTest::keyClicks(number->field(), QStringLiteral("33"));
    QTest::keyClick(number->field(), Qt::Key_Return);
    EXPECT_TRUE(size()->hasKeyframeAtTimePoint(2.0));
    EXPECT_EQ(size()->valueAtTime(2.0).toDouble(), 33.0);
    EXPECT_EQ(size()->valueAtTime(4.0).toDouble(), 40.0);
    EXPECT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_FALSE(size()->hasKeyframeAtTimePoint(2.0));
    EXPECT_EQ(number->field()->text(), QStringLiteral("20"));
}

TEST_F(KeyframeButtonsTest, PreviousAndNextMoveThePlayheadBetweenKeyframes)
{
    {
        model::UndoRegistrationPause quiet(undoManager());
        size()->addTimepoint(1.0, 0.0f);
        size()->addTimepoint(5.0, 1.0f);
    }
    inspector::KeyframeButtons* keys = buttonsOf(QStringLiteral("Size"));
    ASSERT_NE(keys, nullptr);
    composition->setEditorTimepoint(3.0);
    EXPECT_TRUE(keys->previousButton()->isEnabled());
    EXPECT_TRUE(keys->nextButton()->isEnabled());
    keys->nextButton()->click();
    EXPECT_EQ(composition->editorTimepoint(), 5.0);
    EXPECT_FALSE(keys->nextButton()->isEnabled());
    keys->previousButton()->click();
    EXPECT_EQ(composition->editorTimepoint(), 1.0);
    EXPECT_FALSE(keys->previousButton()->isEnabled());
    // Moving the playhead is no edit.
    EXPECT_EQ(undoManager().undoCount(), 0u);
}
