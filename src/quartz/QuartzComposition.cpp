#include "quartz/QuartzComposition.h"

#include "plist/PropertyList.h"
#include "quartz/QuartzStrings.h"
#include "quartz/QuartzValues.h"

#include <QFile>
#include <QSaveFile>
#include <QStringList>

Q_LOGGING_CATEGORY(lcQuartz, "velloran.quartz")

using plist::Value;

namespace {
const char kRootPatch[] = "rootPatch";
const char kInputParameters[] = "inputParameters";
const char kEditorViewerWindow[] = "editorViewerWindow";
// The viewer window's title bar, added to the stored height.
constexpr double kViewerTitleBarHeight = 46.0;
}  // namespace

QuartzComposition::QuartzComposition()
    : dictionary_(Value::emptyDictionary()), rootPatch_(QuartzPatch::createRoot(this, Value()))
{
}

QuartzComposition::QuartzComposition(const Value& dictionary) : dictionary_(dictionary)
{
    if (!dictionary_.isDictionary()) dictionary_ = Value::emptyDictionary();
    const Value root = dictionary_.value(kRootPatch);
    dictionary_.remove(kRootPatch);
    rootPatch_ = QuartzPatch::createRoot(this, root);
}

std::unique_ptr<QuartzComposition> QuartzComposition::compositionWithData(const QByteArray& data, QString* error)
{
    std::string message;
    const auto root = plist::read(std::string_view(data.constData(), std::size_t(data.size())), &message);
    if (!root) {
        if (error) *error = quartz::toQt(message);
        return nullptr;
    }
    if (!root->isDictionary()) {
        if (error) *error = QStringLiteral("the property list is a %1, not a dictionary").arg(QLatin1String(plist::typeName(root->type())));
        return nullptr;
    }
    return std::make_unique<QuartzComposition>(*root);
}

std::unique_ptr<QuartzComposition> QuartzComposition::compositionWithFile(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error) *error = file.errorString();
        return nullptr;
    }
    return compositionWithData(file.readAll(), error);
}

QSizeF QuartzComposition::viewerSize() const
{
    const QStringList parts = quartz::toQt(dictionary_.value(kEditorViewerWindow).string()).split(QLatin1Char(' '));
    if (parts.size() < 4) return QSizeF(0, 0);
    return QSizeF(parts[2].toFloat(), parts[3].toFloat());
}

void QuartzComposition::setViewerSize(const QSizeF& size)
{
    const Value* stored = dictionary_.find(kEditorViewerWindow);
    if (!stored) return;
    QStringList parts = quartz::toQt(stored->string()).split(QLatin1Char(' '));
    if (parts.size() < 4) {
        qCWarning(lcQuartz) << "editorViewerWindow has fewer than four parts:" << parts.join(QLatin1Char(' '));
        return;
    }
    parts[2] = QString::asprintf("%f", size.width());
    parts[3] = QString::asprintf("%f", size.height() + kViewerTitleBarHeight);
    dictionary_.set(kEditorViewerWindow, quartz::toStd(parts.join(QLatin1Char(' '))));
}

void QuartzComposition::setAspectRatio(double aspectRatio)
{
    dictionary_.set("aspectRatio", Value::singleReal(static_cast<float>(aspectRatio)));
}

void QuartzComposition::setInputParameter(const Value& value, const QString& key)
{
    Value parameters = dictionary_.value(kInputParameters);
    if (!parameters.isDictionary()) parameters = Value::emptyDictionary();
    parameters.set(quartz::toStd(key), value);
    dictionary_.set(kInputParameters, std::move(parameters));
}

Value QuartzComposition::inputParameterForKey(const QString& key) const
{
    return dictionary_.value(kInputParameters).value(quartz::toStd(key));
}

Value QuartzComposition::fileDictionary(bool strip) const
{
    Value tree = dictionary_;
    tree.set(kRootPatch, rootPatch_->patchDataForFileData(dictionary_));
    // Removing works on shared containers: only the ones on the way to a
    // setting are copied, so a large graph is not duplicated to write it.
    if (strip) removePixelFormatSettingFromCollection(tree);
    return tree;
}

std::optional<std::string> QuartzComposition::fileText(bool strip) const
{
    std::string error;
    auto text = plist::writeXml(fileDictionary(strip), &error);
    if (!text) qCCritical(lcQuartz, "Error when serializing QTZ: %s", error.c_str());
    return text;
}

std::optional<QByteArray> QuartzComposition::fileDataByRemovingPixelFormatSetting(bool strip) const
{
    const auto text = fileText(strip);
    if (!text) return std::nullopt;
    return QByteArray(text->data(), qsizetype(text->size()));
}

bool QuartzComposition::writeToFile(const QString& path, bool removePixelFormatSetting) const
{
    const auto text = fileText(removePixelFormatSetting);
    if (!text) return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    if (file.write(text->data(), qint64(text->size())) != qint64(text->size())) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

namespace {

// Whether a collection holds the pixel-format setting anywhere below it, in
// the places the removal looks (a dictionary that has it is not searched on).
bool holdsPixelFormatSetting(const Value& node)
{
    if (node.isArray()) {
        for (const Value& element : node.array())
            if (holdsPixelFormatSetting(element)) return true;
    } else if (node.isDictionary()) {
        if (node.contains("pixelFormat")) return true;
        for (const auto& [key, value] : node.dictionary())
            if ((value.isArray() || value.isDictionary()) && holdsPixelFormatSetting(value)) return true;
    }
    return false;
}

}  // namespace

void QuartzComposition::removePixelFormatSettingFromCollection(Value& node)
{
    if (!holdsPixelFormatSetting(node)) return;  // nothing to change: keep it shared
    if (node.isArray()) {
        for (Value& element : node.mutableArray()) removePixelFormatSettingFromCollection(element);
    } else if (node.isDictionary()) {
        // A dictionary that holds the setting loses it and is not looked into
        // any further.
        if (node.remove("pixelFormat")) return;
        for (auto& [key, value] : node.mutableDictionary()) {
            if (value.isArray() || value.isDictionary()) removePixelFormatSettingFromCollection(value);
        }
    }
}

Value QuartzComposition::quartzValueForObject(const QVariant& value)
{
    return quartz::fileValueForVariant(value);
}
