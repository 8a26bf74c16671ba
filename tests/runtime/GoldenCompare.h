#pragma once
// Comparing a rendered picture with a golden image: the golden image read
// (or rewritten, with VELLORAN_UPDATE_GOLDENS=1), and the pixels that differ
// by more than a tolerance counted.

#include <QDir>
#include <QFileInfo>
#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace test {

inline int channelDistance(QRgb p, QRgb q)
{
    return std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q)),
                     std::abs(qAlpha(p) - qAlpha(q))});
}

// The golden image at `path` as premultiplied ARGB32; null after
// rewriting it from `actual` when asked to (the caller then returns).
inline QImage goldenOrUpdate(const QString& path, const QImage& actual)
{
    if (qEnvironmentVariableIsSet("VELLORAN_UPDATE_GOLDENS")) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        EXPECT_TRUE(actual.save(path)) << path.toStdString();
        return {};
    }
    const QImage golden(path);
    EXPECT_FALSE(golden.isNull()) << "missing golden image " << path.toStdString();
    return golden.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

// Pixels differing by more than `tolerance` in a channel, except those
// `excused(x, y, distance)` lets through. Images of the same size.
template <class Excused>
int differingPixels(const QImage& actual, const QImage& golden, int tolerance, Excused&& excused)
{
    int bad = 0;
    for (int y = 0; y < actual.height(); ++y)
        for (int x = 0; x < actual.width(); ++x) {
            const int d = channelDistance(actual.pixel(x, y), golden.pixel(x, y));
            if (d > tolerance && !excused(x, y, d)) ++bad;
        }
    return bad;
}

}  // namespace test
