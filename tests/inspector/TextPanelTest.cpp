// The text panel of a string attribute: live changes while it is open,
// Return and OK keep them, Cancel and Escape put back the text it opened
// with, each session one undo step.

#include "InspectorFixture.h"

#include "inspector/TextAttributeEditor.h"
#include "inspector/VLTextPanel.h"

#include <QLineEdit>
#include <QPushButton>

class TextPanel : public InspectorFixture {
protected:
    TextPanel()
    {
        box = addComponent(QStringLiteral("Box"), QStringLiteral("box.qtz"),
                           {{"Lower_Name", model::kTypeString, QStringLiteral("Before"), QStringLiteral("Lower_Name")}});
        select({box});
        startCounting();
        text = editor<inspector::TextAttributeEditor>(QStringLiteral("Lower_Name"));
    }

    inspector::VLTextPanel* open()
    {
        text->editButton()->click();
        inspector::VLTextPanel* panel = text->textPanel();
        EXPECT_NE(panel, nullptr);
        if (!panel) return nullptr;
        EXPECT_EQ(panel->windowTitle(), QStringLiteral("Lower Name"));
        EXPECT_EQ(panel->stringValue(), QStringLiteral("Before"));
        EXPECT_TRUE(panel->isVisible());
        panel->textView()->setFocus();
        panel->textView()->moveCursor(QTextCursor::End);
        return panel;
    }

    model::QuartzComponent* box = nullptr;
    inspector::TextAttributeEditor* text = nullptr;
};

TEST_F(TextPanel, TheButtonIsTitledEditAndTheRowLabelHasBlanksForUnderscores)
{
    EXPECT_EQ(text->editButton()->text(), QStringLiteral("Edit..."));
    EXPECT_TRUE(attributes()->form()->labels().contains(QStringLiteral("Lower Name")));
}

TEST_F(TextPanel, CancelRestoresTheTextAfterLiveEdits)
{
    inspector::VLTextPanel* panel = open();
    ASSERT_TRUE(panel);
    QTest::keyClicks(panel->textView(), QStringLiteral(" and after"));
    EXPECT_EQ(value(box, "Lower_Name").toString(), QStringLiteral("Before and after"));
    panel->cancelButton()->click();
    EXPECT_EQ(value(box, "Lower_Name").toString(), QStringLiteral("Before"));
    EXPECT_EQ(text->field()->text(), QStringLiteral("Before"));
    // Nothing is left to undo: the session ended where it began.
    EXPECT_EQ(undoManager().undoCount(), 0u);
}

TEST_F(TextPanel, EscapeCancelsToo)
{
    inspector::VLTextPanel* panel = open();
    ASSERT_TRUE(panel);
    QTest::keyClicks(panel->textView(), QStringLiteral("!"));
    QTest::keyClick(panel->textView(), Qt::Key_Escape);
    EXPECT_EQ(value(box, "Lower_Name").toString(), QStringLiteral("Before"));
}

TEST_F(TextPanel, ReturnConfirmsInsteadOfBreakingTheLine)
{
    inspector::VLTextPanel* panel = open();
    ASSERT_TRUE(panel);
    QTest::keyClicks(panel->textView(), QStringLiteral(" now"));
    QTest::keyClick(panel->textView(), Qt::Key_Return);
    EXPECT_EQ(value(box, "Lower_Name").toString(), QStringLiteral("Before now"));
    EXPECT_EQ(text->textPanel(), nullptr);
    EXPECT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_EQ(value(box, "Lower_Name").toString(), QStringLiteral("Before"));
}

TEST_F(TextPanel, OkKeepsTheLastTypedText)
{
    inspector::VLTextPanel* panel = open();
    ASSERT_TRUE(panel);
    QTest::keyClicks(panel->textView(), QStringLiteral("!"));
    panel->okButton()->click();
    EXPECT_EQ(value(box, "Lower_Name").toString(), QStringLiteral("Before!"));
}

TEST(VLTextPanel, TakesOnlyStrings)
{
    inspector::VLTextPanel panel;
    panel.setStringValue(QStringLiteral("text"));
    EXPECT_EQ(panel.stringValue(), QStringLiteral("text"));
    panel.setStringValue(42);
    EXPECT_EQ(panel.stringValue(), QString());
    panel.setStringValue(QVariant());
    EXPECT_EQ(panel.stringValue(), QString());
}
