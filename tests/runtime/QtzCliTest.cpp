// velloran-cli qtz inputs|check and render, run in-process.

#include "CompositionBuilder.h"

#include "../support/CliRunner.h"
#include "plist/PropertyList.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using test::Node;

namespace {

class QtzCli : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        Node colorSplitter("QCSplitter", "Splitter_2");
        colorSplitter.state("portClass", "QCColorPort").custom("input", test::colorValue(1, 0, 0, 0.5));
        Node indexSplitter("QCSplitter", "Splitter_1");
        plist::Array labels{plist::Value("One"), plist::Value("Two")};
        indexSplitter.state("portClass", "QCIndexPort").state("indexLabels", plist::Value(labels))
            .state("inputMin", 0.0).state("inputMax", 1.0).custom("input", 1);
        Node r = test::root();
        r.child(Node("QCClear", "Clear_1")).child(indexSplitter).child(colorSplitter);
        r.connect("Splitter_2", "output", "Clear_1", "inputColor");
        r.publishInput("Choice", "Splitter_1", "input").publishInput("Background", "Splitter_2", "input");
        plist::Dictionary label;
        label["name"] = "Background Colour";
        plist::Dictionary attributes;
        attributes["Background"] = plist::Value(label);
        plist::Dictionary extras;
        extras["portAttributes"] = plist::Value(attributes);
        const auto bytes = plist::writeBinary(test::document(r, extras));
        ASSERT_TRUE(bytes);
        file = dir.filePath("clear.qtz");
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes->data(), qint64(bytes->size()));
    }
    QTemporaryDir dir;
    QString file;
};

TEST_F(QtzCli, InputsListsKeysNamesTypesValuesAndMenus)
{
    const CliResult run = runCli({"qtz", "inputs", file});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    const QJsonArray inputs = QJsonDocument::fromJson(run.out.toUtf8()).array();
    ASSERT_EQ(inputs.size(), 2);
    const QJsonObject choice = inputs[0].toObject();
    EXPECT_EQ(choice["key"].toString(), "Choice");
    EXPECT_EQ(choice["name"].toString(), "Choice");
    EXPECT_EQ(choice["type"].toString(), "QCPortTypeIndex");
    EXPECT_EQ(choice["value"].toInt(), 1);
    EXPECT_EQ(choice["menuItems"].toArray(), QJsonArray({"One", "Two"}));
    EXPECT_EQ(choice["min"].toDouble(), 0.0);
    EXPECT_EQ(choice["max"].toDouble(), 1.0);
    const QJsonObject background = inputs[1].toObject();
    EXPECT_EQ(background["name"].toString(), "Background Colour");
    EXPECT_EQ(background["type"].toString(), "QCPortTypeColor");
    EXPECT_EQ(background["value"].toString(), "#FF000080");
    EXPECT_FALSE(background.contains("menuItems"));
    EXPECT_FALSE(background.contains("min"));
}

TEST_F(QtzCli, CheckReportsClassesAndFailsOnUnreadableFiles)
{
    CliResult run = runCli({"qtz", "check", file});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    QJsonObject report = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_TRUE(report["loadable"].toBool());
    EXPECT_EQ(report["patches"].toObject()["QCSplitter"].toInt(), 2);
    EXPECT_TRUE(report["unsupported"].toArray().isEmpty());

    const QString garbage = dir.filePath("garbage.qtz");
    QFile f(garbage);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("bplist00 this is not a property list");
    f.close();
    run = runCli({"qtz", "check", garbage});
    EXPECT_EQ(run.code, 1);
    report = QJsonDocument::fromJson(run.out.toUtf8()).object();
    EXPECT_FALSE(report["loadable"].toBool());
    EXPECT_TRUE(run.err.contains("cannot load")) << run.err.toStdString();

    EXPECT_EQ(runCli({"qtz", "inputs", garbage}).code, 1);
    EXPECT_EQ(runCli({"qtz", "frobnicate", file}).code, 2);
    EXPECT_EQ(runCli({"qtz", "inputs"}).code, 2);
}

TEST_F(QtzCli, RenderWritesAFrameWithInputsApplied)
{
    const QString png = dir.filePath("frame.png");
    const CliResult run = runCli({"render", file, "--time", "1.5", "--size", "20x10", "--input", "Background=#00FF00", "-o", png});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    const QImage image(png);
    ASSERT_EQ(image.size(), QSize(20, 10));
    EXPECT_EQ(image.pixel(3, 3), qRgb(0, 255, 0));
}

TEST_F(QtzCli, RenderRejectsBadRequests)
{
    const QString png = dir.filePath("frame.png");
    EXPECT_EQ(runCli({"render", file, "-o", png}).code, 2);  // no time
    EXPECT_EQ(runCli({"render", file, "--time", "x", "-o", png}).code, 2);
    EXPECT_EQ(runCli({"render", file, "--time", "0", "--size", "0x5", "-o", png}).code, 2);
    EXPECT_EQ(runCli({"render", file, "--time", "0", "--input", "novalue", "-o", png}).code, 2);
    CliResult run = runCli({"render", file, "--time", "0", "--input", "Nope=1", "-o", png});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(run.err.contains("has no input 'Nope'")) << run.err.toStdString();
    run = runCli({"render", file, "--time", "0", "--input", "Background=red", "-o", png});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(run.err.contains("#RRGGBB")) << run.err.toStdString();
    run = runCli({"render", "doc.composition", "--time", "0", "-o", png});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(run.err.contains("cannot open doc.composition")) << run.err.toStdString();
    EXPECT_EQ(runCli({"render", dir.filePath("missing.qtz"), "--time", "0", "-o", png}).code, 1);
}

}  // namespace
