// `velloran --screenshot`: the editor renders its window into a PNG and
// quits without saving or waiting for anybody.

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

class ScreenshotTest : public ::testing::Test {
protected:
    // Runs the editor on the offscreen platform with settings of its own.
    int run(const QStringList& arguments)
    {
        QProcess editor;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.filePath(QStringLiteral("config")));
        editor.setProcessEnvironment(environment);
        editor.start(QStringLiteral(VELLORAN_EXECUTABLE), arguments);
        if (!editor.waitForFinished(60000)) {
            editor.kill();
            editor.waitForFinished();
            ADD_FAILURE() << "the editor did not quit";
            return -1;
        }
        errors = QString::fromLocal8Bit(editor.readAllStandardError());
        return editor.exitStatus() == QProcess::NormalExit ? editor.exitCode() : -1;
    }

    QTemporaryDir dir;
    QString errors;
    const QString demo = QStringLiteral(VELLORAN_SOURCE_DIR "/resources/demo/Demo.composition");
};

TEST_F(ScreenshotTest, WritesTheWindowOfADocumentAsPNG)
{
    const QString output = dir.filePath(QStringLiteral("shot.png"));
    ASSERT_EQ(run({QStringLiteral("--screenshot"), output, QStringLiteral("--time"), QStringLiteral("3"), demo}), 0)
        << errors.toStdString();
    QImage shot;
    ASSERT_TRUE(shot.load(output, "PNG"));
    EXPECT_GT(shot.width(), 400);
    EXPECT_GT(shot.height(), 300);
    // The user's next window does not start from the screenshot's layout.
    const QSettings settings(dir.filePath(QStringLiteral("config/Velloran/Velloran.conf")), QSettings::IniFormat);
    EXPECT_FALSE(settings.contains(QStringLiteral("windowState")));
}

TEST_F(ScreenshotTest, WritesANewDocumentWithoutAFile)
{
    const QString output = dir.filePath(QStringLiteral("new.png"));
    ASSERT_EQ(run({QStringLiteral("--screenshot"), output}), 0) << errors.toStdString();
    EXPECT_FALSE(QImage(output).isNull());
}

TEST_F(ScreenshotTest, ADocumentThatCannotBeOpenedFailsWithoutAPicture)
{
    const QString output = dir.filePath(QStringLiteral("none.png"));
    EXPECT_EQ(run({QStringLiteral("--screenshot"), output, dir.filePath(QStringLiteral("Missing.composition"))}), 1);
    EXPECT_FALSE(QFileInfo::exists(output));
    EXPECT_TRUE(errors.contains(QStringLiteral("Missing.composition"))) << errors.toStdString();
}

TEST_F(ScreenshotTest, TimeNeedsANumberAndAScreenshot)
{
    const QString output = dir.filePath(QStringLiteral("x.png"));
    EXPECT_EQ(run({QStringLiteral("--screenshot"), output, QStringLiteral("--time"), QStringLiteral("soon")}), 2);
    EXPECT_EQ(run({QStringLiteral("--time"), QStringLiteral("3")}), 2);
}

TEST_F(ScreenshotTest, WritesThePreviewWaitingAtTheFirstStopFrame)
{
    const QString output = dir.filePath(QStringLiteral("preview.png"));
    ASSERT_EQ(run({QStringLiteral("--preview"), demo, QStringLiteral("--screenshot"), output, QStringLiteral("--time"),
                   QStringLiteral("3")}),
              0)
        << errors.toStdString();
    QImage shot;
    ASSERT_TRUE(shot.load(output, "PNG"));
    // The demo's 1920 × 1080 and the status line.
    EXPECT_EQ(shot.size(), QSize(1920, 1080 + 32));
    const QColor background = shot.pixelColor(960, 400);
    EXPECT_EQ(background.alpha(), 255);
    EXPECT_GT(background.blue(), background.red()) << "the demo's own dark blue, not an empty view";
}

TEST_F(ScreenshotTest, SelectsTheComponentsWithTheGivenTitlesFirst)
{
    const QString output = dir.filePath(QStringLiteral("selected.png"));
    ASSERT_EQ(run({QStringLiteral("--screenshot"), output, QStringLiteral("--select"), QStringLiteral("Lower Third"), demo}), 0)
        << errors.toStdString();
    EXPECT_FALSE(QImage(output).isNull());
}

TEST_F(ScreenshotTest, AnUnknownTitleFailsWithoutAPicture)
{
    const QString output = dir.filePath(QStringLiteral("unknown.png"));
    EXPECT_EQ(run({QStringLiteral("--screenshot"), output, QStringLiteral("--select"), QStringLiteral("Nobody"), demo}), 1);
    EXPECT_FALSE(QFileInfo::exists(output));
    EXPECT_TRUE(errors.contains(QStringLiteral("Nobody"))) << errors.toStdString();
    EXPECT_EQ(run({QStringLiteral("--select"), QStringLiteral("Clock"), demo}), 2);
}
