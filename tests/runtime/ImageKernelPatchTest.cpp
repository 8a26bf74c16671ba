// Samplers as kernels see them, and the kernel patch around a program.

#include "CompositionBuilder.h"

#include "runtime/kernel/KernelProgram.h"

#include <gtest/gtest.h>

using runtime::Image;
using runtime::kernel::Sampler;
using runtime::kernel::Vec;
using test::Node;

namespace {

// A 2 × 2 image at image-space (10, 20): red and green on the bottom row,
// blue and white on the top.
Image quad()
{
    QImage pixels(2, 2, QImage::Format_ARGB32);
    pixels.setPixel(0, 1, qRgb(255, 0, 0));
    pixels.setPixel(1, 1, qRgb(0, 255, 0));
    pixels.setPixel(0, 0, qRgb(0, 0, 255));
    pixels.setPixel(1, 0, qRgb(255, 255, 255));
    return Image::fromRaster(pixels, QPoint(10, 20));
}

TEST(KernelSampler, ReadsInSamplerSpaceFromTheLowerLeftCorner)
{
    const Sampler s(quad(), {}, Sampler::Filter::Linear, Sampler::Wrap::Transparent);
    const Vec red = s.sample(0.5f, 0.5f);
    EXPECT_FLOAT_EQ(red.v[0], 1.0f);
    EXPECT_FLOAT_EQ(red.v[1], 0.0f);
    const Vec blue = s.sample(0.5f, 1.5f);
    EXPECT_FLOAT_EQ(blue.v[2], 1.0f);
    // Halfway between red and green centres: both halves.
    const Vec between = s.sample(1.0f, 0.5f);
    EXPECT_FLOAT_EQ(between.v[0], 0.5f);
    EXPECT_FLOAT_EQ(between.v[1], 0.5f);
    // At the edge the outside (transparent) blends in; far out is nothing.
    EXPECT_FLOAT_EQ(s.sample(0.0f, 0.5f).v[3], 0.5f);
    EXPECT_FLOAT_EQ(s.sample(-5.0f, 0.5f).v[3], 0.0f);
    const Vec extent = s.extent();
    EXPECT_EQ(QRectF(extent.v[0], extent.v[1], extent.v[2], extent.v[3]), QRectF(10, 20, 2, 2));
}

TEST(KernelSampler, NearestAndClampModes)
{
    const Sampler nearest(quad(), {}, Sampler::Filter::Nearest, Sampler::Wrap::ClampToEdge);
    EXPECT_FLOAT_EQ(nearest.sample(1.1f, 0.5f).v[1], 1.0f);     // green, not a blend
    EXPECT_FLOAT_EQ(nearest.sample(-50.0f, 0.5f).v[0], 1.0f);   // the red edge pixel
    EXPECT_FLOAT_EQ(nearest.sample(50.0f, 50.0f).v[1], 1.0f);   // the white corner
    EXPECT_FLOAT_EQ(nearest.sample(std::nanf(""), 0.0f).v[3], 0.0f);
}

TEST(KernelSampler, SamplerCoordinatesFollowTheImage)
{
    QString error;
    // Flips the image vertically through sampler space, as a reflection does.
    const auto program = runtime::kernel::KernelProgram::compile(
        "kernel vec4 flip(sampler image) { vec2 v = samplerCoord(image); v.y = samplerSize(image).y - v.y; return sample(image, v); }",
        &error);
    ASSERT_TRUE(program) << error.toStdString();
    const Image image = quad();
    QImage out(2, 2, QImage::Format_ARGB32_Premultiplied);
    ASSERT_TRUE(program->render({Vec::splat(0)}, {Sampler(image, {}, Sampler::Filter::Linear, Sampler::Wrap::Transparent)},
                                image.extent(), out));
    EXPECT_EQ(out.pixel(0, 0), qRgb(255, 0, 0));  // red is on top now
    EXPECT_EQ(out.pixel(1, 1), qRgb(255, 255, 255));
}

const char* const kTint = R"(
kernel vec4 tint(sampler image, __color color, vec2 offset, float amount)
{
    vec4 p = sample(image, samplerCoord(image) + offset);
    return mix(p, p * color, amount);
})";

Node imageSource()
{
    Node colour("QCImageFilter", "Color_1");
    colour.identifier("CIConstantColorGenerator").custom("inputColor", test::colorValue(1, 1, 1));
    return colour;
}

TEST(ImageKernelPatch, ParametersBecomePortsAndTheResultKeepsTheInputExtent)
{
    Node colour = imageSource();
    Node crop("QCImageFilter", "Crop_1");
    crop.identifier("CICrop").input("inputRectangle_X", 3.0).input("inputRectangle_Y", 4.0)
        .input("inputRectangle_Z", 6.0).input("inputRectangle_W", 5.0);
    Node kernel("QCImageKernel", "ImageKernel_1");
    kernel.state("sourceCode", std::string(kTint)).state("advancedMode", false)
        .custom("color", test::colorValue(1, 0, 0, 1)).custom("amount", 1.0).custom("offset_X", 0.0);
    Node r = test::root();
    r.child(colour).child(crop).child(kernel);
    r.connect("Color_1", "outputImage", "Crop_1", "inputImage").connect("Crop_1", "outputImage", "ImageKernel_1", "image");
    r.publishInput("amount", "ImageKernel_1", "amount").publishInput("shift", "ImageKernel_1", "offset_X");
    r.publishOutput("Image", "ImageKernel_1", "outputImage");
    auto c = test::load(r);
    ASSERT_TRUE(c);
    EXPECT_TRUE(c->unsupportedClasses().isEmpty());
    EXPECT_TRUE(c->problems().isEmpty()) << test::problemsText(*c).toStdString();

    runtime::Renderer renderer(c, QSize(8, 8));
    renderer.render(0);
    QImage image = renderer.outputValue("Image").value<QImage>();
    ASSERT_EQ(image.size(), QSize(6, 5));
    EXPECT_EQ(image.pixel(2, 2), qRgb(255, 0, 0));  // white tinted red

    renderer.setInputValue("amount", 0.0);
    renderer.setInputValue("shift", 1.0);  // reads one pixel to the right: the last column runs off the image
    renderer.render(0);
    image = renderer.outputValue("Image").value<QImage>();
    EXPECT_EQ(image.pixel(2, 2), qRgb(255, 255, 255));
    EXPECT_EQ(qAlpha(image.pixel(5, 2)), 0);
}

// What a crop to `rect` (image space) shows of a kernel without image inputs.
QImage cropOfGenerator(const Node& kernel, const QRect& rect)
{
    Node crop("QCImageFilter", "Crop_1");
    crop.identifier("CICrop").input("inputRectangle_X", double(rect.x())).input("inputRectangle_Y", double(rect.y()))
        .input("inputRectangle_Z", double(rect.width())).input("inputRectangle_W", double(rect.height()));
    Node r = test::root();
    r.child(kernel).child(crop).connect("ImageKernel_1", "outputImage", "Crop_1", "inputImage");
    r.publishOutput("Image", "Crop_1", "outputImage");
    runtime::Renderer renderer(test::load(r), QSize(8, 8));
    renderer.render(0);
    return renderer.outputValue("Image").value<QImage>();
}

TEST(ImageKernelPatch, KernelsWithoutImagesGenerateEverywhere)
{
    Node kernel("QCImageKernel", "ImageKernel_1");
    kernel.state("sourceCode", std::string("kernel vec4 stripes(float width) { return vec4(step(width, mod(destCoord().x, 2.0 * width))); }"))
        .custom("width", 2.0);
    const QImage image = cropOfGenerator(kernel, QRect(-4, 0, 8, 1));
    ASSERT_EQ(image.size(), QSize(8, 1));
    // x from -4: mod(-3.5, 4) = 0.5 is in the lower half of its period,
    // mod(-1.5, 4) = 2.5 in the upper.
    EXPECT_EQ(image.pixel(0, 0), qRgba(0, 0, 0, 0));
    EXPECT_EQ(image.pixel(2, 0), qRgba(255, 255, 255, 255));
    EXPECT_EQ(image.pixel(4, 0), qRgba(0, 0, 0, 0));
    EXPECT_EQ(image.pixel(6, 0), qRgba(255, 255, 255, 255));
}

// A generator read by a kernel: the result is infinite too, and what a crop
// asks of it is computed, neighbours included.
TEST(ImageKernelPatch, GeneratorInputsGiveAnInfiniteResult)
{
    Node gradient("QCImageFilter", "Gradient_1");
    gradient.identifier("CILinearGradient").custom("inputPoint0_X", 0.0).custom("inputPoint1_X", 100.0)
        .custom("inputPoint0_Y", 0.0).custom("inputPoint1_Y", 0.0)
        .custom("inputColor0", test::colorValue(0, 0, 0)).custom("inputColor1", test::colorValue(1, 1, 1));
    Node kernel("QCImageKernel", "ImageKernel_1");
    // Reads the gradient 20 pixels to the right of each pixel.
    kernel.state("sourceCode", std::string("kernel vec4 k(__table sampler g) { return sample(g, samplerCoord(g) + vec2(20.0, 0.0)); }"));
    Node crop("QCImageFilter", "Crop_1");
    crop.identifier("CICrop").input("inputRectangle_X", 40.0).input("inputRectangle_Y", 0.0)
        .input("inputRectangle_Z", 10.0).input("inputRectangle_W", 2.0);
    Node r = test::root();
    r.child(gradient).child(kernel).child(crop);
    r.connect("Gradient_1", "outputImage", "ImageKernel_1", "g").connect("ImageKernel_1", "outputImage", "Crop_1", "inputImage");
    r.publishOutput("Image", "Crop_1", "outputImage");
    runtime::Renderer renderer(test::load(r), QSize(8, 8));
    renderer.render(0);
    const QImage image = renderer.outputValue("Image").value<QImage>();
    ASSERT_EQ(image.size(), QSize(10, 2));
    // x = 40.5 reads the gradient at 60.5: 60 % grey (give or take rounding).
    EXPECT_NEAR(qRed(image.pixel(0, 0)), 154, 2);
    EXPECT_NEAR(qRed(image.pixel(9, 1)), 177, 2);
}

TEST(ImageKernelPatch, AKernelThatNeverEndsGivesNoImage)
{
    Node kernel("QCImageKernel", "ImageKernel_1");
    kernel.state("sourceCode", std::string("kernel vec4 k(float x) { while (x < 1.0) { x = x * 1.0; } return vec4(x); }"));
    // The crop of the stopped kernel holds only transparent pixels.
    const QImage image = cropOfGenerator(kernel, QRect(0, 0, 4, 4));
    ASSERT_EQ(image.size(), QSize(4, 4));
    EXPECT_EQ(image.pixel(1, 1), 0u);
}

TEST(ImageKernelPatch, MissingImagesAndBadKernelsGiveNoImage)
{
    Node kernel("QCImageKernel", "ImageKernel_1");
    kernel.state("sourceCode", std::string(kTint));
    Node broken("QCImageKernel", "ImageKernel_2");
    broken.state("sourceCode", std::string("kernel vec4 k( { }"));
    Node advanced("QCImageKernel", "ImageKernel_3");
    advanced.state("sourceCode", std::string("function __image main() {}")).state("advancedMode", true);
    Node r = test::root();
    r.child(kernel).child(broken).child(advanced);
    r.publishOutput("Image", "ImageKernel_1", "outputImage").publishOutput("Broken", "ImageKernel_2", "outputImage");
    auto c = test::load(r);
    ASSERT_TRUE(c);
    const QString problems = test::problemsText(*c);
    EXPECT_TRUE(problems.contains("ImageKernel_2: the kernel does not compile: line 1:")) << problems.toStdString();
    EXPECT_TRUE(problems.contains("ImageKernel_3: kernels in advanced (JavaScript) mode are not supported")) << problems.toStdString();
    runtime::Renderer renderer(c, QSize(8, 8));
    renderer.render(0);
    EXPECT_FALSE(renderer.outputValue("Image").isValid());  // no image connected
    EXPECT_FALSE(renderer.outputValue("Broken").isValid());
}

TEST(ImageKernelPatch, SamplerOptionsAddModePorts)
{
    Node colour = imageSource();
    Node crop("QCImageFilter", "Crop_1");
    crop.identifier("CICrop").input("inputRectangle_Z", 2.0).input("inputRectangle_W", 2.0);
    Node kernel("QCImageKernel", "ImageKernel_1");
    kernel.state("sourceCode", std::string("kernel vec4 shift(sampler image) { return sample(image, samplerCoord(image) + vec2(5.0, 0.0)); }"))
        .state("showSamplerOptions", true).custom("image-WrapMode", 1.0).custom("image-FilterMode", 1.0);
    Node r = test::root();
    r.child(colour).child(crop).child(kernel);
    r.connect("Color_1", "outputImage", "Crop_1", "inputImage").connect("Crop_1", "outputImage", "ImageKernel_1", "image");
    r.publishOutput("Image", "ImageKernel_1", "outputImage");
    auto c = test::load(r);
    EXPECT_TRUE(c->problems().isEmpty()) << test::problemsText(*c).toStdString();
    runtime::Renderer renderer(c, QSize(8, 8));
    renderer.render(0);
    // Clamped to the edge, a read beyond the image still finds white.
    EXPECT_EQ(renderer.outputValue("Image").value<QImage>().pixel(1, 1), qRgb(255, 255, 255));
}

}  // namespace
