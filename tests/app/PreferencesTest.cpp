// The Preferences window writes each setting as it changes and shows
// changes made elsewhere.

#include "AppFixture.h"

#include "document/CompositionDocument.h"
#include "model/Composition.h"

#include <QCheckBox>
#include <QDir>
#include <QComboBox>
#include <QFont>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using model::Settings;

class PreferencesTest : public AppFixture {
protected:
    ~PreferencesTest() override
    {
        for (const QString& key : {Settings::kDefaultFontName, Settings::kDefaultFontSize, Settings::kPreviewFPS,
                                   Settings::kAvoidSpacesInPortLabels, Settings::kDefaultBackgroundMode})
            Settings::remove(key);
    }
    template <typename T>
    T* control(const QString& name)
    {
        return preferences->findChild<T*>(name);
    }
    app::VLPreferencesController* preferences = controller.preferencesController();
};

TEST_F(PreferencesTest, TheMenuItemShowsTheOneWindow)
{
    QAction* item = window->action(QStringLiteral("showPreferences"));
    ASSERT_TRUE(item);
    EXPECT_FALSE(item->shortcut().isEmpty());
    item->trigger();
    EXPECT_TRUE(preferences->isVisible());
    EXPECT_EQ(controller.preferencesController(), preferences);
    EXPECT_EQ(preferences->windowTitle(), QStringLiteral("Preferences"));
}

TEST_F(PreferencesTest, TheDefaultFontIsStoredByNameAndWholeSize)
{
    QFont font(QStringLiteral("DejaVu Serif"));
    font.setPointSizeF(17.5);
    preferences->setDefaultFont(font);
    EXPECT_EQ(Settings::stringValue(Settings::kDefaultFontName), QStringLiteral("DejaVu Serif"));
    EXPECT_EQ(Settings::intValue(Settings::kDefaultFontSize), 17);
    ASSERT_TRUE(control<QLabel>(QStringLiteral("defaultFontLabel")));
    EXPECT_EQ(control<QLabel>(QStringLiteral("defaultFontLabel"))->text(), QStringLiteral("DejaVu Serif, 17 pt"));
}

TEST_F(PreferencesTest, TheLibraryFolderIsStoredAndShown)
{
    preferences->selectGraphicPath(dir.path() + QStringLiteral("/"));
    EXPECT_EQ(Settings::stringValue(Settings::kImagesLibraryPath), dir.path());
    ASSERT_TRUE(control<QLineEdit>(Settings::kImagesLibraryPath));
    EXPECT_EQ(control<QLineEdit>(Settings::kImagesLibraryPath)->text(), QDir::toNativeSeparators(dir.path()));
}

TEST_F(PreferencesTest, CheckBoxesWriteAndFollowTheirSettings)
{
    for (const QString& key : {Settings::kPreviewFPS, Settings::kAvoidSpacesInPortLabels}) {
        QCheckBox* box = control<QCheckBox>(key);
        ASSERT_TRUE(box) << key.toStdString();
        EXPECT_FALSE(box->isChecked());
        box->setChecked(true);
        EXPECT_TRUE(Settings::boolValue(key));
        Settings::setValue(key, false);
        EXPECT_FALSE(box->isChecked());
    }
}

TEST_F(PreferencesTest, TheBackgroundOfNewCompositionsIsAPreference)
{
    QComboBox* mode = control<QComboBox>(QStringLiteral("backgroundMode"));
    QPushButton* colour = control<QPushButton>(QStringLiteral("backgroundColor"));
    ASSERT_TRUE(mode && colour);
    EXPECT_FALSE(colour->isEnabled());
    mode->setCurrentIndex(mode->findData(int(model::kBackgroundColor)));
    EXPECT_EQ(Settings::intValue(Settings::kDefaultBackgroundMode), int(model::kBackgroundColor));
    EXPECT_TRUE(colour->isEnabled());
    // The next document starts with it.
    app::VLWindowController* made = newWindow();
    EXPECT_EQ(made->document()->composition()->backgroundMode(), int(model::kBackgroundColor));
}
