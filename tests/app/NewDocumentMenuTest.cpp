// The New Document submenu: one item per offered video mode, grouped, and
// Ctrl+N on the preferred format only, moving when the preferences close.

#include "AppFixture.h"

#include "app/VideoModeItems.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/VideoModeCatalogue.h"

#include <QComboBox>

using model::Settings;

namespace {
const QStringList kGroupStarts = {QStringLiteral("720p23.98 RGBA"), QStringLiteral("1080i25 RGBA"),
                                  QStringLiteral("2160p23.98 RGBA")};
}

class NewDocumentMenuTest : public AppFixture {};

TEST_F(NewDocumentMenuTest, ListsEveryOfferedModeWithASeparatorBetweenGroups)
{
    QMenu* menu = newDocumentMenu(window);
    ASSERT_TRUE(menu);
    QStringList expected;
    QString group;
    for (const model::VideoMode& mode : model::VideoModeCatalogue::modes()) {
        if (!group.isNull() && mode.group != group) expected << QStringLiteral("-");
        group = mode.group;
        expected << mode.name;
    }
    EXPECT_EQ(menuTitles(menu), expected);
    EXPECT_EQ(expected.count(QStringLiteral("-")), 3);
    for (const QString& start : kGroupStarts) {
        const qsizetype at = expected.indexOf(start);
        ASSERT_GT(at, 0) << start.toStdString();
        EXPECT_EQ(expected.at(at - 1), QStringLiteral("-")) << start.toStdString();
    }
}

TEST_F(NewDocumentMenuTest, OnlyThePreferredFormatAnswersCtrlN)
{
    EXPECT_EQ(ctrlNItems(newDocumentMenu(window)), QStringList{QStringLiteral("1080i25 RGBA")});
    // The plain New item would make the same document; it must not compete.
    EXPECT_TRUE(window->action(QStringLiteral("newDocument"))->shortcuts().isEmpty());
}

TEST_F(NewDocumentMenuTest, AnItemMakesADocumentInItsMode)
{
    QAction* item = menuItem(newDocumentMenu(window), QStringLiteral("720p50 RGBA"));
    ASSERT_TRUE(item);
    item->trigger();
    ASSERT_EQ(controller.windows().size(), 2u);
    EXPECT_EQ(controller.windows().back()->document()->composition()->broadcastMode(), QStringLiteral("720p50 RGBA"));
}

TEST_F(NewDocumentMenuTest, CtrlNMovesOnlyWhenThePreferencesClose)
{
    app::VLWindowController* second = newWindow();
    app::VLPreferencesController* preferences = controller.preferencesController();
    preferences->show();
    QComboBox* popup = preferences->formatPopup();
    popup->setCurrentIndex(popup->findText(QStringLiteral("720p50 RGBA")));
    EXPECT_EQ(Settings::stringValue(Settings::kDefaultDocumentMode), QStringLiteral("720p50 RGBA"));
    EXPECT_EQ(ctrlNItems(newDocumentMenu(window)), QStringList{QStringLiteral("1080i25 RGBA")});

    preferences->close();
    for (app::VLWindowController* w : {window.data(), second})
        EXPECT_EQ(ctrlNItems(newDocumentMenu(w)), QStringList{QStringLiteral("720p50 RGBA")});
    // Windows opened later start with the new choice.
    EXPECT_EQ(ctrlNItems(newDocumentMenu(newWindow())), QStringList{QStringLiteral("720p50 RGBA")});
}

TEST_F(NewDocumentMenuTest, AnUnknownPreferredFormatLeavesNoItemWithCtrlN)
{
    Settings::setValue(Settings::kDefaultDocumentMode, QStringLiteral("1080i99 Nonsense"));
    controller.preferencesController()->registerNewDocumentMenu();
    EXPECT_TRUE(ctrlNItems(newDocumentMenu(window)).isEmpty());
    // A new document still gets a mode of its own.
    app::VLWindowController* made = newWindow();
    ASSERT_TRUE(made);
    EXPECT_EQ(made->document()->composition()->broadcastMode(), QStringLiteral("1080i25 RGBA"));
}

TEST_F(NewDocumentMenuTest, TheFormatPopUpListsTheSameItemsAndShowsThePreference)
{
    Settings::setValue(Settings::kDefaultDocumentMode, QStringLiteral("2160p50 RGBA"));
    QComboBox* popup = controller.preferencesController()->formatPopup();
    QStringList titles;
    for (int i = 0; i < popup->count(); ++i)
        titles << (popup->itemData(i, Qt::AccessibleDescriptionRole).toString() == QLatin1String("separator")
                       ? QStringLiteral("-")
                       : popup->itemText(i));
    EXPECT_EQ(titles, menuTitles(newDocumentMenu(window)));
    EXPECT_EQ(popup->currentText(), QStringLiteral("2160p50 RGBA"));
}

TEST(OfferedVideoModes, StartAGroupWhereTheCatalogueGroupChanges)
{
    QStringList starts;
    for (const app::OfferedVideoMode& mode : app::offeredVideoModes())
        if (mode.startsGroup) starts << mode.name;
    EXPECT_EQ(starts, kGroupStarts);
    EXPECT_EQ(app::offeredVideoModes().size(), model::VideoModeCatalogue::modes().size());
}
