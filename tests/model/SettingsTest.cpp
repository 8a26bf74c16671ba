// Preferences: registered defaults, change announcements and the default
// font of text elements.

#include "../support/SettingsSandbox.h"

#include "model/Settings.h"

#include <QDir>
#include <QFont>
#include <QFontDatabase>

#include <gtest/gtest.h>

using model::Settings;

static auto* const sandbox = ::testing::AddGlobalTestEnvironment(new SettingsSandbox);

class SettingsTest : public ::testing::Test {
protected:
    ~SettingsTest() override
    {
        for (const QString& key : {Settings::kDefaultFontName, Settings::kDefaultFontSize, Settings::kImagesLibraryPath})
            Settings::remove(key);
    }
    static QString systemFamily() { return QFontDatabase::systemFont(QFontDatabase::GeneralFont).family(); }
};

TEST_F(SettingsTest, AbsentKeysReadAsTheirRegisteredDefaults)
{
    EXPECT_EQ(Settings::stringValue(Settings::kDefaultDocumentMode), QStringLiteral("1080i25 RGBA"));
    EXPECT_EQ(Settings::stringValue(Settings::kImagesLibraryPath), QDir::homePath() + QStringLiteral("/Pictures"));
    EXPECT_EQ(Settings::stringValue(Settings::kMoviesLibraryPath), QDir::homePath() + QStringLiteral("/Movies"));
    EXPECT_EQ(Settings::intValue(Settings::kDefaultFontSize), 30);
    EXPECT_FALSE(Settings::boolValue(Settings::kPreviewFPS));
    EXPECT_FALSE(Settings::value(Settings::kWindowState).isValid());
}

TEST_F(SettingsTest, ChangesAreAnnouncedByKey)
{
    QStringList announced;
    const auto connection = QObject::connect(Settings::notifier(), &model::SettingsNotifier::valueChanged,
                                             [&](const QString& key) { announced << key; });
    Settings::setValue(Settings::kImagesLibraryPath, QStringLiteral("/tmp"));
    Settings::remove(Settings::kImagesLibraryPath);
    QObject::disconnect(connection);
    EXPECT_EQ(announced, QStringList({Settings::kImagesLibraryPath, Settings::kImagesLibraryPath}));
}

TEST_F(SettingsTest, TheDefaultFontStartsAsTheSystemFontAt30Points)
{
    const QFont font = Settings::defaultFontForElements();
    EXPECT_EQ(font.family(), systemFamily());
    EXPECT_EQ(font.pointSize(), 30);
}

TEST_F(SettingsTest, AStoredFontIsReadBackAtItsWholePointSize)
{
    ASSERT_TRUE(QFontDatabase::hasFamily(QStringLiteral("DejaVu Serif")));
    QFont chosen(QStringLiteral("DejaVu Serif"));
    chosen.setPointSizeF(18.7);
    Settings::setAsDefaultFontForElements(chosen);
    EXPECT_EQ(Settings::stringValue(Settings::kDefaultFontName), QStringLiteral("DejaVu Serif"));
    EXPECT_EQ(Settings::intValue(Settings::kDefaultFontSize), 18);
    const QFont font = Settings::defaultFontForElements();
    EXPECT_EQ(font.family(), QStringLiteral("DejaVu Serif"));
    EXPECT_EQ(font.pointSize(), 18);
}

TEST_F(SettingsTest, ASizeBelowOneMeans12Points)
{
    for (int size : {0, -4}) {
        Settings::setValue(Settings::kDefaultFontSize, size);
        EXPECT_EQ(Settings::defaultFontForElements().pointSize(), 12) << size;
    }
}

TEST_F(SettingsTest, AnUninstalledFontFallsBackToTheSystemFontAtTheStoredSize)
{
    Settings::setValue(Settings::kDefaultFontName, QStringLiteral("No Such Font Velloran"));
    Settings::setValue(Settings::kDefaultFontSize, 22);
    const QFont font = Settings::defaultFontForElements();
    EXPECT_EQ(font.family(), systemFamily());
    EXPECT_EQ(font.pointSize(), 22);
}

TEST_F(SettingsTest, AnEmptyFontNameFallsBackToTheSystemFont)
{
    Settings::setValue(Settings::kDefaultFontName, QString());
    Settings::setValue(Settings::kDefaultFontSize, 14);
    const QFont font = Settings::defaultFontForElements();
    EXPECT_EQ(font.family(), systemFamily());
    EXPECT_EQ(font.pointSize(), 14);
}
