#include "../support/CliRunner.h"
#include "plist/PropertyList.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& bytes)
{
    QFile file(dir.filePath(name));
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
    return file.fileName();
}

}  // namespace

TEST(PlistCommand, ConvertsBothWaysWithoutLoss)
{
    QTemporaryDir dir;
    const QString xml = writeFile(dir, QStringLiteral("in.plist"),
                                  "<plist version=\"1.0\"><dict><key>n</key><real>1.25</real>"
                                  "<key>s</key><string>caf\xC3\xA9</string></dict></plist>");
    const QString binary = dir.filePath(QStringLiteral("out.bplist"));
    CliResult r = runCli({QStringLiteral("plist"), QStringLiteral("convert"), QStringLiteral("--binary"), xml, binary});
    ASSERT_EQ(r.code, cli::kSuccess) << r.err.toStdString();
    plist::Format format;
    const auto fromBinary = plist::readFile(binary.toStdString(), nullptr, &format);
    ASSERT_TRUE(fromBinary);
    EXPECT_EQ(format, plist::Format::Binary);
    EXPECT_EQ(fromBinary->value("s").string(), "caf\xC3\xA9");

    const QString back = dir.filePath(QStringLiteral("back.plist"));
    r = runCli({QStringLiteral("plist"), QStringLiteral("convert"), QStringLiteral("--xml"), binary, back});
    ASSERT_EQ(r.code, cli::kSuccess) << r.err.toStdString();
    EXPECT_EQ(*plist::readFile(back.toStdString(), nullptr, &format), *plist::readFile(xml.toStdString()));
    EXPECT_EQ(format, plist::Format::Xml);
}

TEST(PlistCommand, ReportsBadUsageAndBadInput)
{
    EXPECT_EQ(runCli({QStringLiteral("plist")}).code, cli::kUsage);
    EXPECT_EQ(runCli({QStringLiteral("plist"), QStringLiteral("convert"), QStringLiteral("--json"), QStringLiteral("a"), QStringLiteral("b")}).code,
              cli::kUsage);
    EXPECT_EQ(runCli({QStringLiteral("frobnicate")}).code, cli::kUsage);

    QTemporaryDir dir;
    const QString broken = writeFile(dir, QStringLiteral("broken.plist"), "<plist><dict><key>a</key></plist>");
    const CliResult r = runCli({QStringLiteral("plist"), QStringLiteral("convert"), QStringLiteral("--binary"), broken,
                          dir.filePath(QStringLiteral("out"))});
    EXPECT_EQ(r.code, cli::kFailure);
    EXPECT_TRUE(r.err.contains(QStringLiteral("line 1"))) << r.err.toStdString();
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("out")))) << "nothing is written on failure";
}

TEST(PlistCommand, TheExecutablePrintsHelpAndExitCodes)
{
    QProcess process;
    process.start(QStringLiteral(VELLORAN_CLI_PATH), {QStringLiteral("--help")});
    ASSERT_TRUE(process.waitForFinished(30000));
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_TRUE(process.readAllStandardOutput().contains("plist convert --xml|--binary IN OUT"));

    process.start(QStringLiteral(VELLORAN_CLI_PATH), {QStringLiteral("plist"), QStringLiteral("convert")});
    ASSERT_TRUE(process.waitForFinished(30000));
    EXPECT_EQ(process.exitCode(), 2);
}
