#include "document/ComponentClipboard.h"

#include "document/ComponentArchive.h"
#include "model/Composition.h"
#include "model/ObjectStore.h"
#include "model/QuartzComponent.h"
#include "model/StandardComponents.h"
#include "quartz/TiffCodec.h"

#include <QClipboard>
#include <QImage>
#include <QImageReader>
#include <QLoggingCategory>
#include <QMimeData>

namespace document {

Q_LOGGING_CATEGORY(lcClipboard, "velloran.clipboard")

namespace {

const QString kTiff = QStringLiteral("image/tiff");
const QString kQtImage = QStringLiteral("application/x-qt-image");

// The image formats on offer that we can decode, TIFF first: it is the form
// composition files keep images in, so nothing is lost on the way.
QStringList imageFormats(const QMimeData& data)
{
    static const QList<QByteArray> decodable = QImageReader::supportedMimeTypes();
    QStringList formats;
    if (data.hasFormat(kTiff)) formats.append(kTiff);
    for (const QString& format : data.formats())
        if (format != kTiff && decodable.contains(format.toLatin1())) formats.append(format);
    return formats;
}

bool offersImage(const QMimeData& data) { return data.hasFormat(kQtImage) || !imageFormats(data).isEmpty(); }

QImage imageFrom(const QMimeData& data)
{
    for (const QString& format : imageFormats(data)) {
        const QByteArray bytes = data.data(format);
        // TIFF through our codec: every layout other programs put there, and
        // the bytes are kept for the document's next save.
        const QImage image = quartz::tiff::isTiff(bytes) ? quartz::tiff::decode(bytes) : QImage::fromData(bytes);
        if (!image.isNull()) return image;
    }
    // An image put on the clipboard by this program comes as a value.
    return data.hasFormat(kQtImage) ? qvariant_cast<QImage>(data.imageData()) : QImage();
}

// Plain text only: a list of file URLs is text too for Qt, but pasting it
// as a text component is not what a user copying files means.
bool offersText(const QMimeData& data)
{
    for (const QString& format : data.formats())
        if (format == QLatin1String("text/plain") || format.startsWith(QLatin1String("text/plain;"))) return true;
    return false;
}

model::QuartzComponent* addStandardComponent(model::Composition& composition, const QString& name, const QVariantMap& inputs)
{
    const QString path = model::StandardComponents::pathForComponent(name);
    if (path.isEmpty()) {
        qCWarning(lcClipboard).noquote() << QStringLiteral("No standard component \"%1\" to paste into").arg(name);
        return nullptr;
    }
    return composition.addComponenWithQuartzCompositionFile(path, inputs);
}

}  // namespace

std::unique_ptr<QMimeData> ComponentClipboard::mimeDataForSelection(const model::Composition& composition)
{
    if (!composition.validSelection()) return nullptr;
    QList<QVariantMap> dictionaries;
    for (const model::QuartzComponent* c : composition.selectedComponents()) dictionaries.append(c->dictionaryWithData());
    auto data = std::make_unique<QMimeData>();
    data->setData(ComponentMimeType, ComponentArchive::archive(dictionaries));
    return data;
}

bool ComponentClipboard::pasteboardIsValid(const QMimeData& data)
{
    return data.hasFormat(ComponentMimeType) || offersImage(data) || offersText(data);
}

std::vector<model::QuartzComponent*> ComponentClipboard::paste(model::Composition& composition, const QMimeData& data)
{
    std::vector<model::QuartzComponent*> added;
    if (!pasteboardIsValid(data)) return added;
    model::UndoGroup group(composition.store()->undoManager(), QStringLiteral("Paste"));
    if (data.hasFormat(ComponentMimeType)) {
        QList<QVariantMap> dictionaries;
        QString error;
        if (!ComponentArchive::unarchive(data.data(ComponentMimeType), dictionaries, &error)) {
            qCWarning(lcClipboard).noquote() << QStringLiteral("Cannot paste components: %1").arg(error);
            return added;
        }
        for (const QVariantMap& dictionary : dictionaries) {
            model::QuartzComponent* c = model::QuartzComponent::createFromDictionary(&composition, dictionary);
            composition.addComponent(c);
            added.push_back(c);
        }
        return added;
    }
    model::QuartzComponent* c = nullptr;
    if (offersImage(data)) {
        const QImage image = imageFrom(data);
        if (image.isNull()) {
            qCWarning(lcClipboard) << "Cannot paste an image that cannot be read";
            return added;
        }
        c = addStandardComponent(composition, imageComponentName(), {{imageInputKey(), image}});
    } else {
        c = addStandardComponent(composition, textComponentName(), {{textInputKey(), data.text()}});
    }
    if (c) added.push_back(c);
    return added;
}

std::unique_ptr<QMimeData> ComponentClipboard::cut(model::Composition& composition)
{
    std::unique_ptr<QMimeData> data = mimeDataForSelection(composition);
    if (!data) return nullptr;
    model::UndoGroup group(composition.store()->undoManager(), QStringLiteral("Cut"));
    composition.removeComponents(composition.selectedComponents());
    return data;
}

bool ComponentClipboard::copy(const model::Composition& composition, QClipboard& clipboard)
{
    std::unique_ptr<QMimeData> data = mimeDataForSelection(composition);
    if (!data) return false;
    clipboard.setMimeData(data.release());
    return true;
}

bool ComponentClipboard::cut(model::Composition& composition, QClipboard& clipboard)
{
    std::unique_ptr<QMimeData> data = cut(composition);
    if (!data) return false;
    clipboard.setMimeData(data.release());
    return true;
}

std::vector<model::QuartzComponent*> ComponentClipboard::paste(model::Composition& composition, const QClipboard& clipboard)
{
    const QMimeData* data = clipboard.mimeData();
    return data ? paste(composition, *data) : std::vector<model::QuartzComponent*>{};
}

bool ComponentClipboard::pasteboardIsValid(const QClipboard& clipboard)
{
    const QMimeData* data = clipboard.mimeData();
    return data && pasteboardIsValid(*data);
}

}  // namespace document
