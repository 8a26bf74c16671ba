// Geometry filters: tiles repeat and mirror where they should, angles turn
// counter-clockwise in degrees, scales give the right extent.

#include "FilterTestSupport.h"

#include "runtime/patches/ImageOps.h"

#include <cmath>
#include <numbers>

using runtime::Color;
using runtime::Image;
using namespace test;  // the filter helpers

namespace {

// Red on the left, blue on the right, 2 × 1 at the origin.
Image redBlue()
{
    QImage pixels(2, 1, QImage::Format_ARGB32);
    pixels.setPixel(0, 0, qRgb(255, 0, 0));
    pixels.setPixel(1, 0, qRgb(0, 0, 255));
    return Image::fromRaster(pixels);
}

// Every pixel a different colour, for checking where a filter reads from.
Image ramp(QRect extent)
{
    QImage pixels(extent.size(), QImage::Format_ARGB32);
    for (int y = 0; y < pixels.height(); ++y)
        for (int x = 0; x < pixels.width(); ++x) pixels.setPixel(x, y, qRgb(x * 255 / extent.width(), y * 255 / extent.height(), 128));
    return Image::fromRaster(pixels, extent.topLeft());
}

TEST(GeometryFilters, AffineTileRepeatsTheImageEverywhere)
{
    const Image tiles = applyFilter("CIAffineTile", {{"inputImage", redBlue()}});
    EXPECT_TRUE(tiles.isInfinite());
    EXPECT_TRUE(near(pixelAt(tiles, 2, 0), QColor(255, 0, 0)));
    EXPECT_TRUE(near(pixelAt(tiles, 3, 5), QColor(0, 0, 255)));
    EXPECT_TRUE(near(pixelAt(tiles, -1, -7), QColor(0, 0, 255)));
    EXPECT_TRUE(near(pixelAt(tiles, -100, 3), QColor(255, 0, 0)));
    // Scaled twice: two red columns, then two blue.
    const Image wide = applyFilter("CIAffineTile", {{"inputImage", redBlue()}, {"inputTransform_ScaleX", 2.0}});
    EXPECT_TRUE(near(pixelAt(wide, 0, 0), QColor(255, 0, 0), 70));
    EXPECT_TRUE(near(pixelAt(wide, 2, 0), QColor(0, 0, 255), 70));
    // Turned a quarter counter-clockwise, x becomes y: red below blue.
    const Image turned = applyFilter("CIAffineTile", {{"inputImage", redBlue()}, {"inputTransform_Rotate", 90.0}});
    EXPECT_TRUE(near(pixelAt(turned, 0, 0), QColor(255, 0, 0)));
    EXPECT_TRUE(near(pixelAt(turned, 0, 1), QColor(0, 0, 255)));
}

TEST(GeometryFilters, AffineClampRepeatsTheEdgePixelsOutward)
{
    const Image clamped = applyFilter("CIAffineClamp", {{"inputImage", redBlue()}});
    EXPECT_TRUE(clamped.isInfinite());
    EXPECT_TRUE(near(pixelAt(clamped, -50, 0), QColor(255, 0, 0)));   // left of it: the left pixel
    EXPECT_TRUE(near(pixelAt(clamped, 80, -30), QColor(0, 0, 255)));  // right and below: the right one
    EXPECT_TRUE(near(pixelAt(clamped, 1, 40), QColor(0, 0, 255)));
    // Moved 10 pixels right: the red edge now reaches x = 10.
    const Image moved = applyFilter("CIAffineClamp", {{"inputImage", redBlue()}, {"inputTransform_TranslateX", 10.0}});
    EXPECT_TRUE(near(pixelAt(moved, 5, 0), QColor(255, 0, 0)));
    EXPECT_TRUE(near(pixelAt(moved, 12, 0), QColor(0, 0, 255)));
}

TEST(GeometryFilters, LanczosScaleSetsTheExtent)
{
    const Image image = solidImage(QSize(100, 50), Qt::red, QPoint(10, 20));
    const Image half = applyFilter("CILanczosScaleTransform", {{"inputImage", image}, {"inputScale", 0.5}});
    EXPECT_EQ(half.extent(), QRect(5, 10, 50, 25));
    EXPECT_TRUE(near(pixelAt(half, 20, 20), QColor(255, 0, 0)));
    // The aspect ratio stretches x only.
    const Image stretched = applyFilter("CILanczosScaleTransform", {{"inputImage", image}, {"inputScale", 0.5}, {"inputAspectRatio", 2.0}});
    EXPECT_EQ(stretched.extent(), QRect(10, 10, 100, 25));
    EXPECT_TRUE(applyFilter("CILanczosScaleTransform", {{"inputImage", image}, {"inputScale", 0.0}}).isNull());
}

TEST(GeometryFilters, TriangleTileMirrorsAcrossTheTrianglesSides)
{
    const Image source = ramp(QRect(-20, -20, 40, 40));
    const Image tiles = applyFilter("CITriangleTile", {{"inputImage", source}, {"inputCenter_X", 0.0}, {"inputCenter_Y", 0.0},
                                                       {"inputWidth", 16.0}});
    EXPECT_TRUE(tiles.isInfinite());
    // Inside the triangle (0, 0), (16, 0), (8, 13.9) the source shows.
    EXPECT_TRUE(near(pixelAt(tiles, 8, 4), pixelAt(source, 8, 4), 1));
    // Its base lies on y = 0, a mirror.
    for (int x = 2; x < 14; x += 3) EXPECT_TRUE(near(pixelAt(tiles, x, -1), pixelAt(tiles, x, 0), 1)) << x;
    // Turned a quarter counter-clockwise the base lies on x = 0 and the
    // triangle above the centre, to its left.
    const Image turned = applyFilter("CITriangleTile", {{"inputImage", source}, {"inputCenter_X", 0.0}, {"inputCenter_Y", 0.0},
                                                        {"inputWidth", 16.0}, {"inputAngle", 90.0}});
    for (int y = 2; y < 14; y += 3) EXPECT_TRUE(near(pixelAt(turned, -1, y), pixelAt(turned, 0, y), 1)) << y;
    EXPECT_TRUE(near(pixelAt(turned, -4, 8), pixelAt(source, -4, 8), 1));
    EXPECT_FALSE(near(pixelAt(turned, 4, 8), pixelAt(source, 4, 8), 1));
}

TEST(GeometryFilters, KaleidoscopeRepeatsAWedgeAroundTheCentre)
{
    const Image source = ramp(QRect(-20, -20, 40, 40));
    const Image k = applyFilter("CIKaleidoscope", {{"inputImage", source}, {"inputCenter_X", 0.0}, {"inputCenter_Y", 0.0}});
    EXPECT_TRUE(k.isInfinite());
    // The first wedge reaches 20 / cos 30° = 23.1 from the centre into the
    // source, and so does every other.
    EXPECT_GT(pixelAt(k, 0, 22).alpha(), 0);
    EXPECT_EQ(pixelAt(k, 0, 24).alpha(), 0);
    // The first wedge (0° to 30°) is the source itself.
    EXPECT_TRUE(near(pixelAt(k, 12, 3), pixelAt(source, 12, 3), 1));
    // Twelve mirrored wedges: x-axis is a mirror, and a sixth of a turn
    // repeats the pattern.
    EXPECT_TRUE(near(pixelAt(k, 12, -4), pixelAt(k, 12, 3), 1));
    const auto at = [&](double degrees) {
        const double a = degrees * std::numbers::pi / 180;
        return pixelAt(k, int(std::floor(15 * std::cos(a))), int(std::floor(15 * std::sin(a))));
    };
    EXPECT_TRUE(near(at(10), at(70), 20));
    EXPECT_TRUE(near(at(10), at(50), 20));  // mirrored across 30°
    EXPECT_FALSE(near(at(2), at(28), 20));
}

}  // namespace
