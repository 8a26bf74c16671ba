// Compositing filters: Porter–Duff results where the images overlap and
// where they do not, and the extents that follow.

#include "FilterTestSupport.h"

using runtime::Image;
using namespace test;  // the filter helpers

namespace {

// A red source over the upper right of a half-transparent blue background:
// they share the pixel (1, 1) only.
const Image kSource = solidImage(QSize(2, 2), QColor(255, 0, 0), QPoint(1, 1));
const Image kBackground = solidImage(QSize(2, 2), QColor(0, 0, 255, 128), QPoint(0, 0));

Image composite(const char* name)
{
    return applyFilter(name, {{"inputImage", kSource}, {"inputBackgroundImage", kBackground}});
}

TEST(CompositingFilters, SourceInKeepsTheSourceWhereTheBackgroundIs)
{
    const Image out = composite("CISourceInCompositing");
    EXPECT_EQ(out.extent(), QRect(1, 1, 1, 1));
    EXPECT_TRUE(near(pixelAt(out, 1, 1), QColor(255, 0, 0, 128)));
    EXPECT_TRUE(applyFilter("CISourceInCompositing", {{"inputImage", kSource}}).isNull());
}

TEST(CompositingFilters, SourceAtopDrawsOnlyOverTheBackground)
{
    const Image out = composite("CISourceAtopCompositing");
    EXPECT_EQ(out.extent(), QRect(0, 0, 2, 2));
    // S·Da + D·(1 − Sa): the source's colour at the background's alpha.
    EXPECT_TRUE(near(pixelAt(out, 1, 1), QColor(255, 0, 0, 128)));
    EXPECT_TRUE(near(pixelAt(out, 0, 0), QColor(0, 0, 255, 128)));
}

TEST(CompositingFilters, SourceOutKeepsTheSourceWhereTheBackgroundIsNot)
{
    const Image out = composite("CISourceOutCompositing");
    EXPECT_EQ(out.extent(), QRect(1, 1, 2, 2));
    EXPECT_TRUE(near(pixelAt(out, 1, 1), QColor(255, 0, 0, 127)));
    EXPECT_TRUE(near(pixelAt(out, 2, 2), QColor(255, 0, 0)));
    EXPECT_EQ(applyFilter("CISourceOutCompositing", {{"inputImage", kSource}}), kSource);
}

TEST(CompositingFilters, ScreenNeverDarkens)
{
    const Image grey = solidImage(QSize(2, 2), QColor(128, 128, 128));
    const Image out = applyFilter("CIScreenBlendMode", {{"inputImage", grey}, {"inputBackgroundImage", kBackground}});
    EXPECT_EQ(out.extent(), QRect(0, 0, 2, 2));
    // s + d − s·d on each premultiplied channel: blue 0.5 + 0.5 − 0.25.
    const QColor mixed = pixelAt(out, 0, 0);
    EXPECT_EQ(mixed.alpha(), 255);
    EXPECT_TRUE(near(mixed, QColor(128, 128, 192)));
    const Image wider = applyFilter("CIScreenBlendMode", {{"inputImage", kSource}, {"inputBackgroundImage", kBackground}});
    EXPECT_EQ(wider.extent(), QRect(0, 0, 3, 3));
}

TEST(CompositingFilters, BlendWithMaskPicksByTheMasksLuminance)
{
    QImage maskPixels(2, 1, QImage::Format_ARGB32);
    maskPixels.setPixel(0, 0, qRgb(255, 255, 255));
    maskPixels.setPixel(1, 0, qRgb(0, 0, 0));
    const Image mask = Image::fromRaster(maskPixels);
    const Image red = solidImage(QSize(2, 1), Qt::red), green = solidImage(QSize(2, 1), Qt::green);
    const Image out = applyFilter("CIBlendWithMask", {{"inputImage", red}, {"inputBackgroundImage", green}, {"inputMaskImage", mask}});
    EXPECT_TRUE(near(pixelAt(out, 0, 0), QColor(255, 0, 0)));  // white: the image
    EXPECT_TRUE(near(pixelAt(out, 1, 0), QColor(0, 255, 0)));  // black: the background
    const Image grey = solidImage(QSize(2, 1), QColor(64, 64, 64));
    const Image quarter = applyFilter("CIBlendWithMask", {{"inputImage", red}, {"inputBackgroundImage", green}, {"inputMaskImage", grey}});
    EXPECT_TRUE(near(pixelAt(quarter, 1, 0), QColor(64, 191, 0)));
}

TEST(CompositingFilters, DissolveFadesFromImageToTarget)
{
    const Image red = solidImage(QSize(2, 2), Qt::red), blue = solidImage(QSize(2, 2), Qt::blue, QPoint(1, 0));
    EXPECT_TRUE(near(pixelAt(applyFilter("CIDissolveTransition", {{"inputImage", red}, {"inputTargetImage", blue}}), 1, 0), QColor(255, 0, 0)));
    const Image quarter = applyFilter("CIDissolveTransition", {{"inputImage", red}, {"inputTargetImage", blue}, {"inputTime", 0.25}});
    EXPECT_EQ(quarter.extent(), QRect(0, 0, 3, 2));
    EXPECT_TRUE(near(pixelAt(quarter, 1, 0), QColor(191, 0, 64)));
    // Only the image there: it fades out.
    EXPECT_TRUE(near(pixelAt(quarter, 0, 0), QColor(255, 0, 0, 191)));
}

}  // namespace
