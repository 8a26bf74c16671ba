#include "document/Thumbnail.h"

#include "document/UnattendedTrigger.h"
#include "model/QuartzComponent.h"
#include "runtime/Renderer.h"

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
