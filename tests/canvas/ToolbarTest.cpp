// The toolbar is built from the toolbar components list and adds what its
// entries name; align and distribute follow the selection.

#include "CanvasFixture.h"

#include "canvas/ToolbarComponents.h"
#include "canvas/VLMainToolbar.h"
#include "widgets/VLSegmentedControl.h"
#include "document/DocumentCommands.h"

#include <QComboBox>
#include <QMenu>
#include <QToolButton>

using canvas::ToolbarComponentEntry;
using canvas::ToolbarComponents;

namespace {

QString listPath() { return QStringLiteral(VELLORAN_SOURCE_DIR "/resources/standard-components/ToolbarComponents.plist"); }

const ToolbarComponentEntry* find(const std::vector<ToolbarComponentEntry>& entries, const QString& identifier)
{
    for (const ToolbarComponentEntry& entry : entries)
        if (entry.identifier == identifier) return &entry;
    return nullptr;
}

}  // namespace

TEST(ToolbarComponentsList, EntriesCarryTheirKeysAndSubmenus)
{
    const auto entries = ToolbarComponents::load(listPath());
    ASSERT_FALSE(entries.empty());
    const ToolbarComponentEntry* text = find(entries, QStringLiteral("Text"));
    ASSERT_TRUE(text);
    EXPECT_EQ(text->buttonWidth(), 43);  // "width" 0
    ASSERT_EQ(text->subcomponents.size(), 4u);
    EXPECT_EQ(text->subcomponents[1].title, QStringLiteral("Lower Third"));
    EXPECT_EQ(text->subcomponents[1].component, QStringLiteral("LowerThird"));
    EXPECT_TRUE(text->subcomponents[2].separator);

    const ToolbarComponentEntry* image = find(entries, QStringLiteral("Image"));
    ASSERT_TRUE(image);
    EXPECT_TRUE(image->asksForFile());
    EXPECT_EQ(image->inputKey(), QStringLiteral("Image"));
}

TEST(ToolbarComponentsList, AnUnreadableListGivesNoEntries)
{
    EXPECT_TRUE(ToolbarComponents::load(QStringLiteral("/nonexistent/ToolbarComponents.plist")).empty());
}

TEST(ToolbarComponentsList, ComponentItemsComeBeforeTheStandardOnes)
{
    const auto entries = ToolbarComponents::load(listPath());
    const QStringList all = ToolbarComponents::allIdentifiers(entries);
    EXPECT_EQ(all.first(), entries.front().identifier);
    EXPECT_EQ(all.last(), QStringLiteral("Preview"));
    EXPECT_LT(all.indexOf(QStringLiteral("Align")), all.indexOf(QStringLiteral("Distribute")));
    EXPECT_LT(all.indexOf(QStringLiteral("Backward")), all.indexOf(QStringLiteral("Forward")));
}

class ToolbarTest : public CanvasFixture {
protected:
    ToolbarTest() : toolbar(&view, [this] { return &commands; }, ToolbarComponents::load(listPath())) {}

    document::DocumentCommands commands{*composition};
    canvas::VLMainToolbar toolbar;
};

TEST_F(ToolbarTest, EveryIdentifierHasAnItem)
{
    for (const QString& identifier : ToolbarComponents::allIdentifiers(toolbar.entries())) {
        if (identifier == ToolbarComponents::spaceIdentifier() || identifier == ToolbarComponents::flexibleSpaceIdentifier())
            continue;
        EXPECT_TRUE(toolbar.itemAction(identifier)) << identifier.toStdString();
    }
    QAction* preview = toolbar.itemAction(QStringLiteral("Preview"));
    ASSERT_TRUE(preview->isEnabled());
    int requests = 0;
    QObject::connect(&toolbar, &canvas::VLMainToolbar::previewRequested, [&] { ++requests; });
    preview->trigger();
    EXPECT_EQ(requests, 1);
}

TEST_F(ToolbarTest, APullDownListsTheSubcomponentsAndAddsTheChosenOne)
{
    auto* button = qobject_cast<QToolButton*>(toolbar.itemWidget(QStringLiteral("Text")));
    ASSERT_TRUE(button);
    EXPECT_GE(button->minimumWidth(), 43);
    QMenu* menu = toolbar.itemAction(QStringLiteral("Text"))->menu();
    ASSERT_TRUE(menu);
    QStringList titles;
    for (QAction* action : menu->actions()) titles << (action->isSeparator() ? QStringLiteral("-") : action->text());
    EXPECT_EQ(titles, (QStringList{QStringLiteral("Text"), QStringLiteral("Lower Third"), QStringLiteral("-"),
                                   QStringLiteral("Ticker")}));

    startCounting();
    menu->actions().at(1)->trigger();
    const auto components = composition->componentArray();
    ASSERT_EQ(components.size(), 1u);
    EXPECT_EQ(components.front()->title(), QStringLiteral("Lower Third"));
    EXPECT_TRUE(components.front()->selected());
    EXPECT_EQ(undoManager().undoCount(), 1u);
}

TEST_F(ToolbarTest, AButtonAddsItsComponentTitledAfterTheEntry)
{
    startCounting();
    toolbar.itemAction(QStringLiteral("Box"))->trigger();
    ASSERT_EQ(composition->componentArray().size(), 1u);
    const model::QuartzComponent* first = composition->componentArray().front();
    EXPECT_EQ(first->title(), QStringLiteral("Box"));
    // In the middle of what is shown; the next one 20 pixels on.
    EXPECT_NEAR(first->drawingFrame().center().x(), view.visibleCentre().x(), 1.0);
    EXPECT_NEAR(first->drawingFrame().center().y(), view.visibleCentre().y(), 1.0);
    toolbar.itemAction(QStringLiteral("Box"))->trigger();
    const model::QuartzComponent* second = composition->componentsSortedByZLevel().back();
    EXPECT_EQ(second->drawingFrame().topLeft() - first->drawingFrame().topLeft(), QPointF(20, -20));
    EXPECT_EQ(undoManager().undoCount(), 2u) << "each add, placing included, is one step";
}

TEST_F(ToolbarTest, AnImageEntryAsksForAFileAndShowsIt)
{
    QImage picture(64, 48, QImage::Format_RGB32);
    picture.fill(Qt::yellow);
    const QString png = QDir(dir.path()).filePath(QStringLiteral("Logo.png"));
    ASSERT_TRUE(picture.save(png));
    QString asked;
    toolbar.setFileChooser([&](const ToolbarComponentEntry& entry) {
        asked = entry.identifier;
        return QString();  // cancelled
    });
    toolbar.itemAction(QStringLiteral("Image"))->trigger();
    EXPECT_EQ(asked, QStringLiteral("Image"));
    EXPECT_TRUE(composition->componentArray().empty());

    toolbar.setFileChooser([&](const ToolbarComponentEntry&) { return png; });
    toolbar.itemAction(QStringLiteral("Image"))->trigger();
    ASSERT_EQ(composition->componentArray().size(), 1u);
    EXPECT_EQ(composition->componentArray().front()->width(), 64);
}

TEST_F(ToolbarTest, AlignNeedsTwoSelectedAndDistributeThree)
{
    model::QuartzComponent* a = addImage(100, 100);
    model::QuartzComponent* b = addImage(300, 200);
    EXPECT_FALSE(toolbar.alignControl()->isEnabled());
    a->setSelected(true);
    EXPECT_TRUE(toolbar.alignControl()->isEnabled());
    EXPECT_FALSE(toolbar.distributeControl()->isEnabled());

    // The left-edges button lines the two up on the leftmost edge.
    const int tag = canvas::VLAlignmentController::tagForMode(document::kAlignLeft);
    toolbar.alignControl()->buttonForTag(tag)->click();
    EXPECT_EQ(b->originX(), 100);
    EXPECT_EQ(a->originX(), 100);
}

TEST_F(ToolbarTest, TheDistributeControlRunsTheModeItsTitleNames)
{
    model::QuartzComponent* a = addImage(100, 100);
    model::QuartzComponent* b = addImage(150, 300);
    model::QuartzComponent* c = addImage(700, 500);
    composition->selectAllComponents();
    ASSERT_TRUE(toolbar.distributeControl()->isEnabled());
    for (const canvas::AlignmentItem& item : canvas::VLAlignmentController::items())
        if (item.title == QStringLiteral("Distribute Left Edges")) toolbar.distributeControl()->buttonForTag(item.tag)->click();
    EXPECT_EQ(a->originX(), 100);
    EXPECT_EQ(b->originX(), 400);
    EXPECT_EQ(c->originX(), 700);
    EXPECT_EQ(b->originY(), 300);  // untouched vertically
}

TEST_F(ToolbarTest, TheZoomButtonFollowsAndSetsTheZoom)
{
    QComboBox* zoom = toolbar.zoomButton();
    EXPECT_EQ(zoom->currentData().toInt(), 100);
    view.setZoomMode(50);
    EXPECT_EQ(zoom->currentData().toInt(), 50);
    const int index = zoom->findData(200);
    zoom->setCurrentIndex(index);
    Q_EMIT zoom->activated(index);
    EXPECT_DOUBLE_EQ(view.zoomFactor(), 2.0);
    // A zoom off the list shows as itself, and only one such item is kept.
    const int listed = zoom->count();
    view.setZoomMode(120);
    EXPECT_EQ(zoom->currentText(), QStringLiteral("120%"));
    view.setZoomMode(144);
    EXPECT_EQ(zoom->currentText(), QStringLiteral("144%"));
    EXPECT_EQ(zoom->count(), listed + 1);
    view.setZoomMode(100);
    EXPECT_EQ(zoom->count(), listed);
}

TEST_F(ToolbarTest, BackwardAndForwardRestackTheSelection)
{
    model::QuartzComponent* bottom = addImage(100, 100);
    model::QuartzComponent* top = addImage(120, 110);
    toolbar.itemAction(QStringLiteral("Backward"))->trigger();
    EXPECT_LT(top->zLevel(), bottom->zLevel());
}
