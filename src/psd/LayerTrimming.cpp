#include "psd/LayerTrimming.h"

#include <cstring>

namespace psd {

namespace {

// The alpha byte's mask in a 32-bit pixel of the image's format, as read
// from memory on this machine.
quint32 alphaMask(QImage::Format format)
{
    if (format == QImage::Format_ARGB32 || format == QImage::Format_ARGB32_Premultiplied) return 0xff000000u;
    // RGBA8888 keeps alpha in the fourth byte in memory.
    quint32 mask = 0;
    reinterpret_cast<unsigned char*>(&mask)[3] = 0xff;
    return mask;
}

}  // namespace

QRect visibleBounds(const QImage& image)
{
    if (image.isNull() || image.depth() != 32) return image.rect();
    const quint32 alpha = alphaMask(image.format());
    const int w = image.width(), h = image.height();
    auto row = [&](int y) { return reinterpret_cast<const quint32*>(image.constScanLine(y)); };
    auto rowVisible = [&](int y) {
        const quint32* p = row(y);
        for (int x = 0; x < w; ++x)
            if (p[x] & alpha) return true;
        return false;
    };
    int top = 0;
    while (top < h && !rowVisible(top)) ++top;
    if (top == h) return {};
    int bottom = h - 1;
    while (bottom > top && !rowVisible(bottom)) --bottom;
    int left = w, right = -1;
    for (int y = top; y <= bottom; ++y) {
        const quint32* p = row(y);
        // Only the columns not yet known to be visible need a look.
        for (int x = 0; x < left; ++x)
            if (p[x] & alpha) {
                left = x;
                break;
            }
        for (int x = w - 1; x > right; --x)
            if (p[x] & alpha) {
                right = x;
                break;
            }
    }
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

QImage trimmedPremultiplied(const QImage& image, QPoint* offset)
{
    QRect bounds = visibleBounds(image);
    if (bounds.isNull()) bounds = image.rect();
    if (offset) *offset = bounds.topLeft();
    QImage result = bounds == image.rect() ? image : image.copy(bounds);
    result.convertTo(QImage::Format_ARGB32_Premultiplied);
    return result;
}

}  // namespace psd
