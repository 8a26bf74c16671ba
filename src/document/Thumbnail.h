#pragma once
// The document's preview picture: the exported template played forward to
// its poster frame, pulsing the trigger at every stop frame on the way.

#include <QImage>
#include <QSize>
#include <QUrl>

#include <memory>

namespace runtime {
class Composition;
}

namespace document {

// Steps of a little under 0.04 s from 0 to the poster frame; a negative
// poster frame gives the first frame. A null image when the file does not load.
QImage renderThumbnail(const QString& previewPath, QSize size, double posterFrameTimepoint, const QUrl& documentURL);
QImage renderThumbnail(std::shared_ptr<const runtime::Composition> preview, QSize size, double posterFrameTimepoint,
                       const QUrl& documentURL);

// JPEG at quality 90, written atomically.
bool writeThumbnail(const QImage& image, const QString& path);

}  // namespace document
