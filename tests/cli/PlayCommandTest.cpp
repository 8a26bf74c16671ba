// velloran-cli play: the demo played to PNG files and a movie at a small
// size, and one line (never a crash) for every kind of bad input.

#include "../support/CliRunner.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString demo() { return QStringLiteral(VELLORAN_SOURCE_DIR "/resources/demo/Demo.composition"); }

CliResult play(QStringList args)
{
    args.prepend(QStringLiteral("play"));
    return runCli(args);
}

}  // namespace

TEST(PlayCommand, PlaysTheDemoIntoPngFilesWithASummary)
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("frames"));
    const CliResult r = play({demo(), "--png", folder, "--to", "1", "--size", "192x108"});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    const QJsonObject summary = QJsonDocument::fromJson(r.out.toUtf8()).object();
    EXPECT_EQ(summary.value("frames").toInt(), 25);
    EXPECT_EQ(summary.value("frameRate").toDouble(), 25);
    EXPECT_EQ(summary.value("fieldOrder").toString(), QStringLiteral("upper"));
    EXPECT_EQ(summary.value("width").toInt(), 192);
    EXPECT_EQ(QDir(folder).entryList({QStringLiteral("*.png")}).size(), 25);
    const QImage frame(QDir(folder).filePath(QStringLiteral("frame-00024.png")));
    EXPECT_EQ(frame.size(), QSize(192, 108));
    EXPECT_EQ(frame.pixelColor(96, 50).alpha(), 0) << "keyed: the demo's background is not played";

    const QString withBackground = dir.filePath(QStringLiteral("background"));
    ASSERT_EQ(play({demo(), "--png", withBackground, "--from", "0.96", "--to", "1", "--size", "192x108", "--background"}).code, 0);
    const QImage opaque(QDir(withBackground).filePath(QStringLiteral("frame-00000.png")));
    EXPECT_EQ(opaque.pixelColor(96, 50).alpha(), 255);
}

TEST(PlayCommand, WritesAMovie)
{
    QTemporaryDir dir;
    const QString movie = dir.filePath(QStringLiteral("demo.mov"));
    const CliResult r = play({demo(), "--video", movie, "--codec", "animation", "--to", "0.4", "--size", "96x54"});
    ASSERT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(r.out.toUtf8()).object().value("frames").toInt(), 10);
    EXPECT_GT(QFile(movie).size(), 0);
}

TEST(PlayCommand, BadInputGetsOneLine)
{
    QTemporaryDir dir;
    const QString out = dir.filePath(QStringLiteral("out"));
    const QStringList usage[] = {
        {},
        {demo()},
        {demo(), "--png", out, "--video", out + ".mov"},
        {demo(), "--png", out, "--to", "0"},
        {demo(), "--png", out, "--from", "2", "--to", "1"},
        {demo(), "--png", out, "--from", "-1"},
        {demo(), "--png", out, "--trigger-at", "soon"},
        {demo(), "--video", out, "--codec", "h264"},
        {demo(), "--png", out, "--size", "0x10"},
        {demo(), "--png"},
        {demo(), demo(), "--png", out},
    };
    for (const QStringList& args : usage) {
        const CliResult r = play(args);
        EXPECT_EQ(r.code, 2) << args.join(' ').toStdString();
        EXPECT_TRUE(r.err.startsWith(QStringLiteral("velloran-cli play: "))) << r.err.toStdString();
    }

    const CliResult missing = play({dir.filePath(QStringLiteral("none.composition")), "--png", out});
    EXPECT_EQ(missing.code, 1);
    EXPECT_EQ(missing.err.count('\n'), 1) << missing.err.toStdString();

    QFile blocker(dir.filePath(QStringLiteral("file")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    const CliResult unwritable = play({demo(), "--png", dir.filePath(QStringLiteral("file/frames")), "--to", "0.1"});
    EXPECT_EQ(unwritable.code, 1);
    const QString movie = dir.filePath(QStringLiteral("no/such/folder/out.mov"));
    const CliResult noFolder = play({demo(), "--video", movie, "--to", "0.1"});
    EXPECT_EQ(noFolder.code, 1);
    EXPECT_FALSE(QFile::exists(movie));
}
