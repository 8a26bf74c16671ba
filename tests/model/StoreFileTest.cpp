#include "ModelFixture.h"

#include "model/RichFontValue.h"
#include "model/Ruler.h"
#include "model/StopFrame.h"
#include "model/StoreFile.h"
#include "model/StoreValueCodec.h"

#include <QFont>
#include <QImage>
#include <QTemporaryDir>

using namespace model;

class StoreFileTest : public ModelFixture {
protected:
    LoadedStore roundTrip()
    {
        const QByteArray bytes = StoreFile::write(store);
        LoadedStore loaded = StoreFile::read(bytes);
        EXPECT_TRUE(loaded) << loaded.error.toStdString();
        return loaded;
    }
    static QuartzComponent* componentTitled(Composition* c, const QString& title)
    {
        for (QuartzComponent* component : c->componentArray())
            if (component->title() == title) return component;
        return nullptr;
    }
};

TEST_F(StoreFileTest, EveryValueKindSurvivesARoundTrip)
{
    composition->setDuration(12.5);
    composition->setBackgroundColor(QColor::fromRgbF(0.1f, 0.2f, 0.3f, 0.4f));
    QImage background(4, 3, QImage::Format_ARGB32);
    background.fill(QColor(10, 20, 30, 40));
    composition->setBackgroundImage(background);
    composition->setBackgroundMode(kBackgroundImage);
    composition->setBroadcastMode(QStringLiteral("720p50 RGBA"));
    composition->addStopFrame(1.5, QStringLiteral("Intro"));
    composition->addRulerAtPosition(300, true);

    QuartzComponent* c = addComponent(QStringLiteral("Lower third"), QRectF(10.25, 20, 300, 80));
    c->setQuartzCompositionData(QByteArray("\0\x01\x02 binary", 10));
    c->setStartTime(1);
    c->setEndTime(7.5);
    addAttribute(c, QStringLiteral("text"), kTypeString, QStringLiteral("Grüße & <tags>"));
    addAttribute(c, QStringLiteral("colour"), kTypeColor, QColor(255, 128, 0, 200));
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(31.5);
    addAttribute(c, QStringLiteral("Title_Font_Name"), kTypeFont, font);
    addAttribute(c, QStringLiteral("styled"), kTypeStyledText, QStringLiteral("{\\rtf1\\ansi hello}"));
    addAttribute(c, QStringLiteral("image"), kTypeImage, background);
    const QVariantMap ports{{QStringLiteral("A_Rich_Font_Name"), QStringLiteral("DejaVu Serif")},
                            {QStringLiteral("A_Rich_Font_Color"), QColor(Qt::red)}};
    addAttribute(c, QStringLiteral("A_Rich_Font_Name"), kTypeRichFont,
                 QVariant::fromValue(RichFontValue(QStringLiteral("A_Rich_Font_Name"), [&](const QString& k) { return ports.value(k); })));
    Attribute* animated = addAttribute(c, QStringLiteral("size"), kTypeNumber, 1.0f);
    animated->addTimepoint(0.1, 3.0f);
    animated->addTimepoint(2.7, 9.0f);
    Attribute* menu = addAttribute(c, QStringLiteral("mode"), kTypeIndexMenu, 1);
    menu->setPossibleValues({QStringLiteral("One"), QStringLiteral("Two")});

    LoadedStore loaded = roundTrip();
    ASSERT_TRUE(loaded);
    Composition* back = loaded.composition;
    EXPECT_EQ(back->duration(), 12.5);
    EXPECT_EQ(back->backgroundColor(), composition->backgroundColor());
    // Images are stored premultiplied, as they are drawn and exported.
    const auto premultiplied = [](const QImage& i) { return i.convertToFormat(QImage::Format_ARGB32_Premultiplied); };
    EXPECT_EQ(back->backgroundImage(), premultiplied(background));
    EXPECT_EQ(back->videoResolution().compositionWidth(), 1280);
    EXPECT_EQ(back->stopFrames().size(), 1u);
    EXPECT_EQ(back->stopFrames()[0]->triggerInformation(), QStringLiteral("Intro"));
    EXPECT_EQ(back->rulers()[0]->position(), 300.0);

    QuartzComponent* c2 = componentTitled(back, QStringLiteral("Lower third"));
    ASSERT_NE(c2, nullptr);
    EXPECT_EQ(c2->quartzCompositionData(), c->quartzCompositionData());
    EXPECT_EQ(c2->drawingFrame(), c->drawingFrame());
    EXPECT_EQ(c2->attributes().size(), c->attributes().size());
    for (Attribute* original : c->attributes()) {
        Attribute* copy = c2->attributeForKey(original->key());
        ASSERT_NE(copy, nullptr) << original->key().toStdString();
        EXPECT_EQ(copy->type(), original->type());
        EXPECT_EQ(copy->animateable(), original->animateable());
        EXPECT_EQ(copy->possibleValues(), original->possibleValues());
        const KeyframeValues a = original->values(), b = copy->values();
        ASSERT_EQ(a.keys(), b.keys()) << original->key().toStdString() << ": keyframe times are exact";
        for (float key : a.keys()) {
            if (a.value(key).metaType().id() == QMetaType::QImage)
                EXPECT_EQ(b.value(key).value<QImage>(), premultiplied(a.value(key).value<QImage>()));
            else if (a.value(key).metaType().id() == QMetaType::QFont)
                EXPECT_EQ(b.value(key).value<QFont>().family(), a.value(key).value<QFont>().family());
            else
                EXPECT_EQ(b.value(key), a.value(key)) << original->key().toStdString();
        }
    }
    EXPECT_EQ(c2->attributeForKey(QStringLiteral("Title_Font_Name"))->currentValue().value<QFont>().pointSizeF(), 31.5);
    EXPECT_EQ(c2->attributeForKey(QStringLiteral("text"))->category(), QString()) << "the store keeps no category";
}

TEST_F(StoreFileTest, WritingIsAtomicAndReadingTheFileWorks)
{
    addComponent(QStringLiteral("A"));
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("data.xml"));
    QString error;
    ASSERT_TRUE(StoreFile::writeToFile(store, path, &error)) << error.toStdString();
    LoadedStore loaded = StoreFile::readFile(path);
    ASSERT_TRUE(loaded) << loaded.error.toStdString();
    EXPECT_EQ(loaded.composition->componentArray().size(), 1u);
    EXPECT_FALSE(loaded.store->undoManager().canUndo()) << "loading is not an edit";
    EXPECT_FALSE(StoreFile::writeToFile(store, dir.filePath(QStringLiteral("no/such/dir/data.xml")), &error));
    EXPECT_FALSE(error.isEmpty());
}

TEST_F(StoreFileTest, DamagedFilesAreRefusedWithAReason)
{
    addComponent(QStringLiteral("A"));
    const QByteArray good = StoreFile::write(store);
    struct Case {
        QByteArray bytes;
        const char* expected;
    };
    QByteArray badValue = good;
    badValue.replace("type=\"double\">10<", "type=\"double\">ten<");
    QByteArray badEntity = good;
    badEntity.replace("entity=\"Ruler\"", "entity=\"Gadget\"").replace("entity=\"Attribute\"", "entity=\"Gadget\"");
    QByteArray dangling = good;
    dangling.replace("<relationship name=\"components\">", "<relationship name=\"components\">9999 ");
    const Case cases[] = {
        {QByteArray(), "empty"},
        {good.left(good.size() / 2), "line"},
        {QByteArray("<store version=\"7\"/>"), "newer version"},
        {QByteArray("<other/>"), "not a Velloran store"},
        {QByteArray("<store version=\"1\"/>"), "0 compositions"},
        {badValue, "invalid number"},
        {badEntity, "unknown entity"},
        {dangling, "missing object 9999"},
    };
    for (const Case& c : cases) {
        const LoadedStore loaded = StoreFile::read(c.bytes);
        EXPECT_FALSE(loaded);
        EXPECT_TRUE(loaded.error.contains(QLatin1String(c.expected))) << loaded.error.toStdString() << " / expected " << c.expected;
    }
    // Every truncation fails cleanly.
    for (int n = 0; n < good.size(); n += 97) EXPECT_FALSE(StoreFile::read(good.left(n))) << n;
}

TEST_F(StoreFileTest, UnknownStoredKeysAreReportedNotSilentlyDropped)
{
    QByteArray bytes = StoreFile::write(store);
    bytes.replace("<attribute name=\"duration\"", "<attribute name=\"futureSetting\" type=\"int\">3</attribute><attribute name=\"duration\"");
    const LoadedStore loaded = StoreFile::read(bytes);
    ASSERT_TRUE(loaded) << loaded.error.toStdString();
    ASSERT_EQ(loaded.warnings.size(), 1);
    EXPECT_TRUE(loaded.warnings[0].contains(QLatin1String("futureSetting")));
}

TEST(StoreValueCodec, EverySixteenBitColourChannelReadsBackExactly)
{
    KeyframeValues table;
    for (int k = 0; k <= 65535; ++k) {
        QColor c;
        c.setRgba64(QRgba64::fromRgba64(quint16(k), quint16(65535 - k), quint16(k / 2), quint16(k)));
        table.insert(float(k), c);
    }
    QByteArray bytes;
    QXmlStreamWriter writer(&bytes);
    storecodec::writeValue(writer, QVariant::fromValue(table));
    QXmlStreamReader reader(bytes);
    ASSERT_TRUE(reader.readNextStartElement());
    QVariant back;
    QString error;
    ASSERT_TRUE(storecodec::readValue(reader, back, error)) << error.toStdString();
    const KeyframeValues read = back.value<KeyframeValues>();
    ASSERT_EQ(read.size(), table.size());
    for (auto it = table.begin(); it != table.end(); ++it)
        ASSERT_EQ(read.value(it.key()).value<QColor>().rgba64(), it.value().value<QColor>().rgba64()) << it.key();
}

TEST_F(StoreFileTest, AFailureNamesTheObjectAndTheStoredValue)
{
    QuartzComponent* c = addComponent(QStringLiteral("Lower third"));
    addAttribute(c, QStringLiteral("Logo"), kTypeImage, QStringLiteral("IMAGE-HERE"));
    QByteArray bytes = StoreFile::write(store);
    const qsizetype at = bytes.indexOf("IMAGE-HERE");
    bytes.replace(bytes.lastIndexOf("type=\"string\"", at), 13, "type=\"image\"");
    bytes.replace("IMAGE-HERE", "bm90IGEgcGljdHVyZQ==");
    const LoadedStore loaded = StoreFile::read(bytes);
    ASSERT_FALSE(loaded);
    EXPECT_TRUE(loaded.error.contains(QLatin1String("Attribute"))) << loaded.error.toStdString();
    EXPECT_TRUE(loaded.error.contains(QLatin1String("\"Logo\""))) << loaded.error.toStdString();
    EXPECT_TRUE(loaded.error.contains(QLatin1String("stored value \"values\""))) << loaded.error.toStdString();
}

TEST_F(StoreFileTest, ARepairingReadDropsWhatItCannotReadAndSaysSo)
{
    QuartzComponent* keep = addComponent(QStringLiteral("Keep"));
    addAttribute(keep, QStringLiteral("headline"), kTypeString, QStringLiteral("Breaking"));
    addAttribute(keep, QStringLiteral("size"), kTypeNumber, 12.0f);
    addComponent(QStringLiteral("Second"));
    composition->addStopFrame(2.0, QStringLiteral("Hold"));
    const QByteArray good = StoreFile::write(store);

    QByteArray badValue = good;
    badValue.replace("Breaking", "x").replace("-1e+06 12<", "-1e+06 twelve<");
    QByteArray badObjectAndLink = good;
    badObjectAndLink.replace("entity=\"StopFrame\"", "entity=\"Gadget\"");
    badObjectAndLink.replace("<relationship name=\"components\">", "<relationship name=\"components\">777 ");
    struct Case {
        const char* what;
        QByteArray bytes;
        size_t components;
        const char* mentioned;
    };
    const Case cases[] = {
        {"a value that is not a number", badValue, 2, "invalid keyframe numbers"},
        {"an unknown entity and a dangling link", badObjectAndLink, 2, "missing object 777"},
        {"a file cut off in the middle", good.left(good.lastIndexOf("entity=\"Component\"")), 1, "dropped"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_FALSE(StoreFile::read(c.bytes)) << "a strict read refuses it";
        const LoadedStore repaired = StoreFile::read(c.bytes, StoreReadMode::DropUnreadable);
        ASSERT_TRUE(repaired) << repaired.error.toStdString();
        EXPECT_FALSE(repaired.dropped.isEmpty());
        EXPECT_TRUE(repaired.dropped.join(QLatin1Char('\n')).contains(QLatin1String(c.mentioned))) << repaired.dropped.join(QLatin1Char('\n')).toStdString();
        EXPECT_EQ(repaired.composition->componentArray().size(), c.components);
        // What was repaired saves and reads strictly again.
        EXPECT_TRUE(StoreFile::read(StoreFile::write(*repaired.store)));
    }
    const LoadedStore repaired = StoreFile::read(badValue, StoreReadMode::DropUnreadable);
    const QuartzComponent* back = componentTitled(repaired.composition, QStringLiteral("Keep"));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->attributeForKey(QStringLiteral("headline"))->currentValue(), QVariant(QStringLiteral("x")));
    EXPECT_FALSE(back->attributeForKey(QStringLiteral("size"))->currentValue().isValid()) << "the unreadable value is gone, nothing else";
    EXPECT_TRUE(StoreFile::read(good, StoreReadMode::DropUnreadable).dropped.isEmpty()) << "a sound file loses nothing";
}

TEST_F(StoreFileTest, ARepairingReadKeepsComponentsWhoseCompositionIsLost)
{
    addComponent(QStringLiteral("Orphan"));
    QByteArray bytes = StoreFile::write(store);
    bytes.replace("entity=\"Composition\"", "entity=\"Gadget\"");
    const LoadedStore repaired = StoreFile::read(bytes, StoreReadMode::DropUnreadable);
    ASSERT_TRUE(repaired) << repaired.error.toStdString();
    ASSERT_EQ(repaired.composition->componentArray().size(), 1u);
    EXPECT_EQ(repaired.composition->componentArray().front()->title(), QStringLiteral("Orphan"));
}
