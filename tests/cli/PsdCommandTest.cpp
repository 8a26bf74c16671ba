// velloran-cli psd layers and psd export: JSON in canvas coordinates, the
// layers as PNG files, and the exit codes.
#include "../psd/PsdTestBuilder.h"
#include "../support/CliRunner.h"

#include "psd/PsdDocument.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString kFixtures = QStringLiteral(VELLORAN_SOURCE_DIR "/tests/fixtures/psd/");

QJsonObject readIndex(const QString& dir)
{
    QFile f(dir + "/index.json");
    if (!f.open(QIODevice::ReadOnly)) return {};
    return QJsonDocument::fromJson(f.readAll()).object();
}

QStringList pngFiles(const QString& dir) { return QDir(dir).entryList({"*.png"}, QDir::Files, QDir::Name); }

TEST(PsdCommand, LayersPrintsCanvasCoordinatesTopmostFirst)
{
    const CliResult r = runCli({"psd", "layers", VELLORAN_SOURCE_DIR "/tests/fixtures/psd/agpsd_rgb8_rle.psd"});
    ASSERT_EQ(r.code, cli::kSuccess) << r.err.toStdString();
    const QJsonObject root = QJsonDocument::fromJson(r.out.toUtf8()).object();
    EXPECT_EQ(root["width"].toInt(), 24);
    EXPECT_EQ(root["height"].toInt(), 16);
    const QJsonArray layers = root["layers"].toArray();
    ASSERT_EQ(layers.size(), 8);
    EXPECT_EQ(layers[0]["name"].toString(), QStringLiteral("Ünïcødé ✓ 日本"));
    EXPECT_EQ(layers[7]["name"].toString(), QStringLiteral("Background"));
    const QJsonObject halfRed = layers[6].toObject();
    EXPECT_EQ(halfRed["x"].toInt(), -4);
    EXPECT_EQ(halfRed["y"].toInt(), 11);
    EXPECT_EQ(halfRed["width"].toInt(), 10);
    EXPECT_EQ(halfRed["height"].toInt(), 8);
    EXPECT_NEAR(halfRed["opacity"].toDouble(), 0.4, 0.003);
    EXPECT_TRUE(halfRed["visible"].toBool());
    EXPECT_FALSE(layers[5]["visible"].toBool());  // "Hidden"
    EXPECT_FALSE(layers[2]["visible"].toBool());  // inside a hidden group
}

TEST(PsdCommand, BadFilesFailWithOneLineAndBadUsageWithTwo)
{
    CliResult r = runCli({"psd", "layers", VELLORAN_SOURCE_DIR "/tests/fixtures/psd/make_fixtures.sh"});
    EXPECT_EQ(r.code, cli::kFailure);
    EXPECT_TRUE(r.out.isEmpty());
    EXPECT_EQ(r.err.count(QLatin1Char('\n')), 1);
    EXPECT_TRUE(r.err.contains(QStringLiteral("not a Photoshop file")));

    r = runCli({"psd", "layers", "/nonexistent.psd"});
    EXPECT_EQ(r.code, cli::kFailure);

    EXPECT_EQ(runCli({"psd"}).code, cli::kUsage);
    EXPECT_EQ(runCli({"psd", "layers"}).code, cli::kUsage);
    EXPECT_EQ(runCli({"psd", "pixels", "x.psd"}).code, cli::kUsage);
}

TEST(PsdCommand, ExportWritesEveryLayerBottomFirstWithAnIndex)
{
    for (const char* fixture : {"agpsd_rgb8_rle.psd", "agpsd_varied_rle.psd", "psdtools_varied_zippred16.psd"}) {
        QTemporaryDir tmp;
        const QString dir = tmp.filePath("out/layers");  // made, parents too
        const CliResult r = runCli({"psd", "export", kFixtures + fixture, dir});
        ASSERT_EQ(r.code, cli::kSuccess) << fixture << ": " << r.err.toStdString();

        std::string error;
        const auto doc = psd::decodeFile(kFixtures + fixture, &error);
        ASSERT_TRUE(doc) << error;
        const QJsonObject index = readIndex(dir);
        EXPECT_EQ(index["width"].toInt(), doc->width);
        EXPECT_EQ(index["height"].toInt(), doc->height);
        const QJsonArray layers = index["layers"].toArray();
        ASSERT_EQ(layers.size(), qsizetype(doc->layers.size())) << fixture;
        for (int i = 0; i < layers.size(); ++i) {
            const QJsonObject entry = layers[i].toObject();
            const psd::Layer& layer = doc->layers[doc->layers.size() - 1 - size_t(i)];  // the index is bottom first
            const std::string what = std::string(fixture) + " layer " + std::to_string(i);
            EXPECT_EQ(entry["index"].toInt(), i) << what;
            EXPECT_EQ(entry["name"].toString(), layer.name) << what;
            EXPECT_EQ(entry["x"].toInt(), layer.canvasX()) << what;
            EXPECT_EQ(entry["y"].toInt(), layer.canvasY(doc->height)) << what;
            EXPECT_EQ(entry["width"].toInt(), layer.bounds.width()) << what;
            EXPECT_EQ(entry["height"].toInt(), layer.bounds.height()) << what;
            EXPECT_DOUBLE_EQ(entry["opacity"].toDouble(), layer.opacity) << what;
            EXPECT_EQ(entry["visible"].toBool(), layer.shownInDocument()) << what;
            EXPECT_EQ(entry["blendMode"].toString(), QString::fromLatin1(layer.blendMode)) << what;
            EXPECT_EQ(entry["groupPath"].toVariant().toStringList(), layer.groupPath) << what;
            const QString file = entry["file"].toString();
            EXPECT_TRUE(file.startsWith(QStringLiteral("%1-").arg(i, 3, 10, QLatin1Char('0')))) << what;
            const QImage png = QImage(dir + "/" + file).convertToFormat(QImage::Format_RGBA8888);
            EXPECT_TRUE(png == layer.image) << what << " " << file.toStdString();
        }
        EXPECT_EQ(pngFiles(dir).size(), layers.size());
    }
}

TEST(PsdCommand, ExportedIndexPlacesLayersAsPsdLayersDoes)
{
    QTemporaryDir tmp;
    const QString psdFile = kFixtures + "agpsd_rgb8_rle.psd";
    ASSERT_EQ(runCli({"psd", "export", psdFile, tmp.path()}).code, cli::kSuccess);
    const QJsonArray exported = readIndex(tmp.path())["layers"].toArray();
    const QJsonArray listed =
        QJsonDocument::fromJson(runCli({"psd", "layers", psdFile}).out.toUtf8()).object()["layers"].toArray();
    ASSERT_EQ(exported.size(), listed.size());
    for (int i = 0; i < listed.size(); ++i) {
        const QJsonObject a = exported[exported.size() - 1 - i].toObject(), b = listed[i].toObject();
        for (const char* key : {"name", "x", "y", "width", "height", "opacity", "visible"})
            EXPECT_EQ(a[key], b[key]) << "layer " << i << " " << key;
    }
    const QJsonObject halfRed = exported[1].toObject();
    EXPECT_EQ(halfRed["file"].toString(), QStringLiteral("001-Half red.png"));
    EXPECT_EQ(halfRed["x"].toInt(), -4);
    EXPECT_EQ(halfRed["y"].toInt(), 11);
    EXPECT_EQ(exported[4].toObject()["groupPath"].toArray(), QJsonArray{"Group A"});
    EXPECT_EQ(exported[7].toObject()["file"].toString(), QStringLiteral("007-Ünïcødé ✓ 日本.png"));
}

// Layer names with what file systems refuse, an empty layer, and names that
// only the number keeps apart.
TEST(PsdCommand, ExportMakesNamesSafeAndListsEmptyLayersWithoutAFile)
{
    using namespace psdtest;
    Document d = smallRgbDocument();
    Layer base = d.layers[0];
    d.layers.clear();
    const QString names[] = {"a/b\\c", "..hidden", "ends. . ", "", "x:y*z?\"<t>|", "tab\there", "a/b\\c",
                             QString(60, QChar(0x65e5)), "a" + QString::fromUtf8("\xf0\x9f\x98\x80").repeated(30)};
    for (const QString& name : names) {
        Layer l = base;
        l.unicodeName = name;
        l.pascalName = name.isEmpty() ? QByteArray() : QByteArray("x");
        d.layers.push_back(l);
    }
    Layer empty = base;
    empty.rect = QRect(2, 2, 0, 0);
    empty.unicodeName = "Adjustment";
    for (Channel& c : empty.channels) c.samples.clear();
    d.layers.push_back(empty);

    QTemporaryDir tmp;
    const QString psdFile = tmp.filePath("names.psd");
    QFile f(psdFile);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(build(d));
    f.close();
    const QString dir = tmp.filePath("out");
    const CliResult r = runCli({"psd", "export", psdFile, dir});
    ASSERT_EQ(r.code, cli::kSuccess) << r.err.toStdString();

    const QJsonArray layers = readIndex(dir)["layers"].toArray();
    ASSERT_EQ(layers.size(), 10);
    const QString expected[] = {"000-a_b_c.png", "001-__hidden.png", "002-ends____.png", "003-layer.png",
                                "004-x_y_z___t__.png", "005-tab_here.png", "006-a_b_c.png",
                                // 100 bytes of UTF-8 at most, cut between characters, never inside a surrogate pair
                                "007-" + QString(33, QChar(0x65e5)) + ".png",
                                "008-a" + QString::fromUtf8("\xf0\x9f\x98\x80").repeated(24) + ".png"};
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(layers[i]["file"].toString(), expected[i]) << i;
        EXPECT_EQ(layers[i]["name"].toString(), names[i]) << i;
        EXPECT_TRUE(QFileInfo::exists(dir + "/" + expected[i])) << i;
    }
    EXPECT_TRUE(layers[9]["file"].isNull());
    EXPECT_EQ(layers[9]["name"].toString(), QStringLiteral("Adjustment"));
    EXPECT_EQ(pngFiles(dir).size(), 9);
}

TEST(PsdCommand, ExportReplacesEarlierFilesAndLeavesOthersAlone)
{
    QTemporaryDir tmp;
    const QString dir = tmp.path();
    for (const QString& name : {QStringLiteral("000-Background.png"), QStringLiteral("index.json"), QStringLiteral("notes.txt")}) {
        QFile f(dir + "/" + name);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("old");
    }
    ASSERT_EQ(runCli({"psd", "export", kFixtures + "agpsd_rgb8_rle.psd", dir}).code, cli::kSuccess);
    EXPECT_FALSE(QImage(dir + "/000-Background.png").isNull());
    EXPECT_EQ(readIndex(dir)["layers"].toArray().size(), 8);
    QFile notes(dir + "/notes.txt");
    ASSERT_TRUE(notes.open(QIODevice::ReadOnly));
    EXPECT_EQ(notes.readAll(), QByteArray("old"));
}

TEST(PsdCommand, ExportFailsWithOneLineForBadFilesAndFolders)
{
    QTemporaryDir tmp;
    CliResult r = runCli({"psd", "export", kFixtures + "make_fixtures.sh", tmp.filePath("out")});
    EXPECT_EQ(r.code, cli::kFailure);
    EXPECT_EQ(r.err.count(QLatin1Char('\n')), 1);
    EXPECT_TRUE(r.err.contains(QStringLiteral("not a Photoshop file")));
    EXPECT_FALSE(QFileInfo::exists(tmp.filePath("out")));  // nothing made for a file that does not decode

    QFile blocker(tmp.filePath("file"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    for (const QString& dir : {tmp.filePath("file"), tmp.filePath("file/below")}) {
        r = runCli({"psd", "export", kFixtures + "agpsd_rgb8_rle.psd", dir});
        EXPECT_EQ(r.code, cli::kFailure) << dir.toStdString();
        EXPECT_EQ(r.err.count(QLatin1Char('\n')), 1) << r.err.toStdString();
        EXPECT_TRUE(r.err.contains(dir)) << r.err.toStdString();
    }

    EXPECT_EQ(runCli({"psd", "export", kFixtures + "agpsd_rgb8_rle.psd"}).code, cli::kUsage);
    EXPECT_EQ(runCli({"psd", "export"}).code, cli::kUsage);
    EXPECT_EQ(runCli({"psd", "export", "a.psd", "dir", "extra"}).code, cli::kUsage);
}

}  // namespace
