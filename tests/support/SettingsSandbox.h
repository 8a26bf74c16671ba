#pragma once
// Gives one test process settings of its own. ctest runs every test case as
// a process of its own and side by side, so tests that change preferences
// would otherwise see each other's values in the shared test location.
// Register it once per test binary:
//   static auto* const sandbox = ::testing::AddGlobalTestEnvironment(new SettingsSandbox);

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

class SettingsSandbox : public ::testing::Environment {
public:
    void SetUp() override
    {
        // Must happen before the first QSettings object is made, which the
        // environment's place before every test guarantees.
        folder_ = std::make_unique<QTemporaryDir>();
        ASSERT_TRUE(folder_->isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder_->path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder_->path());
        // Crash journals too stay in the test's own folder.
        qputenv("XDG_STATE_HOME", folder_->path().toUtf8());
    }
    void TearDown() override { folder_.reset(); }

private:
    std::unique_ptr<QTemporaryDir> folder_;
};
