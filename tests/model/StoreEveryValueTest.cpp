// Every value an attribute of any type can hold, the empty and odd ones
// included, must save and open again: a value that cannot be read back
// makes the whole document unreadable.

#include "ModelFixture.h"

#include "model/RichFontValue.h"
#include "model/StoreFile.h"

#include <QFont>
#include <QImage>

#include <limits>

using namespace model;

namespace {

struct Sample {
    int type;
    const char* name;
    QVariant value;
};

QImage filled(QSize size, QImage::Format format, QColor colour)
{
    QImage image(size, format);
    image.fill(colour);
    return image;
}

QImage gradient(QSize size)
{
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) image.setPixelColor(x, y, QColor(x * 7 % 256, y * 13 % 256, 90, (x + y) * 5 % 256));
    return image;
}

QFont font(const QString& family, double size, bool bold = false, bool italic = false)
{
    QFont f(family);
    f.setPointSizeF(size);
    f.setBold(bold);
    f.setItalic(italic);
    return f;
}

QVariant richFont(const QVariantMap& ports)
{
    return QVariant::fromValue(RichFontValue(QStringLiteral("A_Rich_Font_Name"), [&](const QString& k) { return ports.value(k); }));
}

std::vector<Sample> samples()
{
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    return {
        {kTypeString, "none", QVariant()},
        {kTypeString, "empty", QString(QLatin1String(""))},
        {kTypeString, "markup and quotes", QStringLiteral("<b>\"A\" & 'B'</b> ]]>")},
        {kTypeString, "control characters", QStringLiteral("tab\there\vvertical\x01\x1f bell\a")},
        {kTypeString, "line ends", QStringLiteral("one\r\ntwo\rthree\n")},
        {kTypeString, "outside the basic plane", QStringLiteral("Grüße 日本 \U0001F600")},
        {kTypeString, "lone surrogate", QString(QChar(0xD800)) + QStringLiteral("x")},
        {kTypeString, "non-characters", QString(QChar(0xFFFE)) + QString(QChar(0xFFFF))},
        {kTypeString, "leading and trailing blanks", QStringLiteral("  padded  ")},
        {kTypeIndex, "zero", 0},
        {kTypeIndex, "negative", -3},
        {kTypeIndex, "float", 2.0f},
        {kTypeNumber, "NaN", nan},
        {kTypeNumber, "infinite", inf},
        {kTypeNumber, "minus infinite", -inf},
        {kTypeNumber, "negative zero", -0.0f},
        {kTypeNumber, "largest", std::numeric_limits<float>::max()},
        {kTypeNumber, "double", 0.1},
        {kTypeBoolean, "true", true},
        {kTypeBoolean, "as number", 0.0},
        {kTypeIndexMenu, "index", 1},
        {kTypeColor, "translucent", QColor(255, 128, 0, 7)},
        {kTypeColor, "clear", QColor(Qt::transparent)},
        {kTypeColor, "from HSV", QColor::fromHsvF(0.3f, 0.5f, 0.7f, 0.9f)},
        {kTypeColor, "extended range", QColor::fromRgbF(1.5f, -0.25f, 0.5f, 1.0f)},
        {kTypeColor, "invalid", QColor()},
        {kTypeImage, "null", QImage()},
        {kTypeImage, "one pixel", filled({1, 1}, QImage::Format_ARGB32, QColor(1, 2, 3, 4))},
        {kTypeImage, "gradient with alpha", gradient({37, 11})},
        {kTypeImage, "premultiplied", gradient({9, 5}).convertToFormat(QImage::Format_ARGB32_Premultiplied)},
        {kTypeImage, "opaque RGB", filled({3, 2}, QImage::Format_RGB32, QColor(200, 100, 50))},
        {kTypeImage, "grayscale", filled({4, 4}, QImage::Format_Grayscale8, QColor(77, 77, 77))},
        {kTypeFont, "not installed", font(QStringLiteral("No Such Font Family 12345"), 13.25, true, true)},
        {kTypeFont, "installed", font(QStringLiteral("DejaVu Sans"), 31.5)},
        {kTypeFont, "none", QVariant()},
        {kTypeStyledText, "empty", QString(QLatin1String(""))},
        {kTypeStyledText, "none", QVariant()},
        {kTypeStyledText, "rtf", QStringLiteral("{\\rtf1\\ansi\\deff0 {\\fonttbl {\\f0 Helvetica;}}\\f0\\fs48 Hello \\u8364?}")},
        {kTypeFilePath, "empty", QString(QLatin1String(""))},
        {kTypeFilePath, "unicode with spaces", QStringLiteral("../Bilder/Logo groß.png")},
        {kTypeOtherFilePath, "absolute", QStringLiteral("/tmp/clip.mov")},
        {kTypeVideoInput, "no poster", QVariant()},
        {kTypeVideoInput, "poster", gradient({16, 9})},
        {kTypeRichFont, "default", QVariant::fromValue(RichFontValue())},
        {kTypeRichFont, "ports", richFont({{QStringLiteral("A_Rich_Font_Name"), QStringLiteral("Missing Family")},
                                          {QStringLiteral("A_Rich_Font_Size"), 0.0f},
                                          {QStringLiteral("A_Rich_Font_Color"), QColor(1, 2, 3, 4)}})},
    };
}

// Images are kept premultiplied, as they are drawn: colour under transparent
// pixels is not kept, everything visible is.
QImage comparable(const QImage& image) { return image.convertToFormat(QImage::Format_ARGB32_Premultiplied); }

// What reading may change: nothing a user or the export can tell apart.
void expectSameValue(const QVariant& original, const QVariant& back, const std::string& what)
{
    SCOPED_TRACE(what);
    if (!original.isValid() || (original.metaType().id() == QMetaType::QImage && original.value<QImage>().isNull())) {
        EXPECT_FALSE(back.isValid()) << "a missing value stays missing";
        return;
    }
    ASSERT_TRUE(back.isValid());
    switch (original.metaType().id()) {
    case QMetaType::QImage:
        EXPECT_EQ(comparable(back.value<QImage>()), comparable(original.value<QImage>()));
        return;
    case QMetaType::QFont: {
        const QFont a = original.value<QFont>(), b = back.value<QFont>();
        EXPECT_EQ(b.family(), a.family());
        EXPECT_EQ(b.pointSizeF(), a.pointSizeF());
        EXPECT_EQ(b.bold(), a.bold());
        EXPECT_EQ(b.italic(), a.italic());
        return;
    }
    case QMetaType::QColor: {
        const QColor a = original.value<QColor>(), b = back.value<QColor>();
        if (!a.isValid()) return;  // an invalid colour may come back as any colour, but it must come back
        EXPECT_NEAR(b.redF(), a.toRgb().redF(), 1e-4);
        EXPECT_NEAR(b.greenF(), a.toRgb().greenF(), 1e-4);
        EXPECT_NEAR(b.blueF(), a.toRgb().blueF(), 1e-4);
        EXPECT_NEAR(b.alphaF(), a.alphaF(), 1e-4);
        return;
    }
    case QMetaType::Float:
        if (std::isnan(original.toFloat())) {
            EXPECT_TRUE(std::isnan(back.toFloat()));
            return;
        }
        break;
    default: break;
    }
    if (original.metaType() == QMetaType::fromType<RichFontValue>()) {
        EXPECT_EQ(back.value<RichFontValue>().toMap(), original.value<RichFontValue>().toMap());
        return;
    }
    EXPECT_EQ(back, original);
}

}  // namespace

class StoreEveryValueTest : public ModelFixture {};

TEST_F(StoreEveryValueTest, EveryValueOfEveryTypeSavesAndOpensAgain)
{
    QuartzComponent* c = addComponent(QStringLiteral("All values"));
    std::vector<std::pair<QString, Sample>> written;
    int n = 0;
    for (const Sample& s : samples()) {
        const QString key = QStringLiteral("a%1").arg(n++);
        Attribute* a = addAttribute(c, key, s.type, s.value);
        a->setLabel(QString::fromLatin1(s.name));
        written.emplace_back(key, s);
    }
    // Keyframe tables of the animating types, with a missing value in them.
    Attribute* numbers = addAttribute(c, QStringLiteral("numbers"), kTypeNumber, 0.0f);
    numbers->addTimepoint(0, std::numeric_limits<float>::quiet_NaN());
    numbers->addTimepoint(1, QVariant());
    numbers->addTimepoint(2.5, 7.0f);
    Attribute* texts = addAttribute(c, QStringLiteral("texts"), kTypeString, QString());
    texts->addTimepoint(0, QString(QLatin1String("")));
    texts->addTimepoint(3, QStringLiteral("x\x02y"));
    Attribute* colours = addAttribute(c, QStringLiteral("colours"), kTypeColor, QColor(Qt::red));
    colours->addTimepoint(0, QColor(Qt::transparent));
    colours->addTimepoint(4, QColor::fromRgbF(2.0f, 0.5f, 0.5f));

    const LoadedStore loaded = StoreFile::read(StoreFile::write(store));
    ASSERT_TRUE(loaded) << loaded.error.toStdString();
    QuartzComponent* back = loaded.composition->componentArray().front();
    for (const auto& [key, sample] : written) {
        const Attribute* a = back->attributeForKey(key);
        ASSERT_NE(a, nullptr);
        expectSameValue(sample.value, a->currentValue(), QStringLiteral("type %1, %2").arg(sample.type).arg(QLatin1String(sample.name)).toStdString());
    }
    for (const char* key : {"numbers", "texts", "colours"}) {
        const Attribute* original = c->attributeForKey(QLatin1String(key));
        const Attribute* copy = back->attributeForKey(QLatin1String(key));
        ASSERT_EQ(copy->values().keys(), original->values().keys()) << key;
        for (float t : original->values().keys())
            expectSameValue(original->values().value(t), copy->values().value(t), std::string(key) + " at " + std::to_string(t));
    }
    // A second round trip writes what the first one read: nothing drifts.
    EXPECT_EQ(StoreFile::write(*loaded.store), StoreFile::write(*StoreFile::read(StoreFile::write(*loaded.store)).store));
}

TEST_F(StoreEveryValueTest, AVideoInputWithoutAPosterIsNoValueAndTheDocumentOpens)
{
    QuartzComponent* c = addComponent(QStringLiteral("Camera"));
    const QVariantMap port{{PortInfoKeys::key, QStringLiteral("videoInput")},
                           {PortInfoKeys::name, QStringLiteral("Video")},
                           {PortInfoKeys::type, QStringLiteral("QCPortTypeImage")}};
    Attribute* video = Attribute::createFromPort(&store, port, QImage());
    video->setToOne(QStringLiteral("component"), c);
    EXPECT_EQ(video->type(), kTypeVideoInput);
    EXPECT_FALSE(video->currentValue().isValid());

    const LoadedStore loaded = StoreFile::read(StoreFile::write(store));
    ASSERT_TRUE(loaded) << loaded.error.toStdString();
    EXPECT_FALSE(loaded.composition->componentArray().front()->attributeForKey(QStringLiteral("videoInput"))->currentValue().isValid());
}

TEST_F(StoreEveryValueTest, AnEmptyImageWrittenByEarlierVersionsReadsAsNoValue)
{
    QuartzComponent* c = addComponent(QStringLiteral("Camera"));
    addAttribute(c, QStringLiteral("videoInput"), kTypeVideoInput, QStringLiteral("placeholder"));
    QByteArray bytes = StoreFile::write(store);
    const qsizetype at = bytes.indexOf("placeholder");
    ASSERT_GT(at, 0);
    const qsizetype open = bytes.lastIndexOf("<value", at);
    bytes.replace(open, at + 11 - open, "<value time=\"-1e+06\" type=\"image\">");
    const LoadedStore loaded = StoreFile::read(bytes);
    ASSERT_TRUE(loaded) << loaded.error.toStdString();
    EXPECT_FALSE(loaded.composition->componentArray().front()->attributeForKey(QStringLiteral("videoInput"))->currentValue().isValid());
}
