// Blurs, glows and sharpening: the shape and reach of each kernel, and
// known values on flat and stepped images.

#include "FilterTestSupport.h"

#include <set>

using runtime::Image;
using namespace test;  // the filter helpers

namespace {

const Image kDot = solidImage(QSize(1, 1), Qt::white);

// Grey `left` on x < 20 and `right` from 20 on, 40 × 40 at the origin.
Image step(int left, int right)
{
    QImage pixels(40, 40, QImage::Format_ARGB32);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 40; ++x) pixels.setPixel(x, y, x < 20 ? qRgb(left, left, left) : qRgb(right, right, right));
    return Image::fromRaster(pixels);
}

TEST(BlurFilters, BoxBlurSpreadsEvenlyOverASquare)
{
    const Image out = applyFilter("CIBoxBlur", {{"inputImage", kDot}, {"inputRadius", 2.0}});
    EXPECT_EQ(out.extent(), QRect(-2, -2, 5, 5));
    EXPECT_EQ(pixelAt(out, -2, -2).alpha(), 10);  // 255 / 25
    EXPECT_EQ(pixelAt(out, 2, 0).alpha(), 10);
    EXPECT_EQ(applyFilter("CIBoxBlur", {{"inputImage", kDot}}).extent(), QRect(-10, -10, 21, 21));  // default radius 10
}

TEST(BlurFilters, DiscBlurIsRound)
{
    const Image out = applyFilter("CIDiscBlur", {{"inputImage", kDot}, {"inputRadius", 3.0}});
    EXPECT_EQ(out.extent(), QRect(-3, -3, 7, 7));
    const int inside = pixelAt(out, 0, 0).alpha();
    EXPECT_GT(inside, 0);
    EXPECT_EQ(pixelAt(out, 3, 0).alpha(), inside);
    EXPECT_EQ(pixelAt(out, 0, -3).alpha(), inside);
    EXPECT_EQ(pixelAt(out, 2, 2).alpha(), inside);
    EXPECT_EQ(pixelAt(out, 3, 3).alpha(), 0);  // the corner is outside the disc
    EXPECT_EQ(applyFilter("CIDiscBlur", {{"inputImage", kDot}}).extent(), QRect(-8, -8, 17, 17));  // default radius 8
}

TEST(BlurFilters, MotionBlurRunsAlongTheAngleInDegrees)
{
    const Image flat = applyFilter("CIMotionBlur", {{"inputImage", kDot}, {"inputRadius", 5.0}});
    EXPECT_EQ(flat.extent(), QRect(-5, 0, 11, 1));
    EXPECT_GT(pixelAt(flat, -4, 0).alpha(), 0);
    EXPECT_GT(pixelAt(flat, 4, 0).alpha(), 0);
    const Image upright = applyFilter("CIMotionBlur", {{"inputImage", kDot}, {"inputRadius", 5.0}, {"inputAngle", 90.0}});
    EXPECT_EQ(upright.extent(), QRect(0, -5, 1, 11));
    EXPECT_GT(pixelAt(upright, 0, 4).alpha(), 0);
    // A 45° blur leaves the other diagonal dark.
    const Image diagonal = applyFilter("CIMotionBlur", {{"inputImage", kDot}, {"inputRadius", 5.0}, {"inputAngle", 45.0}});
    EXPECT_GT(pixelAt(diagonal, 2, 2).alpha(), 0);
    EXPECT_EQ(pixelAt(diagonal, -2, 2).alpha(), 0);
}

TEST(BlurFilters, ZoomBlurStreaksAwayFromTheCentre)
{
    // A dot 50 px right of the default centre (150, 150); amount 20.
    const Image dot = solidImage(QSize(1, 1), Qt::white, QPoint(200, 150));
    const Image out = applyFilter("CIZoomBlur", {{"inputImage", dot}});
    EXPECT_GT(pixelAt(out, 205, 150).alpha(), 0);
    EXPECT_GT(pixelAt(out, 210, 150).alpha(), 0);
    EXPECT_EQ(pixelAt(out, 195, 150).alpha(), 0);
    EXPECT_EQ(pixelAt(out, 205, 155).alpha(), 0);
    EXPECT_TRUE(out.extent().contains(QRect(200, 150, 12, 1)));
    // Flat areas stay flat.
    const Image flat = applyFilter("CIZoomBlur", {{"inputImage", solidImage(QSize(300, 300), Qt::red)}});
    EXPECT_TRUE(near(pixelAt(flat, 200, 100), QColor(255, 0, 0), 1));
}

TEST(StylizeFilters, BloomAddsTheBlurWithinTheExtent)
{
    const Image grey = solidImage(QSize(200, 200), QColor(128, 128, 128));
    const Image out = applyFilter("CIBloom", {{"inputImage", grey}});
    EXPECT_EQ(out.extent(), QRect(0, 0, 200, 200));
    // 0.5 + 0.5 × 0.5 in the middle, where the blur is still flat.
    EXPECT_TRUE(near(pixelAt(out, 100, 100), QColor(192, 192, 192, 255)));
}

TEST(StylizeFilters, GloomDullsHighlightsBesideDarkness)
{
    const Image out = applyFilter("CIGloom", {{"inputImage", step(0, 255)}});
    EXPECT_EQ(out.extent(), QRect(0, 0, 40, 40));
    EXPECT_LT(pixelAt(out, 20, 20).red(), 200);   // white next to black
    EXPECT_EQ(pixelAt(out, 20, 20).alpha(), 255);  // the alpha stays
    const Image flat = applyFilter("CIGloom", {{"inputImage", solidImage(QSize(40, 40), Qt::white)}});
    EXPECT_TRUE(near(pixelAt(flat, 20, 20), QColor(255, 255, 255), 1));
}

TEST(StylizeFilters, SharpeningOvershootsAtEdgesAndLeavesFlatAreas)
{
    for (const char* name : {"CIUnsharpMask", "CISharpenLuminance"}) {
        const Image out = applyFilter(name, {{"inputImage", step(64, 192)}});
        EXPECT_EQ(out.extent(), QRect(0, 0, 40, 40)) << name;
        EXPECT_GT(pixelAt(out, 20, 20).red(), 194) << name;  // bright side of the edge
        EXPECT_LT(pixelAt(out, 19, 20).red(), 62) << name;   // dark side
        EXPECT_TRUE(near(pixelAt(out, 35, 20), QColor(192, 192, 192), 1)) << name;
        const QColor edge = pixelAt(out, 20, 20);
        EXPECT_EQ(edge.red(), edge.blue()) << name;  // grey stays grey
    }
    // Luminance sharpening moves all channels alike, so red beside black
    // gains green and blue.
    QImage pixels(40, 1, QImage::Format_ARGB32);
    for (int x = 0; x < 40; ++x) pixels.setPixel(x, 0, x < 20 ? qRgb(0, 0, 0) : qRgb(255, 0, 0));
    const Image redEdge = applyFilter("CISharpenLuminance", {{"inputImage", Image::fromRaster(pixels)}});
    EXPECT_GT(pixelAt(redEdge, 20, 0).green(), 0);
}

TEST(StylizeFilters, HeightFieldRisesFromTheMasksEdge)
{
    QImage pixels(80, 80, QImage::Format_ARGB32);
    pixels.fill(Qt::transparent);
    for (int y = 20; y < 60; ++y)
        for (int x = 20; x < 60; ++x) pixels.setPixel(x, y, qRgb(255, 255, 255));
    const Image out = applyFilter("CIHeightFieldFromMask", {{"inputImage", Image::fromRaster(pixels)}});
    EXPECT_EQ(out.extent(), QRect(0, 0, 80, 80));
    EXPECT_TRUE(near(pixelAt(out, 40, 40), QColor(255, 255, 255), 3));
    EXPECT_TRUE(near(pixelAt(out, 5, 5), QColor(0, 0, 0), 0));  // outside: height 0, opaque
    // Rising from the edge inward, over about the radius (10).
    const int edge = pixelAt(out, 20, 40).red(), inside = pixelAt(out, 22, 40).red(), deep = pixelAt(out, 30, 40).red();
    EXPECT_LT(edge, 120);
    EXPECT_LT(edge, inside);
    EXPECT_LT(inside, deep);
}

TEST(StylizeFilters, CrystallizeFillsCellsWithSourceColours)
{
    QImage pixels(100, 100, QImage::Format_ARGB32);
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x) pixels.setPixel(x, y, qRgb(x * 255 / 99, 0, 0));
    const Image out = applyFilter("CICrystallize", {{"inputImage", Image::fromRaster(pixels)}});
    EXPECT_EQ(out.extent(), QRect(0, 0, 100, 100));
    // Cells of about 20 px: far fewer colours than columns, each one of the
    // source's own.
    std::set<QRgb> colours;
    const QImage& raster = out.raster();
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x) colours.insert(raster.pixel(x, y));
    EXPECT_LT(colours.size(), 60u);
    EXPECT_GT(colours.size(), 5u);
    for (QRgb c : colours) EXPECT_EQ(qGreen(c), 0);
}

}  // namespace
