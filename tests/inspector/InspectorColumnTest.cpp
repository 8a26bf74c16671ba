// The real column of groups: the same selections as the rule's table on
// each tab, the tabs, collapsing, the one rebuild per selection change, and
// the panels it closes on the way.

#include "InspectorFixture.h"

#include "inspector/ColourAttributeEditor.h"
#include "inspector/InspectorGroupView.h"
#include "inspector/InspectorGroups.h"

#include <QTabBar>
#include <QToolButton>

using inspector::InspectorGroup;
using inspector::InspectorTab;

namespace {

const QList<InspectorGroup> kComponentGroups{InspectorGroup::Title, InspectorGroup::Transform,
                                             InspectorGroup::Appearance, InspectorGroup::Timing};

}  // namespace

class InspectorColumn : public InspectorFixture {};

TEST_F(InspectorColumn, ShowsTheGroupsOfTheRuleForEachSelectionAndTab)
{
    model::QuartzComponent* a1 = addComponent(QStringLiteral("A1"), QStringLiteral("a.qtz"));
    model::QuartzComponent* a2 = addComponent(QStringLiteral("A2"), QStringLiteral("a.qtz"));
    model::QuartzComponent* b = addComponent(QStringLiteral("B"), QStringLiteral("b.qtz"));
    const std::pair<const char*, std::vector<model::QuartzComponent*>> selections[] = {
        {"empty", {}}, {"one", {a1}}, {"two of one file", {a1, a2}}, {"mixed", {a1, a2, b}}};
    for (InspectorTab tab : {InspectorTab::Properties, InspectorTab::Permissions, InspectorTab::Document}) {
        inspector.setupForTab(tab);
        for (const auto& [name, chosen] : selections) {
            select(chosen);
            QStringList files;
            for (model::QuartzComponent* c : chosen) files << c->compositionFilename();
            EXPECT_EQ(inspector.shownGroups(), inspector::visibleGroups(files, tab)) << name << " on tab " << int(tab);
        }
    }
}

TEST_F(InspectorColumn, TabsAreTitledAndIconedInOrderWithPropertiesFirst)
{
    QTabBar* tabs = inspector.tabBar();
    ASSERT_EQ(tabs->count(), 3);
    EXPECT_EQ(tabs->tabText(0), QStringLiteral("Properties"));
    EXPECT_EQ(tabs->tabText(1), QStringLiteral("Permissions"));
    EXPECT_EQ(tabs->tabText(2), QStringLiteral("Document"));
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(tabs->tabIcon(i).isNull()) << i;
    EXPECT_EQ(inspector.selectedTab(), InspectorTab::Properties);
}

TEST_F(InspectorColumn, AThirdComponentOfAnotherFileHidesOnlyTheAttributes)
{
    model::QuartzComponent* a1 = addComponent(QStringLiteral("A1"), QStringLiteral("a.qtz"));
    model::QuartzComponent* a2 = addComponent(QStringLiteral("A2"), QStringLiteral("a.qtz"));
    model::QuartzComponent* b = addComponent(QStringLiteral("B"), QStringLiteral("b.qtz"));
    select({a1, a2});
    EXPECT_TRUE(inspector.isGroupVisible(InspectorGroup::Attributes));
    b->setSelected(true);
    settle();
    EXPECT_FALSE(inspector.isGroupVisible(InspectorGroup::Attributes));
    for (InspectorGroup g : kComponentGroups) EXPECT_TRUE(inspector.isGroupVisible(g));
}

TEST_F(InspectorColumn, SelectingSeveralComponentsRebuildsOnceAfterTheLastAnnouncement)
{
    model::QuartzComponent* a1 = addComponent(QStringLiteral("A1"), QStringLiteral("a.qtz"), {{"Name", model::kTypeString, QStringLiteral("x")}});
    model::QuartzComponent* a2 = addComponent(QStringLiteral("A2"), QStringLiteral("a.qtz"), {{"Name", model::kTypeString, QStringLiteral("y")}});
    select({a1});
    QPointer<inspector::AttributeEditor> before = attributes()->editorForKey(QStringLiteral("Name"));
    ASSERT_TRUE(before);
    a2->setSelected(true);
    // Nothing is rebuilt inside the model's announcement...
    EXPECT_TRUE(before);
    settle();
    // ...and afterwards the row shows both components.
    EXPECT_FALSE(before);
    ASSERT_NE(attributes()->editorForKey(QStringLiteral("Name")), nullptr);
    EXPECT_TRUE(attributes()->editorForKey(QStringLiteral("Name"))->shownMixed());
}

TEST_F(InspectorColumn, GroupsCollapseAndExpandFromTheirHeader)
{
    model::QuartzComponent* a = addComponent(QStringLiteral("A"), QStringLiteral("a.qtz"));
    select({a});
    inspector::InspectorGroupView* group = inspector.groupView(InspectorGroup::Transform);
    EXPECT_EQ(group->title(), QStringLiteral("Transform"));
    group->header()->click();
    EXPECT_FALSE(group->isExpanded());
    EXPECT_FALSE(group->content()->isVisible());
    group->header()->click();
    EXPECT_TRUE(group->content()->isVisible());
}

TEST_F(InspectorColumn, SwitchingTabsClosesAnOpenColourPanelKeepingItsColour)
{
    model::QuartzComponent* a = addComponent(QStringLiteral("A"), QStringLiteral("a.qtz"),
                                             {{"Fill", model::kTypeColor, QColor(Qt::red)}});
    select({a});
    startCounting();
    auto* colour = editor<inspector::ColourAttributeEditor>(QStringLiteral("Fill"));
    colour->showColourPanel();
    QPointer<QColorDialog> panel = colour->colourPanel();
    ASSERT_TRUE(panel);
    panel->setCurrentColor(QColor(Qt::blue));
    EXPECT_EQ(value(a, "Fill").value<QColor>(), QColor(Qt::blue));
    EXPECT_TRUE(inspector.isEditing());
    inspector.setupForTab(InspectorTab::Document);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(!panel || !panel->isVisible());
    EXPECT_FALSE(inspector.isEditing());
    EXPECT_EQ(value(a, "Fill").value<QColor>(), QColor(Qt::blue));
    // The whole panel session was one step.
    EXPECT_EQ(undoManager().undoCount(), 1u);
    undoManager().undo();
    EXPECT_EQ(value(a, "Fill").value<QColor>(), QColor(Qt::red));
}
