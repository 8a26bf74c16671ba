// What the attribute pane builds: which keys get rows, in which order, with
// which labels, and when it says "No attributes".

#include "InspectorFixture.h"

#include <QLabel>

class AttributesPane : public InspectorFixture {};

TEST_F(AttributesPane, GeometryOpacityAndVisibilityNeverGetARow)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), QStringLiteral("c.qtz"),
                                             {{"Title", model::kTypeString, QStringLiteral("x")}});
    select({c});
    QStringList keys;
    for (const auto& [key, editor] : attributes()->editors()) keys << key;
    EXPECT_EQ(keys, QStringList{QStringLiteral("Title")});
    EXPECT_EQ(attributes()->editorForKey(QStringLiteral("opacity")), nullptr);
    EXPECT_FALSE(attributes()->form()->labels().contains(QStringLiteral("opacity")));
}

TEST_F(AttributesPane, AnOpacityOfAnyTypeStaysOut)
{
    // A file that publishes its own "opacity" string still gets no row for it.
    model::QuartzComponent* c = addBareComponent({{"opacity", model::kTypeString, QStringLiteral("half")},
                                                  {"Other", model::kTypeNumber, 1.0f}});
    select({c});
    EXPECT_EQ(attributes()->editorForKey(QStringLiteral("opacity")), nullptr);
    EXPECT_NE(attributes()->editorForKey(QStringLiteral("Other")), nullptr);
}

TEST_F(AttributesPane, RowsAreSortedByKeyAndLabelledWithBlanksForUnderscores)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), QStringLiteral("c.qtz"),
                                             {{"b_key", model::kTypeNumber, 1.0f, QStringLiteral("Zed_Last")},
                                              {"a_key", model::kTypeNumber, 1.0f, QStringLiteral("Second_Label_Here")},
                                              {"C_key", model::kTypeNumber, 1.0f, QStringLiteral("Upper")}});
    select({c});
    EXPECT_EQ(attributes()->form()->labels(), QStringList({"Upper", "Second Label Here", "Zed Last"}));
    for (QLabel* label : attributes()->findChildren<QLabel*>(QStringLiteral("rowLabel"))) {
        EXPECT_EQ(label->toolTip(), label->text());
        EXPECT_EQ(label->textInteractionFlags(), Qt::NoTextInteraction);
    }
}

TEST_F(AttributesPane, OnlyRichFontAndLiveVideoShowNoRowsAndNoMessage)
{
    model::QuartzComponent* c = addBareComponent({{"Rich", model::kTypeRichFont, QVariant()},
                                                  {"Camera", model::kTypeVideoInput, QVariant()}});
    select({c});
    EXPECT_TRUE(inspector.isGroupVisible(inspector::InspectorGroup::Attributes));
    EXPECT_EQ(attributes()->form()->rowCount(), 0);
    EXPECT_EQ(attributes()->noAttributesLabel(), nullptr);
}

TEST_F(AttributesPane, AComponentWithOnlyEditorKeysSaysNoAttributes)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), QStringLiteral("c.qtz"));
    select({c});
    ASSERT_NE(attributes()->noAttributesLabel(), nullptr);
    EXPECT_EQ(attributes()->noAttributesLabel()->text(), QStringLiteral("No attributes"));
    EXPECT_EQ(attributes()->form()->rowCount(), 1);
}

TEST_F(AttributesPane, UndoAndRedoShowTheRestoredValues)
{
    model::QuartzComponent* c = addComponent(QStringLiteral("C"), QStringLiteral("c.qtz"),
                                             {{"Size", model::kTypeNumber, 5.0f}});
    select({c});
    startCounting();
    {
        model::UndoGroup step(undoManager());
        c->setValueForKey(QStringLiteral("Size"), 9.0f);
    }
    EXPECT_EQ(attributes()->editorForKey(QStringLiteral("Size"))->shownValue().toDouble(), 9.0);
    undoManager().undo();
    EXPECT_EQ(attributes()->editorForKey(QStringLiteral("Size"))->shownValue().toDouble(), 5.0);
    undoManager().redo();
    EXPECT_EQ(attributes()->editorForKey(QStringLiteral("Size"))->shownValue().toDouble(), 9.0);
}
