#pragma once
// Runs a Core Image filter from the patch's table on images made in the
// test, and reads pixels back in image space (y up).

#include "runtime/patches/filters/FilterDefinition.h"

#include <QColor>
#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace test {

// The filter with its defaults, the given ports set. A key the filter does
// not have fails the test.
inline runtime::Image applyFilter(const char* name, const runtime::FilterValues& values = {}, bool normalized = false)
{
    const runtime::FilterDefinition* filter = runtime::findFilterDefinition(QString::fromLatin1(name));
    if (!filter) {
        ADD_FAILURE() << name << " is not in the table";
        return {};
    }
    for (const auto& entry : values) {
        const char* key = entry.first;
        if (std::none_of(filter->ports.begin(), filter->ports.end(), [key](const auto& p) { return std::strcmp(p.key, key) == 0; }))
            ADD_FAILURE() << name << " has no port " << key;
    }
    return runtime::applyFilter(*filter, values, normalized);
}

// A raster of one colour whose lower-left pixel is at `origin`.
inline runtime::Image solidImage(QSize size, QColor color, QPoint origin = {})
{
    QImage pixels(size, QImage::Format_ARGB32);
    pixels.fill(color);
    return runtime::Image::fromRaster(pixels, origin);
}

// The straight colour of the image-space pixel whose lower-left corner is
// (x, y); transparent where the image has none.
inline QColor pixelAt(const runtime::Image& image, int x, int y)
{
    if (image.isNull()) return QColor(0, 0, 0, 0);
    const QRgb p = qUnpremultiply(image.renderRegion(QRect(x, y, 1, 1)).pixel(0, 0));
    return QColor(qRed(p), qGreen(p), qBlue(p), qAlpha(p));
}

// Channels within `tolerance` of each other (8-bit steps).
inline ::testing::AssertionResult near(const QColor& actual, const QColor& expected, int tolerance = 2)
{
    const auto close = [&](int a, int b) { return std::abs(a - b) <= tolerance; };
    if (close(actual.red(), expected.red()) && close(actual.green(), expected.green()) && close(actual.blue(), expected.blue()) &&
        close(actual.alpha(), expected.alpha()))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got " << actual.name(QColor::HexArgb).toStdString() << ", expected "
                                         << expected.name(QColor::HexArgb).toStdString();
}

}  // namespace test
