#include "app/TextCheckDialog.h"

#include <QLabel>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

document::TextCheckResult result(const QString& sample, bool inside)
{
    document::TextCheckResult r;
    r.component = QStringLiteral("Strap");
    r.key = QStringLiteral("CIName");
    r.sample = sample;
    r.measuredWidth = inside ? 400 : 1500;
    r.room = 1200;
    r.insideComponent = inside;
    r.picture = QImage(120, 20, QImage::Format_ARGB32_Premultiplied);
    r.picture.fill(Qt::blue);
    return r;
}

TEST(TextCheckDialog, ListsWhatDoesNotFitFirstWithItsPicture)
{
    app::TextCheckDialog dialog({result(QStringLiteral("Bo"), true), result(QStringLiteral("A very long name"), false)});
    const auto* list = dialog.findChild<QTreeWidget*>();
    ASSERT_TRUE(list);
    ASSERT_EQ(list->topLevelItemCount(), 2);
    const QTreeWidgetItem* first = list->topLevelItem(0);
    EXPECT_EQ(first->text(1), QStringLiteral("A very long name"));
    EXPECT_TRUE(first->text(2).contains(QStringLiteral("1500 × 0 px for 1200")));
    EXPECT_FALSE(first->icon(3).isNull()) << "a failure shows what was rendered";
    EXPECT_EQ(list->topLevelItem(1)->text(2), QStringLiteral("Fits"));
    EXPECT_TRUE(list->topLevelItem(1)->icon(3).isNull());
    EXPECT_EQ(dialog.findChild<QLabel*>()->text(), QStringLiteral("One sample does not fit."));

    app::TextCheckDialog clear({result(QStringLiteral("Bo"), true)});
    EXPECT_EQ(clear.findChild<QLabel*>()->text(), QStringLiteral("Every text field fits with every sample."));
}

}  // namespace
