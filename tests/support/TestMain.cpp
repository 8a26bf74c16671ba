// Every test binary runs inside a QGuiApplication on the offscreen platform,
// so queued calls, images and fonts behave as they do in the program.
#include <QGuiApplication>
#include <QStandardPaths>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    // Settings and caches go to throw-away test locations, never the user's.
    QStandardPaths::setTestModeEnabled(true);
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
