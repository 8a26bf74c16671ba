#include "plist/PropertyList.h"
#include "quartz/QuartzComposition.h"

#include <QColor>
#include <QDir>
#include <QImage>
#include <QTemporaryDir>

#include "../support/PlistPrinting.h"

#include <gtest/gtest.h>

using plist::Value;

namespace {

Value readBack(const QByteArray& bytes)
{
    std::string error;
    auto v = plist::readXml(std::string_view(bytes.constData(), std::size_t(bytes.size())), &error);
    EXPECT_TRUE(v) << error;
    return v.value_or(Value());
}

// What the file model promises to keep: every node as read, with
// "connections" and "publishedInputPorts" added where a state lacked them.
Value normalisedNode(Value node)
{
    if (!node.isDictionary()) return node;
    Value state = node.value("state");
    if (!state.isDictionary()) state = Value::emptyDictionary();
    if (!state.value("connections").isDictionary()) state.set("connections", Value::emptyDictionary());
    if (!state.value("publishedInputPorts").isArray()) state.set("publishedInputPorts", Value::emptyArray());
    plist::Array children;
    for (const Value& child : state.value("nodes").array()) children.push_back(normalisedNode(child));
    state.set("nodes", Value(std::move(children)));
    node.set("state", std::move(state));
    return node;
}

}  // namespace

TEST(QuartzComposition, NewCompositionWritesTheDefaultRootPatch)
{
    QuartzComposition composition;
    const auto data = composition.fileDataByRemovingPixelFormatSetting(false);
    ASSERT_TRUE(data);
    const Value root = readBack(*data);
    Value expectedState = Value::emptyDictionary();
    expectedState.set("connections", Value::emptyDictionary());
    expectedState.set("publishedInputPorts", Value::emptyArray());
    expectedState.set("nodes", Value::emptyArray());
    Value expected = Value::emptyDictionary();
    expected.set("class", "QCPatch");
    expected.set("state", expectedState);
    EXPECT_EQ(root.value("rootPatch"), expected);
    EXPECT_EQ(root.size(), 1u);
    EXPECT_EQ(composition.rootPatch().composition(), &composition);
    EXPECT_TRUE(composition.rootPatch().isRootPatch());
}

TEST(QuartzComposition, ColoursBecomeOpaqueSinglePrecisionDictionaries)
{
    const Value colour = QuartzComposition::quartzValueForObject(QColor::fromRgbF(0.25f, 0.5f, 1.0f, 0.5f));
    ASSERT_TRUE(colour.isDictionary());
    EXPECT_EQ(colour.value("alpha"), Value(1.0)) << "the colour's own alpha is dropped";
    EXPECT_TRUE(colour.value("alpha").isSinglePrecision());
    // QColor keeps 16 bits a channel.
    EXPECT_NEAR(colour.value("red").toDouble(), 0.25, 1e-4);
    EXPECT_NEAR(colour.value("green").toDouble(), 0.5, 1e-4);
    EXPECT_NEAR(colour.value("blue").toDouble(), 1.0, 1e-4);
    EXPECT_EQ(colour.size(), 4u);
}

TEST(QuartzComposition, ImagesBecomeTiffAndOtherValuesPassThrough)
{
    QImage image(3, 2, QImage::Format_ARGB32);
    image.fill(Qt::red);
    const Value tiff = QuartzComposition::quartzValueForObject(image);
    ASSERT_TRUE(tiff.isData());
    const std::string& bytes = tiff.dataBytes();
    ASSERT_GE(bytes.size(), 4u);
    EXPECT_TRUE(bytes.compare(0, 4, "II*\0", 4) == 0 || bytes.compare(0, 4, "MM\0*", 4) == 0);
    QImage decoded;
    EXPECT_TRUE(decoded.loadFromData(reinterpret_cast<const uchar*>(bytes.data()), int(bytes.size()), "TIFF"));
    EXPECT_EQ(decoded.size(), QSize(3, 2));

    EXPECT_EQ(QuartzComposition::quartzValueForObject(QStringLiteral("text")), Value(std::string("text")));
    EXPECT_EQ(QuartzComposition::quartzValueForObject(true), Value(true));
    EXPECT_EQ(QuartzComposition::quartzValueForObject(42), Value(42));
    EXPECT_EQ(QuartzComposition::quartzValueForObject(1.5), Value(1.5));
    EXPECT_EQ(QuartzComposition::quartzValueForObject(QVariantMap{{QStringLiteral("k"), 1}}),
              Value(plist::Dictionary{{"k", Value(1)}}));
}

TEST(QuartzComposition, ViewerSizeStoresTheTitleBarHeight)
{
    Value dictionary = Value::emptyDictionary();
    dictionary.set("editorViewerWindow", "10 20 640 480");
    QuartzComposition composition(dictionary);
    EXPECT_EQ(composition.viewerSize(), QSizeF(640, 480));
    composition.setViewerSize(QSizeF(1920, 1080));
    EXPECT_EQ(composition.dictionary().value("editorViewerWindow").string(), "10 20 1920.000000 1126.000000");
    EXPECT_EQ(composition.viewerSize(), QSizeF(1920, 1126));

    QuartzComposition without;
    without.setViewerSize(QSizeF(1, 1));
    EXPECT_FALSE(without.dictionary().contains("editorViewerWindow")) << "absent key: nothing stored";
    EXPECT_EQ(without.viewerSize(), QSizeF(0, 0));

    Value shortValue = Value::emptyDictionary();
    shortValue.set("editorViewerWindow", "1 2 3");
    QuartzComposition tooShort(shortValue);
    EXPECT_EQ(tooShort.viewerSize(), QSizeF(0, 0));
    tooShort.setViewerSize(QSizeF(5, 5));
    EXPECT_EQ(tooShort.dictionary().value("editorViewerWindow").string(), "1 2 3");
}

TEST(QuartzComposition, InputParametersAndAspectRatio)
{
    QuartzComposition composition;
    EXPECT_TRUE(composition.inputParameterForKey(QStringLiteral("clear_enable")).isNull());
    composition.setInputParameter(Value(true), QStringLiteral("clear_enable"));
    composition.setInputParameter(Value(3), QStringLiteral("count"));
    EXPECT_EQ(composition.inputParameterForKey(QStringLiteral("clear_enable")), Value(true));
    EXPECT_EQ(composition.dictionary().value("inputParameters").size(), 2u);
    composition.setAspectRatio(16.0 / 9.0);
    EXPECT_TRUE(composition.dictionary().value("aspectRatio").isSinglePrecision());
}

TEST(QuartzComposition, StrippingRemovesOnlyTheOutermostPixelFormat)
{
    QuartzComposition composition;
    Value inner = Value::emptyDictionary();
    inner.set("pixelFormat", "RGBA8");
    Value state = Value::emptyDictionary();
    state.set("pixelFormat", "RGBAf");
    state.set("other", inner);
    Value listed = Value::emptyDictionary();
    listed.set("pixelFormat", "RGBA8");
    state.set("list", Value(plist::Array{listed}));
    composition.rootPatch().addPatchWithClass(QStringLiteral("QCRenderInImage"), state);

    const Value kept = readBack(*composition.fileDataByRemovingPixelFormatSetting(false));
    const Value keptState = kept.value("rootPatch").value("state").value("nodes").array()[0].value("state");
    EXPECT_TRUE(keptState.contains("pixelFormat"));

    const Value stripped = readBack(*composition.fileDataByRemovingPixelFormatSetting(true));
    const Value strippedState = stripped.value("rootPatch").value("state").value("nodes").array()[0].value("state");
    EXPECT_FALSE(strippedState.contains("pixelFormat"));
    EXPECT_TRUE(strippedState.value("other").contains("pixelFormat")) << "the inner dictionary is not visited";
    EXPECT_TRUE(strippedState.value("list").array()[0].contains("pixelFormat"));

    Value array(plist::Array{listed, Value(plist::Array{listed})});
    QuartzComposition::removePixelFormatSettingFromCollection(array);
    EXPECT_FALSE(array.array()[0].contains("pixelFormat"));
    EXPECT_FALSE(array.array()[1].array()[0].contains("pixelFormat"));
}

TEST(QuartzComposition, WritesFilesAtomicallyAndKeepsUnknownKeys)
{
    Value dictionary = Value::emptyDictionary();
    dictionary.set("frameworkVersion", "325.1");
    dictionary.set(".location", Value(plist::Array{Value(1), Value(2)}));
    QuartzComposition composition(dictionary);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out.qtz"));
    ASSERT_TRUE(composition.writeToFile(path, true));
    QString error;
    auto reread = QuartzComposition::compositionWithFile(path, &error);
    ASSERT_TRUE(reread) << error.toStdString();
    EXPECT_EQ(reread->dictionary().value(".location"), dictionary.value(".location"));
    EXPECT_EQ(reread->dictionary().value("frameworkVersion").string(), "325.1");
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("out.qtz")}) << "no temporary left behind";

    EXPECT_FALSE(composition.writeToFile(dir.filePath(QStringLiteral("missing/dir/out.qtz")), false));
}

TEST(QuartzComposition, UnreadableFilesGiveNoComposition)
{
    QString error;
    EXPECT_FALSE(QuartzComposition::compositionWithFile(QStringLiteral("/nonexistent/file.qtz"), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(QuartzComposition::compositionWithData(QByteArrayLiteral("bplist00garbage"), &error));
    EXPECT_FALSE(error.isEmpty());
    const QByteArray arrayPlist = QByteArrayLiteral("<plist version=\"1.0\"><array/></plist>");
    EXPECT_FALSE(QuartzComposition::compositionWithData(arrayPlist, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("not a dictionary")));
}

TEST(QuartzComposition, RealWorldFilesRoundTrip)
{
    const QDir corpus(QStringLiteral(VELLORAN_CORPUS_DIR));
    const QStringList files = corpus.entryList({QStringLiteral("*.qtz")}, QDir::Files);
    ASSERT_GE(files.size(), 50) << "the shared corpus of real compositions is missing";
    for (const QString& name : files) {
        SCOPED_TRACE(name.toStdString());
        std::string error;
        const auto original = plist::readFile(corpus.filePath(name).toStdString(), &error);
        ASSERT_TRUE(original) << error;
        QString loadError;
        auto composition = QuartzComposition::compositionWithFile(corpus.filePath(name), &loadError);
        ASSERT_TRUE(composition) << loadError.toStdString();
        const auto data = composition->fileDataByRemovingPixelFormatSetting(false);
        ASSERT_TRUE(data);
        const Value written = readBack(*data);
        Value expected = *original;
        expected.set("rootPatch", normalisedNode(original->value("rootPatch")));
        EXPECT_EQ(plist::firstDifference(written, expected), "");
    }
}
