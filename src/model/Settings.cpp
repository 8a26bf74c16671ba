#include "model/Settings.h"

#include <QColor>
#include <QDir>
#include <QFont>
#include <QFontDatabase>
#include <QSettings>

namespace model {

namespace {
QSettings& store()
{
    static QSettings settings(QStringLiteral("Velloran"), QStringLiteral("Velloran"));
    return settings;
}

QString home(const char* folder) { return QDir::homePath() + QLatin1Char('/') + QLatin1String(folder); }
}  // namespace

QVariant Settings::registeredDefault(const QString& key)
{
    if (key == kDefaultDocumentMode) return QStringLiteral("1080i25 RGBA");
    if (key == kDefaultBackgroundColor) return QColor(Qt::white);
    if (key == kImagesLibraryPath || key == kComponentsLibraryPath || key == kCompositionsLibraryPath) return home("Pictures");
    if (key == kMoviesLibraryPath) return home("Movies");
    if (key == kDefaultFontName) return QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    if (key == kDefaultFontSize) return 30;
    return {};
}

QVariant Settings::value(const QString& key)
{
    const QVariant stored = store().value(key);
    return stored.isValid() ? stored : registeredDefault(key);
}

bool Settings::contains(const QString& key) { return store().contains(key) || registeredDefault(key).isValid(); }

void Settings::setValue(const QString& key, const QVariant& value)
{
    store().setValue(key, value);
    Q_EMIT notifier()->valueChanged(key);
}

void Settings::remove(const QString& key)
{
    store().remove(key);
    Q_EMIT notifier()->valueChanged(key);
}

SettingsNotifier* Settings::notifier()
{
    static SettingsNotifier instance;
    return &instance;
}

QFont Settings::defaultFontForElements()
{
    int size = intValue(kDefaultFontSize);
    if (size < 1) size = 12;
    const QString name = stringValue(kDefaultFontName);
    // A font that was uninstalled since it was chosen must not turn into
    // whatever fallback the font matcher picks; the system font is the
    // predictable choice.
    QFont font = !name.isEmpty() && QFontDatabase::hasFamily(name) ? QFont(name)
                                                                     : QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPointSize(size);
    return font;
}

void Settings::setAsDefaultFontForElements(const QFont& font)
{
    setValue(kDefaultFontName, font.family());
    setValue(kDefaultFontSize, int(font.pointSizeF()));
}

}  // namespace model
