#pragma once
// The document's preview picture: the exported template played forward to
// its poster frame, pulsing the trigger at every stop frame on the way.

#include <QImage>
#include <QList>
#include <QSize>
#include <QUrl>

#include <QStringList>

#include <memory>
#include <optional>

namespace runtime {
class Composition;
}
namespace model {
class Composition;
}

namespace document {

// Steps of a little under 0.04 s from 0 to the poster frame; a negative
// poster frame gives the first frame. A null image when the file does not load.
QImage renderThumbnail(const QString& previewPath, QSize size, double posterFrameTimepoint, const QUrl& documentURL);
QImage renderThumbnail(std::shared_ptr<const runtime::Composition> preview, QSize size, double posterFrameTimepoint,
                       const QUrl& documentURL);

// The picture at which playout holds at each stop frame, in order: the
// template played from 0 in the thumbnail's steps with nobody at the
// trigger, a picture taken whenever it waits, until it has waited
// `stopFrames` times or played `duration` seconds.
QList<QImage> renderStopFramePictures(std::shared_ptr<const runtime::Composition> composition, QSize size, int stopFrames,
                                      double duration, const QUrl& documentURL);
// "Step-01.jpg", "Step-02.jpg", ... in the package's "QuickLook" folder.
QString stepPictureName(int index);
// The composition's stop-frame pictures as PNG files (Step-01.png, ...) in a
// folder, played from its export with the background; empty size: the
// composition's own. The paths written, or nothing with the reason.
std::optional<QStringList> exportStepPictures(const model::Composition& composition, const QString& folder, QSize size,
                                              const QUrl& documentURL, QString* error);

// JPEG at quality 90, written atomically.
bool writeThumbnail(const QImage& image, const QString& path);

}  // namespace document
