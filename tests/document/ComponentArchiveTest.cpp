#include "document/ComponentArchive.h"

#include "model/KeyframeValues.h"

#include <QColor>
#include <QFont>
#include <QImage>

#include <gtest/gtest.h>

using document::ComponentArchive;

namespace {

QVariantMap attribute(const QString& key, int type, const QVariant& values)
{
    return {{QStringLiteral("key"), key},           {QStringLiteral("label"), key},
            {QStringLiteral("type"), type},         {QStringLiteral("animateable"), false},
            {QStringLiteral("possibleValues"), QStringList{}},
            {QStringLiteral("values"), values},     {QStringLiteral("category"), QString()},
            {QStringLiteral("position"), quint64(9999)}};
}

QVariant constant(const QVariant& value) { return QVariant::fromValue(model::KeyframeValues{{float(model::kConstantTimepoint), value}}); }

}  // namespace

TEST(ComponentArchiveTest, KeepsEveryKindOfValue)
{
    // Images travel as TIFF, premultiplied as they are drawn.
    QImage image(3, 2, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(10, 20, 30, 128));
    image.setPixelColor(2, 1, QColor(250, 0, 5));
    model::KeyframeValues colours{{0.0f, QColor::fromRgbF(0.2f, 0.4f, 0.6f, 0.8f)}, {1.5f, QColor(Qt::red)}};
    model::KeyframeValues strings{{0.1f, QStringLiteral("one")}, {2.0f, QStringLiteral("zwei • drei")}};
    const QVariantMap first{
        {QStringLiteral("title"), QStringLiteral("Lower third <1>")},
        {QStringLiteral("compositionFilename"), QStringLiteral("/Library/Compositions/Lower Third.qtz")},
        {QStringLiteral("quartzCompositionData"), QByteArray("bplist00\x00\x01\xff", 11)},
        {QStringLiteral("startTime"), 0.1},
        {QStringLiteral("endTime"), 10.0 / 3.0},
        {QStringLiteral("constrainProportions"), true},
        {QStringLiteral("animateable"), -1},
        {QStringLiteral("attributes"),
         QVariantList{attribute(QStringLiteral("Colour"), 5, QVariant::fromValue(colours)),
                      attribute(QStringLiteral("Name"), 0, QVariant::fromValue(strings)),
                      attribute(QStringLiteral("Logo"), 6, constant(image)),
                      attribute(QStringLiteral("Width"), 2, constant(123.456f)),
                      attribute(QStringLiteral("Menu"), 4, constant(2))}},
    };
    const QVariantMap second{{QStringLiteral("title"), QStringLiteral("Second")}, {QStringLiteral("attributes"), QVariantList{}}};

    QList<QVariantMap> back;
    QString error;
    ASSERT_TRUE(ComponentArchive::unarchive(ComponentArchive::archive({first, second}), back, &error)) << error.toStdString();
    ASSERT_EQ(back.size(), 2);
    EXPECT_EQ(back[0], first);
    EXPECT_EQ(back[1], second);
    const QVariantList attributes = back[0].value(QStringLiteral("attributes")).toList();
    EXPECT_EQ(attributes[2].toMap().value(QStringLiteral("values")).value<model::KeyframeValues>().first().value<QImage>(), image);
}

TEST(ComponentArchiveTest, KeepsFonts)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(31.5);
    font.setBold(true);
    QList<QVariantMap> back;
    ASSERT_TRUE(ComponentArchive::unarchive(ComponentArchive::archive({{{QStringLiteral("font"), font}}}), back));
    const QFont read = back.value(0).value(QStringLiteral("font")).value<QFont>();
    EXPECT_EQ(read.family(), font.family());
    EXPECT_EQ(read.pointSizeF(), 31.5);
    EXPECT_TRUE(read.bold());
}

TEST(ComponentArchiveTest, RefusesWhatItCannotReadWhole)
{
    QList<QVariantMap> back{{{QStringLiteral("kept"), true}}};
    QString error;
    const QByteArray good = ComponentArchive::archive({{{QStringLiteral("title"), QStringLiteral("A")}}});

    EXPECT_FALSE(ComponentArchive::unarchive("plain text", back, &error));
    EXPECT_FALSE(ComponentArchive::unarchive(QByteArray(good).replace("version=\"1\"", "version=\"2\""), back, &error));
    EXPECT_TRUE(error.contains(QLatin1String("version"))) << error.toStdString();
    EXPECT_FALSE(ComponentArchive::unarchive(good.left(good.size() - 20), back, &error)) << "a cut-off archive";
    EXPECT_FALSE(ComponentArchive::unarchive(QByteArray(good).replace("type=\"map\"", "type=\"string\""), back, &error))
        << "a component that is not a dictionary";
    EXPECT_EQ(back.size(), 1) << "a refused archive leaves the result alone";

    ASSERT_TRUE(ComponentArchive::unarchive(ComponentArchive::archive({}), back));
    EXPECT_TRUE(back.isEmpty());
}
