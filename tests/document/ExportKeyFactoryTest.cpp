#include "../model/ModelFixture.h"

#include "document/ExportKeyFactory.h"

class ExportKeyFactoryTest : public ModelFixture {};

TEST_F(ExportKeyFactoryTest, JoinsTitleSeparatorAndPortExceptForTheScrollerStrings)
{
    model::QuartzComponent* scroller = addComponent(QStringLiteral("News Scroller"));
    scroller->setCompositionFilename(QStringLiteral("/Users/me/Templates/TextScroller.qtz"));
    model::QuartzComponent* other = addComponent(QStringLiteral("Crawl"));
    other->setCompositionFilename(QStringLiteral("/Users/me/TextScroller Copy.qtz"));

    EXPECT_EQ(document::exportKeyFactory(*scroller, QStringLiteral(" "), QStringLiteral("Strings_1Input")),
              QStringLiteral("EAS_TRANSLATION"));
    EXPECT_EQ(document::exportKeyFactory(*scroller, QStringLiteral("_"), QStringLiteral("Speed")),
              QStringLiteral("News Scroller_Speed"));
    EXPECT_EQ(document::exportKeyFactory(*other, QStringLiteral(" "), QStringLiteral("Strings_1Input")),
              QStringLiteral("Crawl Strings_1Input"));
    EXPECT_EQ(document::exportKeyFactory(*other, QString(), QStringLiteral("Text")), QStringLiteral("CrawlText"));
}
