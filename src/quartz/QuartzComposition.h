#pragma once
// A Quartz Composer composition file (.qtz) held as an editable dictionary
// tree: the top-level dictionary without "rootPatch", and the root patch as a
// QuartzPatch graph. Reads XML and binary files; writes XML.

#include "plist/Value.h"
#include "quartz/QuartzPatch.h"

#include <QByteArray>
#include <QLoggingCategory>
#include <QSizeF>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>

Q_DECLARE_LOGGING_CATEGORY(lcQuartz)

class QuartzComposition {
public:
    QuartzComposition();  // an empty composition with a default root patch
    explicit QuartzComposition(const plist::Value& dictionary);

    QuartzComposition(const QuartzComposition&) = delete;
    QuartzComposition& operator=(const QuartzComposition&) = delete;

    // None when the file cannot be read or is not a dictionary property list.
    static std::unique_ptr<QuartzComposition> compositionWithFile(const QString& path, QString* error = nullptr);
    static std::unique_ptr<QuartzComposition> compositionWithData(const QByteArray& data, QString* error = nullptr);

    QuartzPatch& rootPatch() { return *rootPatch_; }
    const QuartzPatch& rootPatch() const { return *rootPatch_; }
    plist::Value& dictionary() { return dictionary_; }
    const plist::Value& dictionary() const { return dictionary_; }

    // The viewer window's content size, parts 2 and 3 of "editorViewerWindow".
    QSizeF viewerSize() const;
    // Stores the height plus the viewer's 46-point title bar, so viewerSize()
    // afterwards reports the larger height. Does nothing without the key.
    void setViewerSize(const QSizeF& size);
    void setAspectRatio(double aspectRatio);

    void setInputParameter(const plist::Value& value, const QString& key);
    plist::Value inputParameterForKey(const QString& key) const;  // null when absent

    std::optional<QByteArray> fileDataByRemovingPixelFormatSetting(bool strip) const;
    // The tree that file data is the text of, for a reader in this process
    // that would otherwise write the file and read it back.
    plist::Value fileDictionary(bool strip) const;
    bool writeToFile(const QString& path, bool removePixelFormatSetting) const;

    static void removePixelFormatSettingFromCollection(plist::Value& node);

    // The one bridge from attribute values to file values: colours become
    // opaque single-precision RGBA dictionaries, images TIFF data; anything
    // else is stored as it is.
    static plist::Value quartzValueForObject(const QVariant& value);

private:
    // The file's XML text; writing a file takes it as it is rather than
    // through a QByteArray copy.
    std::optional<std::string> fileText(bool strip) const;

    plist::Value dictionary_;
    std::unique_ptr<QuartzPatch> rootPatch_;
};
