#include "document/Thumbnail.h"

#include "document/CompositionExport.h"
#include "document/UnattendedTrigger.h"
#include "model/Composition.h"
#include "quartz/QuartzComposition.h"
#include "model/QuartzComponent.h"
#include "runtime/Renderer.h"

#include <QDir>
#include <QSaveFile>

namespace document {

QImage renderThumbnail(const QString& previewPath, QSize size, double posterFrameTimepoint, const QUrl& documentURL)
{
    return renderThumbnail(runtime::Composition::loadFile(previewPath), size, posterFrameTimepoint, documentURL);
}

QImage renderThumbnail(std::shared_ptr<const runtime::Composition> composition, QSize size, double posterFrameTimepoint,
                       const QUrl& documentURL)
{
    if (!composition) return {};
    runtime::Renderer renderer(composition, size);
    renderer.userInfo().insert(model::QuartzComponent::documentURLKey(), documentURL);
    if (posterFrameTimepoint < 0) {
        renderer.render(0.0);
        return renderer.snapshot();
    }
    // The step is the single-precision 0.04, a little shorter than 0.04, so
    // that a poster frame on a frame boundary is reached, not stepped over.
    const double step = double(0.04f);
    UnattendedTrigger trigger(renderer);
    for (double t = 0; t <= posterFrameTimepoint; t += step) {
        renderer.render(t);
        trigger.afterStep();
    }
    return renderer.snapshot();
}

QList<QImage> renderStopFramePictures(std::shared_ptr<const runtime::Composition> composition, QSize size, int stopFrames,
                                      double duration, const QUrl& documentURL)
{
    QList<QImage> pictures;
    if (!composition || stopFrames <= 0) return pictures;
    runtime::Renderer renderer(composition, size);
    renderer.userInfo().insert(model::QuartzComponent::documentURLKey(), documentURL);
    const double step = double(0.04f);
    UnattendedTrigger trigger(renderer);
    // Waiting steps do not advance the template: give it the held steps on top.
    for (double t = 0; t <= duration + step * stopFrames && pictures.size() < stopFrames; t += step) {
        renderer.render(t);
        if (trigger.afterStep()) pictures.append(renderer.snapshot());
    }
    return pictures;
}

QString stepPictureName(int index) { return QStringLiteral("Step-%1.jpg").arg(index + 1, 2, 10, QLatin1Char('0')); }

std::optional<QStringList> exportStepPictures(const model::Composition& composition, const QString& folder, QSize size,
                                              const QUrl& documentURL, QString* error)
{
    const auto exported = CompositionExport::exportedComposition(composition, true, &CompositionExport::documentKey);
    if (!exported) {
        if (error) *error = QStringLiteral("the composition could not be exported");
        return std::nullopt;
    }
    if (size.isEmpty()) size = QSize(composition.width(), composition.height());
    const QList<QImage> pictures =
        renderStopFramePictures(runtime::Composition::fromPlist(exported->fileDictionary(true), nullptr, QString()), size,
                                int(composition.stopFrames().size()), composition.duration(), documentURL);
    if (!QDir().mkpath(folder)) {
        if (error) *error = QStringLiteral("cannot create %1").arg(folder);
        return std::nullopt;
    }
    QStringList written;
    for (int i = 0; i < pictures.size(); ++i) {
        const QString path = QDir(folder).filePath(stepPictureName(i).replace(QLatin1String(".jpg"), QLatin1String(".png")));
        if (!pictures[i].save(path, "PNG")) {
            if (error) *error = QStringLiteral("cannot write %1").arg(path);
            return std::nullopt;
        }
        written.append(path);
    }
    return written;
}

bool writeThumbnail(const QImage& image, const QString& path)
{
    if (image.isNull()) return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    if (!image.convertToFormat(QImage::Format_RGB32).save(&file, "JPG", 90)) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

}  // namespace document
