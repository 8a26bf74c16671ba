// Core Image operations in image space, and the filter patch around them.

#include "CompositionBuilder.h"

#include "runtime/patches/ImageOps.h"

#include <gtest/gtest.h>

using runtime::Image;
using test::Node;

namespace {

Image solid(QSize size, QColor color, QPoint origin = {})
{
    QImage pixels(size, QImage::Format_ARGB32);
    pixels.fill(color);
    return Image::fromRaster(pixels, origin);
}

TEST(ImageOps, CropKeepsImageSpaceCoordinates)
{
    QImage pixels(4, 4, QImage::Format_ARGB32);
    pixels.fill(Qt::red);
    pixels.setPixel(0, 3, qRgb(0, 0, 255));  // bottom-left in image space
    const Image image = Image::fromRaster(pixels, QPoint(10, 20));
    const Image cropped = runtime::cropImage(image, QRect(10, 20, 2, 2));
    EXPECT_EQ(cropped.extent(), QRect(10, 20, 2, 2));
    EXPECT_EQ(cropped.raster().pixel(0, 1), qRgb(0, 0, 255));
    EXPECT_TRUE(runtime::cropImage(image, QRect(100, 100, 5, 5)).isNull());  // nothing in common
    // A generator cropped becomes a finite raster of the crop.
    const Image green = runtime::generatedImage([](double, double) { return runtime::Color{0, 1, 0, 1}; });
    const Image patch = runtime::cropImage(green, QRect(-5, -5, 3, 2));
    EXPECT_EQ(patch.pixelSize(), QSize(3, 2));
    EXPECT_EQ(patch.raster().pixel(2, 1), qRgb(0, 255, 0));
}

TEST(ImageOps, AffineTransformMovesAndScalesTheExtent)
{
    const Image image = solid(QSize(10, 5), Qt::red);
    EXPECT_EQ(runtime::transformImage(image, QTransform::fromTranslate(7, -3)).extent(), QRect(7, -3, 10, 5));
    EXPECT_EQ(runtime::transformImage(image, QTransform::fromScale(2, 2)).extent(), QRect(0, 0, 20, 10));
    EXPECT_TRUE(runtime::transformImage(image, QTransform::fromScale(0, 1)).isNull());
}

TEST(ImageOps, BlurSpreadsByThreeDeviations)
{
    QImage dot(1, 1, QImage::Format_ARGB32);
    dot.fill(Qt::white);
    const Image blurred = runtime::blurImage(Image::fromRaster(dot), 4.0);
    EXPECT_EQ(blurred.extent(), QRect(-12, -12, 25, 25));
    const QImage& r = blurred.raster();
    EXPECT_GT(qAlpha(r.pixel(12, 12)), qAlpha(r.pixel(16, 12)));  // brightest in the middle
    EXPECT_EQ(qAlpha(r.pixel(0, 0)), 0);
    EXPECT_EQ(r.pixel(12, 8), r.pixel(12, 16));  // symmetric
}

TEST(ImageOps, SourceOverUnitesExtents)
{
    const Image top = solid(QSize(2, 2), Qt::red, QPoint(1, 1));
    const Image bottom = solid(QSize(2, 2), Qt::blue, QPoint(0, 0));
    const Image out = runtime::composeImages(top, bottom, QPainter::CompositionMode_SourceOver);
    EXPECT_EQ(out.extent(), QRect(0, 0, 3, 3));
    // Raster rows are top-down: image-space (1, 1) is raster (1, 1) of a 3×3 image.
    EXPECT_EQ(out.raster().pixel(1, 1), qRgb(255, 0, 0));
    EXPECT_EQ(out.raster().pixel(0, 2), qRgb(0, 0, 255));
    EXPECT_EQ(qAlpha(out.raster().pixel(2, 2)), 0);  // covered by neither
}

TEST(ImageOps, ColourMapsWorkOnStraightColours)
{
    const Image half = solid(QSize(1, 1), QColor(255, 0, 0, 128));
    const Image inverted =
        runtime::mapColors(half, [](const runtime::Color& c) { return runtime::Color{1 - c.red, 1 - c.green, 1 - c.blue, c.alpha}; });
    const QRgb p = qUnpremultiply(inverted.raster().pixel(0, 0));
    EXPECT_EQ(qRed(p), 0);
    EXPECT_EQ(qGreen(p), 255);
    EXPECT_EQ(qAlpha(p), 128);
}

TEST(ImageFilterPatch, GeneratorsCroppedIntoAnImage)
{
    Node gradient("QCImageFilter", "Gradient_1");
    gradient.identifier("CIRadialGradient").custom("inputCenter_X", 5.0).custom("inputCenter_Y", 5.0)
        .custom("inputRadius0", 1.0).custom("inputRadius1", 4.0)
        .custom("inputColor0", test::colorValue(1, 1, 1)).custom("inputColor1", test::colorValue(0, 0, 0));
    Node crop("QCImageFilter", "Crop_1");
    crop.identifier("CICrop").input("inputRectangle_X", 0.0).input("inputRectangle_Y", 0.0)
        .input("inputRectangle_Z", 10.0).input("inputRectangle_W", 10.0);
    Node invert("QCImageFilter", "Invert_1");
    invert.identifier("CIColorInvert");
    Node r = test::root();
    r.child(gradient).child(crop).child(invert);
    r.connect("Gradient_1", "outputImage", "Crop_1", "inputImage").connect("Crop_1", "outputImage", "Invert_1", "inputImage");
    r.publishOutput("Image", "Invert_1", "outputImage");
    auto c = test::load(r);
    EXPECT_TRUE(c->unsupportedClasses().isEmpty());
    runtime::Renderer renderer(c, QSize(8, 8));
    renderer.render(0);
    const QImage image = renderer.outputValue("Image").value<QImage>();
    ASSERT_EQ(image.size(), QSize(10, 10));
    EXPECT_EQ(image.pixel(5, 4), qRgb(0, 0, 0));        // the white centre, inverted
    EXPECT_EQ(image.pixel(0, 0), qRgb(255, 255, 255));  // the black outside, inverted
}

TEST(ImageFilterPatch, BadRectanglesGiveNoImage)
{
    Node constant("QCImageFilter", "Color_1");
    constant.identifier("CIConstantColorGenerator");
    Node crop("QCImageFilter", "Crop_1");
    crop.identifier("CICrop").input("inputRectangle_Z", 1e12).input("inputRectangle_W", 1e12);
    Node r = test::root();
    r.child(constant).child(crop).connect("Color_1", "outputImage", "Crop_1", "inputImage");
    r.publishOutput("Image", "Crop_1", "outputImage");
    runtime::Renderer renderer(test::load(r), QSize(8, 8));
    renderer.render(0);  // must not try to allocate a terapixel image
    EXPECT_FALSE(renderer.outputValue("Image").isValid());
}

}  // namespace
