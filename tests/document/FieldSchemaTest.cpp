// The operator's fields as a Graphics Data Definition: one property per
// attribute the operator may change, of the right GDD type and with the
// value at the poster frame; valid against the published GDD meta-schema,
// checked by a real JSON Schema validator.

#include "document/CompositionDocument.h"
#include "document/FieldSchema.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/StandardComponents.h"
#include "model/VideoResolution.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace model;

namespace {

class FieldSchemaTest : public ::testing::Test {
protected:
    FieldSchemaTest()
    {
        document = document::CompositionDocument::emptyDocumentWithResolution(VideoResolution(QStringLiteral("1080i25 RGBA")));
        Composition& c = *document->composition();
        name = c.addComponenWithQuartzCompositionFile(StandardComponents::pathForComponent(QStringLiteral("Text")));
        bar = c.addComponenWithQuartzCompositionFile(StandardComponents::pathForComponent(QStringLiteral("Box")));
        name->setTitle(QStringLiteral("Name"));
        bar->setTitle(QStringLiteral("Bar"));
        for (const char* key : {"Text", "Color", "Alignment", "Text_Font_Name"}) allow(name, key);
        allow(bar, "Border_Width");
        add(bar, "Show_Outline", kTypeBoolean, true);
        add(bar, "Count", kTypeIndex, 3);
        add(bar, "Logo_File", kTypeFilePath, QStringLiteral("logos/channel.png"));
        add(bar, "Notes_File", kTypeFilePath, QStringLiteral("notes.txt"));
        add(bar, "Body_RTF", kTypeStyledText, QStringLiteral("{\\rtf1 Hello}"));
        name->setValueForKey(QStringLiteral("Text"), QStringLiteral("Ada Lovelace"));
        name->setValueForKey(QStringLiteral("Color"), QColor(255, 128, 0, 200));
        c.addStopFrame(2.0);
        c.addStopFrame(5.0);
    }
    static void allow(QuartzComponent* c, const char* key)
    {
        Attribute* a = c->attributeForKey(QLatin1String(key));
        ASSERT_NE(a, nullptr) << key;
        a->setPermissionToChange(true);
    }
    void add(QuartzComponent* c, const char* key, int type, const QVariant& value)
    {
        Attribute* a = Attribute::create(&document->store(), QLatin1String(key), QLatin1String(key), type, value);
        a->setToOne(QStringLiteral("component"), c);
        a->setPermissionToChange(true);
    }
    QJsonObject property(const QJsonObject& schema, const char* key) const
    {
        return schema.value(QLatin1String("properties")).toObject().value(QLatin1String(key)).toObject();
    }

    std::unique_ptr<document::CompositionDocument> document;
    QuartzComponent* name = nullptr;
    QuartzComponent* bar = nullptr;
};

TEST_F(FieldSchemaTest, EveryPermittedFieldHasItsGddTypeAndDefault)
{
    const QJsonObject schema = document::fieldSchema(*document->composition(), QStringLiteral("Strap"));
    EXPECT_EQ(schema.value(QLatin1String("title")).toString(), QStringLiteral("Strap"));
    EXPECT_EQ(schema.value(QLatin1String("type")).toString(), QStringLiteral("object"));

    const QJsonObject text = property(schema, "Name_Text");
    EXPECT_EQ(text.value(QLatin1String("gddType")).toString(), QStringLiteral("single-line"));
    EXPECT_EQ(text.value(QLatin1String("v_spx")).toString(), QStringLiteral("textfield"));
    EXPECT_EQ(text.value(QLatin1String("default")).toString(), QStringLiteral("Ada Lovelace"));
    EXPECT_EQ(text.value(QLatin1String("label")).toString(), QStringLiteral("Name: Text"));

    const QJsonObject colour = property(schema, "Name_Color");
    EXPECT_EQ(colour.value(QLatin1String("gddType")).toString(), QStringLiteral("color-rrggbbaa"));
    EXPECT_EQ(colour.value(QLatin1String("pattern")).toString(), QStringLiteral("^#[0-9a-f]{8}$"));
    EXPECT_EQ(colour.value(QLatin1String("default")).toString(), QStringLiteral("#ff8000c8"));

    const QJsonObject alignment = property(schema, "Name_Alignment");
    EXPECT_EQ(alignment.value(QLatin1String("gddType")).toString(), QStringLiteral("select"));
    EXPECT_EQ(alignment.value(QLatin1String("type")).toString(), QStringLiteral("integer"));
    EXPECT_EQ(alignment.value(QLatin1String("enum")).toArray(), (QJsonArray{0, 1, 2}));
    EXPECT_EQ(alignment.value(QLatin1String("gddOptions")).toObject().value(QLatin1String("labels")).toObject().value(QLatin1String("1")).toString(),
              QStringLiteral("Center"));
    EXPECT_EQ(alignment.value(QLatin1String("v_spx")).toString(), QStringLiteral("dropdown"));

    const QJsonObject width = property(schema, "Bar_Border_Width");
    EXPECT_EQ(width.value(QLatin1String("type")).toString(), QStringLiteral("number"));
    EXPECT_EQ(width.value(QLatin1String("minimum")).toDouble(-1), 0.0) << "the port's range";
    EXPECT_FALSE(width.contains(QLatin1String("maximum")));

    EXPECT_EQ(property(schema, "Bar_Show_Outline").value(QLatin1String("type")).toString(), QStringLiteral("boolean"));
    EXPECT_EQ(property(schema, "Bar_Show_Outline").value(QLatin1String("v_spx")).toString(), QStringLiteral("checkbox"));
    EXPECT_EQ(property(schema, "Bar_Count").value(QLatin1String("type")).toString(), QStringLiteral("integer"));
    EXPECT_EQ(property(schema, "Bar_Count").value(QLatin1String("default")).toInt(), 3);
    EXPECT_EQ(property(schema, "Bar_Logo_File").value(QLatin1String("gddType")).toString(), QStringLiteral("file-path/image-path"));
    EXPECT_TRUE(property(schema, "Bar_Logo_File").value(QLatin1String("gddOptions")).toObject().value(QLatin1String("extensions")).toArray().contains(QStringLiteral("png")));
    EXPECT_EQ(property(schema, "Bar_Notes_File").value(QLatin1String("gddType")).toString(), QStringLiteral("file-path"));
    EXPECT_EQ(property(schema, "Bar_Body_RTF").value(QLatin1String("gddType")).toString(), QStringLiteral("multi-line"));
    EXPECT_EQ(property(schema, "Bar_Body_RTF").value(QLatin1String("v_spx")).toString(), QStringLiteral("textarea"));

    // Locked fields are not the operator's; fonts are kept aside.
    EXPECT_FALSE(schema.value(QLatin1String("properties")).toObject().contains(QLatin1String("Bar_Color")));
    EXPECT_FALSE(schema.value(QLatin1String("properties")).toObject().contains(QLatin1String("Name_Text_Font_Name")));
    EXPECT_TRUE(schema.value(QLatin1String("v_velloran")).toObject().value(QLatin1String("fonts")).toObject().contains(QLatin1String("Name_Text_Font_Name")));

    const QJsonObject playout = schema.value(QLatin1String("gddPlayoutOptions")).toObject();
    EXPECT_EQ(playout.value(QLatin1String("client")).toObject().value(QLatin1String("steps")).toInt(), 2) << "a step per stop frame";
    const QJsonObject resolution = playout.value(QLatin1String("render")).toObject().value(QLatin1String("resolutions")).toArray()[0].toObject();
    EXPECT_EQ(resolution.value(QLatin1String("width")).toInt(), 1920);
    EXPECT_EQ(resolution.value(QLatin1String("framerate")).toDouble(), 25.0);
}

TEST_F(FieldSchemaTest, DefaultsAreTheValuesAtThePosterFrameAndKeysStayUnique)
{
    Attribute* text = name->attributeForKey(QStringLiteral("Text"));
    Attribute* border = bar->attributeForKey(QStringLiteral("Border_Width"));
    border->addTimepoint(0, 2.0f);
    border->addTimepoint(4, 10.0f);
    border->setPermissionToChange(true);  // animated values are locked; opened again for the test
    document->composition()->setPosterFrameTimepoint(1.0);
    QuartzComponent* twin = document->composition()->addComponenWithQuartzCompositionFile(StandardComponents::pathForComponent(QStringLiteral("Text")));
    twin->setTitle(QStringLiteral("Name"));
    twin->attributeForKey(QStringLiteral("Text"))->setPermissionToChange(true);
    const QJsonObject schema = document::fieldSchema(*document->composition(), QStringLiteral("Strap"));
    EXPECT_EQ(property(schema, "Bar_Border_Width").value(QLatin1String("default")).toDouble(), 4.0);
    ASSERT_NE(text, nullptr);
    EXPECT_TRUE(schema.value(QLatin1String("properties")).toObject().contains(QLatin1String("Name_Text_1"))) << "a second \"Name\" gets a number";
}

TEST_F(FieldSchemaTest, TheSchemaIsValidGddAndEverySaveWritesIt)
{
    QTemporaryDir dir;
    const QString package = dir.filePath(QStringLiteral("Strap.composition"));
    QString error;
    ASSERT_TRUE(document->saveAs(package, &error)) << error.toStdString();
    const QString written = QDir(package).filePath(document::fieldSchemaFileName());
    ASSERT_TRUE(QFile::exists(written));

    const QString validator = QStringLiteral(VELLORAN_SOURCE_DIR "/tests/schema/validate_gdd.py");
    QProcess check;
    check.start(QStringLiteral("/usr/bin/python3"), {validator, written});
    ASSERT_TRUE(check.waitForFinished(60000));
    EXPECT_EQ(check.exitCode(), 0) << check.readAllStandardError().toStdString();

    // The validator itself catches a broken schema.
    QJsonObject broken = QJsonDocument::fromJson([&] {
        QFile f(written);
        f.open(QIODevice::ReadOnly);
        return f.readAll();
    }()).object();
    QJsonObject properties = broken.value(QLatin1String("properties")).toObject();
    QJsonObject colour = properties.value(QLatin1String("Name_Color")).toObject();
    colour.remove(QLatin1String("pattern"));
    properties.insert(QLatin1String("Name_Color"), colour);
    broken.insert(QLatin1String("properties"), properties);
    const QString brokenPath = dir.filePath(QStringLiteral("broken.json"));
    QFile out(brokenPath);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly));
    out.write(QJsonDocument(broken).toJson());
    out.close();
    check.start(QStringLiteral("/usr/bin/python3"), {validator, brokenPath});
    ASSERT_TRUE(check.waitForFinished(60000));
    EXPECT_EQ(check.exitCode(), 1) << "a colour without its pattern is not valid GDD";
}

}  // namespace
