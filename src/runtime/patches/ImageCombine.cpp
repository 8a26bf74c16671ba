#include "runtime/patches/ImageCombine.h"

#include "runtime/RowBands.h"
#include "runtime/patches/ImageOps.h"

namespace runtime {

Image combineImages(const std::vector<Image>& inputs, const std::optional<QRect>& extent, const PixelCombiner& combine)
{
    const auto render = [inputs, combine](const QRect& region) {
        // A region larger than the limit keeps its top rows, as generators do.
        const QSize size = clampedRect(region).size();
        const QRect part(region.x(), region.y() + region.height() - size.height(), size.width(), size.height());
        std::vector<QImage> rasters;
        for (const Image& image : inputs) rasters.push_back(image.isNull() ? QImage() : image.renderRegion(part));
        QImage out(size, QImage::Format_ARGB32_Premultiplied);
        uchar* const bits = out.bits();  // detached once, before the bands start
        const qsizetype stride = out.bytesPerLine();
        forEachRowBand(size.height(), qint64(size.width()) * size.height(), [&](int, int firstRow, int endRow) {
            std::vector<PixelColor> pixels(rasters.size());
            std::vector<const QRgb*> inputRows(rasters.size());
            for (int row = firstRow; row < endRow; ++row) {
                for (std::size_t i = 0; i < rasters.size(); ++i)
                    inputRows[i] = rasters[i].isNull() ? nullptr : reinterpret_cast<const QRgb*>(rasters[i].constScanLine(row));
                auto* line = reinterpret_cast<QRgb*>(bits + row * stride);
                for (int x = 0; x < size.width(); ++x) {
                    for (std::size_t i = 0; i < inputRows.size(); ++i)
                        pixels[i] = inputRows[i] ? PixelColor::fromPixel(inputRows[i][x]) : PixelColor{};
                    line[x] = combine(pixels.data()).toPixel();
                }
            }
        });
        return out;
    };
    return imageFromRenderer(render, extent);
}

std::optional<QRect> extentOf(const Image& image)
{
    if (image.isInfinite()) return std::nullopt;
    return image.extent();
}

std::optional<QRect> unitedExtent(const std::vector<Image>& images)
{
    QRect united;
    for (const Image& image : images) {
        if (image.isInfinite()) return std::nullopt;
        united = united.united(image.extent());
    }
    return united;
}

std::optional<QRect> intersectedExtent(const std::vector<Image>& images)
{
    std::optional<QRect> common;
    for (const Image& image : images) {
        if (image.isInfinite()) continue;
        common = common ? common->intersected(image.extent()) : image.extent();
    }
    return common;
}

}  // namespace runtime
