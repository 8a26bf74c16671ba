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
    const auto exported = document::CompositionExport::exportedComposition(composition, request.includeBackground,
                                                                           &document::CompositionExport::documentKey);
    if (!exported || !exported->writeToFile(path, true)) {
        if (error) *error = QStringLiteral("the template could not be exported to %1").arg(path);
        return std::nullopt;
    }
    // The tree just written is played as it stands, not read back: another
    // program saving or previewing may write a file of the same name at any
    // moment.
    QFile::remove(path);
    // Relative resource paths resolve beside the document's own file, as
    // they do in the editor; a document never saved has no such place.
    const QString directory = compositionFile.isEmpty() ? QString() : QFileInfo(compositionFile).absolutePath();
    QString reason;
    auto loaded = runtime::Composition::fromPlist(exported->fileDictionary(true), &reason, directory);
    if (!loaded) {
        qCWarning(lcPlayout) << "Unable to load preview patch";
        if (error) *error = QStringLiteral("the exported template does not load: %1").arg(reason);
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
