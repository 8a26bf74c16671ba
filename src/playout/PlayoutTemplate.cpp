#include "playout/PlayoutTemplate.h"

#include "document/CompositionDocument.h"
#include "document/CompositionExport.h"
#include "model/Composition.h"
#include "quartz/QuartzComposition.h"
#include "runtime/Composition.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

namespace playout {

Q_LOGGING_CATEGORY(lcPlayout, "velloran.playout")

std::optional<PlayoutTemplate> exportForPlayout(const model::Composition& composition, const QString& compositionFile,
                                                const ExportRequest& request, QString* error)
{
    const QString path = request.scratchPath.isEmpty() ? document::CompositionDocument::previewPath() : request.scratchPath;
    if (!document::CompositionExport::exportToPath(composition, path, request.includeBackground,
                                                   &document::CompositionExport::documentKey)) {
        if (error) *error = QStringLiteral("the template could not be exported to %1").arg(path);
        return std::nullopt;
    }
    QFile file(path);
    const bool opened = file.open(QIODevice::ReadOnly);
    const QByteArray bytes = opened ? file.readAll() : QByteArray();
    file.close();
    QFile::remove(path);
    // Relative resource paths resolve beside the document's own file, as
    // they do in the editor; a document never saved has no such place.
    const QString directory = compositionFile.isEmpty() ? QString() : QFileInfo(compositionFile).absolutePath();
    QString reason;
    auto loaded = opened ? runtime::Composition::loadData(bytes, &reason, directory) : nullptr;
    if (!loaded) {
        qCWarning(lcPlayout) << "Unable to load preview patch";
        if (error) *error = QStringLiteral("the exported template does not load: %1").arg(opened ? reason : file.errorString());
        return std::nullopt;
    }
    PlayoutTemplate played;
    played.composition = std::move(loaded);
    played.timing = VideoTiming::forResolution(composition.videoResolution());
    played.size = QSize(composition.width(), composition.height());
    played.duration = composition.duration();
    if (!compositionFile.isEmpty()) played.compositionFile = QUrl::fromLocalFile(compositionFile);
    return played;
}

std::optional<PlayoutTemplate> exportForPlayout(const document::CompositionDocument& document,
                                                const ExportRequest& request, QString* error)
{
    if (!document.composition()) {
        if (error) *error = QStringLiteral("the document holds no composition");
        return std::nullopt;
    }
    return exportForPlayout(*document.composition(), document.quartzCompositionURL(), request, error);
}

}  // namespace playout
