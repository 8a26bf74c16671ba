#pragma once
// The user's preferences, kept in QSettings (organisation and application
// "Velloran") under the keys the program has always used. A key the user
// never set reads as its registered default, or as absent.

#include <QObject>
#include <QString>
#include <QVariant>

class QFont;

namespace model {

// Announces every change made through Settings, so that a panel showing a
// preference (the library's folder, the preferred format) follows it while
// it is open.
class SettingsNotifier : public QObject {
    Q_OBJECT
Q_SIGNALS:
    void valueChanged(const QString& key);
};

class Settings {
public:
    static inline const QString kDefaultDocumentMode = QStringLiteral("defaultDocumentMode");
    static inline const QString kDefaultBackgroundMode = QStringLiteral("defaultCompositionBackgroundMode");
    static inline const QString kDefaultBackgroundColor = QStringLiteral("defaultCompositionBackgroundColorData");
    static inline const QString kDefaultBackgroundImage = QStringLiteral("defaultCompositionBackgroundImageData");
    static inline const QString kDefaultMovieFilename = QStringLiteral("defaultCompositionMovieFilename");
    static inline const QString kPreviewFPS = QStringLiteral("previewFPS");
    static inline const QString kAvoidSpacesInPortLabels = QStringLiteral("avoidSpacesInPortLabels");
    static inline const QString kImagesLibraryPath = QStringLiteral("imagesLibraryPath");
    static inline const QString kMoviesLibraryPath = QStringLiteral("movieLibraryPath");
    static inline const QString kComponentsLibraryPath = QStringLiteral("componentsLibraryPath");
    static inline const QString kCompositionsLibraryPath = QStringLiteral("compositionsLibraryPath");
    static inline const QString kDefaultFontName = QStringLiteral("defaultFontName");
    static inline const QString kDefaultFontSize = QStringLiteral("defaultFontSize");
    static inline const QString kWindowState = QStringLiteral("windowState");
    static inline const QString kVideoInputPosterImage = QStringLiteral("videoInputPosterImage");

    // The stored value, else the registered default, else an invalid QVariant.
    static QVariant value(const QString& key);
    static bool contains(const QString& key);  // stored or registered
    static void setValue(const QString& key, const QVariant& value);
    static void remove(const QString& key);

    static QString stringValue(const QString& key) { return value(key).toString(); }
    static bool boolValue(const QString& key) { return value(key).toBool(); }
    static int intValue(const QString& key) { return value(key).toInt(); }

    static QVariant registeredDefault(const QString& key);

    // Emits valueChanged(key) after every setValue and remove.
    static SettingsNotifier* notifier();

    // The font text elements start with: the stored name at the stored
    // size. A size below 1 means 12 points; a name that is missing or no
    // longer installed means the system font at the stored size.
    static QFont defaultFontForElements();
    // Stores the font's family and its point size truncated to a whole number.
    static void setAsDefaultFontForElements(const QFont& font);
};

}  // namespace model
