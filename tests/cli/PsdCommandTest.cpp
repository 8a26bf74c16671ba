// velloran-cli psd layers: JSON in canvas coordinates and the exit codes.
#include "../support/CliRunner.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace {

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

}  // namespace
