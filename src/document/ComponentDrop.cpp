#include "document/ComponentDrop.h"

#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/StandardComponents.h"
#include "psd/PSDLayerImporter.h"

#include <QFileInfo>
#include <QImageReader>
#include <QLoggingCategory>

#include <algorithm>

namespace document {

Q_DECLARE_LOGGING_CATEGORY(lcDocument)

bool isPSDFile(const QString& path)
{
    return QFileInfo(path).suffix() == QLatin1String("psd");
}

QString importWarningText(const QStringList& warnings)
{
    QString text = QStringLiteral("Please note the following information related to the import:");
    for (const QString& w : warnings) text += QStringLiteral("\n\n• %1").arg(w);
    return text;
}

int importPSDLayers(model::Composition& composition, const psd::PSDLayerImporter& importer,
                    const QString& componentFile, const WorkProgress& progress)
{
    int added = 0;
    const auto& layers = importer.layers();
    const qint64 total = std::count_if(layers.begin(), layers.end(), [](const psd::PSDLayer& l) { return l.visible(); });
    qint64 done = 0;
    for (auto it = layers.rbegin(); it != layers.rend(); ++it) {
        if (!it->visible()) continue;
        if (!reportProgress(progress, done++, total)) break;
        model::QuartzComponent* c =
            composition.addComponenWithQuartzCompositionFile(componentFile, {{QStringLiteral("Image"), it->image()}});
        if (!c) continue;
        c->setTitle(QStringLiteral("%1 - %2").arg(it->name(), importer.filename()));
        c->setOriginX(it->origin().x());
        c->setOriginY(it->origin().y());
        c->setOpacity(it->opacity());
        ++added;
    }
    return added;
}

model::QuartzComponent* importCombinedPSDImage(model::Composition& composition,
                                               const psd::PSDLayerImporter& importer, const QString& componentFile)
{
    model::QuartzComponent* c = composition.addComponenWithQuartzCompositionFile(
        componentFile, {{QStringLiteral("Image"), importer.combinedImageOfVisibleLayers()}});
    if (!c) return nullptr;
    c->setTitle(importer.filename());
    // The picture has the document's size, so this lays it over the canvas
    // the way the document was laid out.
    c->setOriginX(0);
    c->setOriginY(0);
    return c;
}

DropResult addComponentsFromPaths(model::Composition& composition, const QStringList& paths, bool commandKeyPressed,
                                  const PSDImportHandler& psdImport, const WorkProgress& progress)
{
    DropResult result;
    const QString imageComponent = model::StandardComponents::pathForComponent(QStringLiteral("ImageComponent"));
    for (const QString& path : paths) {
        if (QFileInfo(path).suffix() == QLatin1String("qtz")) {
            model::QuartzComponent* c =
                model::QuartzComponent::initWithQuartzCompositionFile(path, &composition, {}, &result.warnings);
            if (c) {
                composition.addComponent(c);
                ++result.componentsAdded;
            } else {
                result.ok = false;
            }
            continue;
        }
        const bool photoshop = isPSDFile(path);
        if (photoshop && !commandKeyPressed && psdImport) {
            // The taker reads the file and reports one that does not decode.
            if (!imageComponent.isEmpty()) psdImport(path, imageComponent);
            continue;
        }
        QImage image;
        if (photoshop) {
            std::string error;
            // Layers for a layer import, the stored flat picture for a flat one.
            psd::DecodeOptions decoding;
            decoding.composite = commandKeyPressed;
            decoding.layerPixels = !commandKeyPressed;
            if (progress) decoding.progress = [&progress](int64_t done, int64_t total) { return progress(done, total); };
            auto importer = psd::PSDLayerImporter::fromPath(path, false, &error, decoding);
            if (!importer) {
                qCWarning(lcDocument) << "Unable to create PSD Importer" << QString::fromStdString(error);
                continue;
            }
            if (!commandKeyPressed) {
                if (!imageComponent.isEmpty())
                    result.componentsAdded += importPSDLayers(composition, *importer, imageComponent, progress);
                continue;
            }
            image = importer->mergedImage();  // the flattened picture Photoshop stored
        } else {
            image = QImageReader(path).read();
        }
        if (image.isNull() || imageComponent.isEmpty()) continue;  // not an image: ignored
        if (composition.addComponenWithQuartzCompositionFile(imageComponent, {{QStringLiteral("Image"), image}}))
            ++result.componentsAdded;
    }
    return result;
}

}  // namespace document
