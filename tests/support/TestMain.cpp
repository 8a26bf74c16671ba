// Every test binary runs inside a QGuiApplication on the offscreen platform,
// so queued calls, images and fonts behave as they do in the program.
#include <QGuiApplication>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    // Settings and caches go to throw-away test locations, never the user's.
    QStandardPaths::setTestModeEnabled(true);
    // Test binaries run side by side; each gets its own temporary folder so
    // that fixed names there (the preview export) never collide.
    QTemporaryDir temporary;
    if (temporary.isValid()) qputenv("TMPDIR", QFile::encodeName(temporary.path()));
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
