// Two components of one file edited together: one value when they agree,
// the mixed state of each control when they do not, and every edit one undo
// step that undo and redo take back and forth for both.

#include "InspectorFixture.h"

#include "inspector/CheckboxAttributeEditor.h"
#include "inspector/ColourAttributeEditor.h"
#include "inspector/ColourWell.h"
#include "inspector/MenuAttributeEditor.h"
#include "inspector/NumberAttributeEditor.h"
#include "inspector/PropertyPanes.h"
#include "inspector/VLInspectorPermissionsController.h"
#include "inspector/TextAttributeEditor.h"

#include "widgets/VLSegmentedControl.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QToolButton>

class MultiSelection : public InspectorFixture {
protected:
    MultiSelection()
    {
        first = addLowerThird(QStringLiteral("First"), QStringLiteral("Anna"), Qt::red, true, 1);
        second = addLowerThird(QStringLiteral("Second"), QStringLiteral("Ben"), Qt::blue, false, 2);
        select({first, second});
        startCounting();
    }

    model::QuartzComponent* addLowerThird(const QString& title, const QString& name, QColor colour, bool shown, int align)
    {
        return addComponent(title, QStringLiteral("LowerThird.qtz"),
                            {{"Name", model::kTypeString, name},
                             {"Fill", model::kTypeColor, colour},
                             {"Shown", model::kTypeBoolean, shown},
                             {"Size", model::kTypeNumber, 12.0f},
                             {"Mode", model::kTypeIndexMenu, float(align), {}, {"A", "B", "C"}},
                             {"Align", model::kTypeIndexMenu, float(align), {}, {"Left", "Center", "Right", "Justified", "Natural"}}});
    }

    model::QuartzComponent* first = nullptr;
    model::QuartzComponent* second = nullptr;
};

TEST_F(MultiSelection, AttributesOfOneFileShowOnceEach)
{
    QStringList keys;
    for (const auto& [key, editor] : attributes()->editors()) keys << key;
    EXPECT_EQ(keys, QStringList({"Align", "Fill", "Mode", "Name", "Shown", "Size"}));
}

TEST_F(MultiSelection, AgreeingValuesShowAsOneValue)
{
    auto* size = editor<inspector::NumberAttributeEditor>(QStringLiteral("Size"));
    EXPECT_FALSE(size->shownMixed());
    EXPECT_EQ(size->field()->text(), QStringLiteral("12"));
    EXPECT_TRUE(size->field()->placeholderText().isEmpty());
}

TEST_F(MultiSelection, DisagreeingValuesShowTheMixedStateOfEachControl)
{
    auto* name = editor<inspector::TextAttributeEditor>(QStringLiteral("Name"));
    EXPECT_TRUE(name->field()->text().isEmpty());
    EXPECT_EQ(name->field()->placeholderText(), inspector::mixedValuesPlaceholder());
    EXPECT_EQ(editor<inspector::CheckboxAttributeEditor>(QStringLiteral("Shown"))->checkBox()->checkState(),
              Qt::PartiallyChecked);
    EXPECT_TRUE(editor<inspector::ColourAttributeEditor>(QStringLiteral("Fill"))->well()->showsMixed());
    EXPECT_EQ(editor<inspector::MenuAttributeEditor>(QStringLiteral("Mode"))->popUp()->currentIndex(), -1);
    widgets::VLSegmentedControl* align = editor<inspector::MenuAttributeEditor>(QStringLiteral("Align"))->alignment();
    for (int tag = 0; tag < 5; ++tag) EXPECT_FALSE(align->buttonForTag(tag)->isChecked()) << tag;
}

TEST_F(MultiSelection, AnEditWritesBothInOneStepThatUndoAndRedoTakeBackAndForth)
{
    auto* name = editor<inspector::TextAttributeEditor>(QStringLiteral("Name"));
    name->field()->setFocus();
    QTest::keyClicks(name->field(), QStringLiteral("Cleo"));
    QTest::keyClick(name->field(), Qt::Key_Return);
    EXPECT_EQ(value(first, "Name").toString(), QStringLiteral("Cleo"));
    EXPECT_EQ(value(second, "Name").toString(), QStringLiteral("Cleo"));
    EXPECT_FALSE(name->shownMixed());
    ASSERT_EQ(undoManager().undoCount(), 1u);

    undoManager().undo();
    EXPECT_EQ(value(first, "Name").toString(), QStringLiteral("Anna"));
    EXPECT_EQ(value(second, "Name").toString(), QStringLiteral("Ben"));
    EXPECT_TRUE(name->shownMixed());

    undoManager().redo();
    EXPECT_EQ(value(first, "Name").toString(), QStringLiteral("Cleo"));
    EXPECT_EQ(value(second, "Name").toString(), QStringLiteral("Cleo"));
    EXPECT_EQ(name->field()->text(), QStringLiteral("Cleo"));
}

TEST_F(MultiSelection, AClickFromTheMixedStateChecksBoth)
{
    editor<inspector::CheckboxAttributeEditor>(QStringLiteral("Shown"))->checkBox()->click();
    EXPECT_TRUE(value(first, "Shown").toBool());
    EXPECT_TRUE(value(second, "Shown").toBool());
    EXPECT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_TRUE(value(first, "Shown").toBool());
    EXPECT_FALSE(value(second, "Shown").toBool());
}

TEST_F(MultiSelection, GeometryRowsMoveBothComponentsInOneStep)
{
    auto* pane = inspector.transformController();
    auto* x = paneEditor<inspector::NumberAttributeEditor>(pane, QStringLiteral("X"));
    x->field()->setFocus();
    x->field()->selectAll();
    QTest::keyClicks(x->field(), QStringLiteral("300"));
    QTest::keyClick(x->field(), Qt::Key_Return);
    EXPECT_EQ(first->originX(), 300.0);
    EXPECT_EQ(second->originX(), 300.0);
    EXPECT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_EQ(first->originX(), 10.0);
    EXPECT_EQ(second->originX(), 10.0);
    undoManager().redo();
    EXPECT_EQ(second->originX(), 300.0);
}

TEST_F(MultiSelection, ModelChangesReachTheRowsButNeverTheFieldBeingTyped)
{
    auto* name = editor<inspector::TextAttributeEditor>(QStringLiteral("Name"));
    auto* size = editor<inspector::NumberAttributeEditor>(QStringLiteral("Size"));
    name->field()->setFocus();
    QTest::keyClicks(name->field(), QStringLiteral("Dora"));
    ASSERT_TRUE(name->isEditing());
    // Something else (a script, the timeline) writes while the user types.
    first->setValueForKey(QStringLiteral("Name"), QStringLiteral("Elsewhere"));
    first->setValueForKey(QStringLiteral("Size"), 40.0f);
    second->setValueForKey(QStringLiteral("Size"), 40.0f);
    EXPECT_EQ(name->field()->text(), QStringLiteral("Dora"));
    EXPECT_EQ(size->field()->text(), QStringLiteral("40"));
    // The typing ends: the field now shows what the model holds, and the
    // two components no longer agree.
    QTest::keyClick(name->field(), Qt::Key_Return);
    EXPECT_FALSE(name->isEditing());
    EXPECT_TRUE(name->shownMixed());
    EXPECT_EQ(value(second, "Name").toString(), QStringLiteral("Dora"));
}

TEST_F(MultiSelection, ASelectionChangeWhileTypingWaitsForTheTypingToEnd)
{
    auto* name = editor<inspector::TextAttributeEditor>(QStringLiteral("Name"));
    QPointer<QLineEdit> field = name->field();
    field->setFocus();
    QTest::keyClicks(field, QStringLiteral("F"));
    second->setSelected(false);
    settle();
    // The row under the user's hands stays...
    ASSERT_TRUE(field);
    EXPECT_TRUE(inspector.isEditing());
    QTest::keyClick(field, Qt::Key_Return);
    settle();
    // ...and goes once the edit is done: the rows now show the first alone.
    EXPECT_FALSE(field);
    EXPECT_EQ(editor<inspector::TextAttributeEditor>(QStringLiteral("Name"))->field()->text(), QStringLiteral("F"));
    EXPECT_EQ(value(second, "Name").toString(), QStringLiteral("F"));
}

TEST_F(MultiSelection, SwitchingTabsWhileTypingEndsTheTypingAsOneStepAndFillsTheTab)
{
    auto* name = editor<inspector::TextAttributeEditor>(QStringLiteral("Name"));
    name->field()->setFocus();
    QTest::keyClicks(name->field(), QStringLiteral("Gus"));
    ASSERT_TRUE(inspector.isEditing());
    ASSERT_EQ(inspector.permissionsController()->switchForKey(QStringLiteral("Name")), nullptr);
    // The field goes out of sight with its tab: the typing ends there.
    inspector.setupForTab(inspector::InspectorTab::Permissions);
    settle();
    EXPECT_FALSE(inspector.isEditing());
    EXPECT_EQ(undoManager().undoCount(), 1u);
    EXPECT_EQ(value(second, "Name").toString(), QStringLiteral("Gus"));
    auto* nameSwitch = inspector.permissionsController()->switchForKey(QStringLiteral("Name"));
    ASSERT_NE(nameSwitch, nullptr);
    first->attributeForKey(QStringLiteral("Name"))->setPermissionToChange(true);
    EXPECT_EQ(nameSwitch->checkBox()->checkState(), Qt::PartiallyChecked);
}
