// Colour filters: known pixel values for the defaults and for settings that
// would show a formula turned the wrong way.

#include "FilterTestSupport.h"

using runtime::Color;
using runtime::Image;
using namespace test;  // the filter helpers

namespace {

const Image kRed = solidImage(QSize(2, 2), QColor(255, 0, 0));
const Image kGrey = solidImage(QSize(2, 2), QColor(128, 128, 128));

TEST(ColorFilters, HueAdjustTurnsRedTowardGreenInDegrees)
{
    EXPECT_TRUE(near(pixelAt(applyFilter("CIHueAdjust", {{"inputImage", kRed}}), 0, 0), QColor(255, 0, 0)));
    EXPECT_TRUE(near(pixelAt(applyFilter("CIHueAdjust", {{"inputImage", kRed}, {"inputAngle", 120.0}}), 0, 0), QColor(0, 255, 0)));
    EXPECT_TRUE(near(pixelAt(applyFilter("CIHueAdjust", {{"inputImage", kRed}, {"inputAngle", -120.0}}), 1, 1), QColor(0, 0, 255)));
    // Grey lies on the axis of the turn.
    EXPECT_TRUE(near(pixelAt(applyFilter("CIHueAdjust", {{"inputImage", kGrey}, {"inputAngle", 77.0}}), 0, 0), QColor(128, 128, 128)));
}

TEST(ColorFilters, SepiaToneWarmsGreyAndFadesWithIntensity)
{
    // 0.5 through the sepia matrix: 0.676, 0.602, 0.469.
    EXPECT_TRUE(near(pixelAt(applyFilter("CISepiaTone", {{"inputImage", kGrey}}), 0, 0), QColor(173, 154, 120)));
    EXPECT_TRUE(near(pixelAt(applyFilter("CISepiaTone", {{"inputImage", kGrey}, {"inputIntensity", 0.0}}), 0, 0), QColor(128, 128, 128)));
}

TEST(ColorFilters, GammaAdjustRaisesToThePower)
{
    EXPECT_TRUE(near(pixelAt(applyFilter("CIGammaAdjust", {{"inputImage", kGrey}}), 0, 0), QColor(128, 128, 128), 0));
    EXPECT_TRUE(near(pixelAt(applyFilter("CIGammaAdjust", {{"inputImage", kGrey}, {"inputPower", 2.0}}), 0, 0), QColor(64, 64, 64), 1));
    EXPECT_TRUE(near(pixelAt(applyFilter("CIGammaAdjust", {{"inputImage", kGrey}, {"inputPower", 0.5}}), 0, 0), QColor(181, 181, 181), 1));
}

TEST(ColorFilters, ColorControlsSaturationBrightnessContrast)
{
    EXPECT_TRUE(near(pixelAt(applyFilter("CIColorControls", {{"inputImage", kRed}}), 0, 0), QColor(255, 0, 0), 0));
    // No saturation: the grey of red's luminance.
    EXPECT_TRUE(near(pixelAt(applyFilter("CIColorControls", {{"inputImage", kRed}, {"inputSaturation", 0.0}}), 0, 0), QColor(54, 54, 54)));
    EXPECT_TRUE(near(pixelAt(applyFilter("CIColorControls", {{"inputImage", kGrey}, {"inputBrightness", 0.25}}), 0, 0),
                     QColor(192, 192, 192)));
    // Contrast scales about mid-grey.
    const Image light = solidImage(QSize(1, 1), QColor(159, 159, 159));
    EXPECT_TRUE(near(pixelAt(applyFilter("CIColorControls", {{"inputImage", light}, {"inputContrast", 2.0}}), 0, 0), QColor(190, 190, 190)));
}

TEST(ColorFilters, FalseColorMapsLuminanceBetweenItsColours)
{
    const Image black = solidImage(QSize(1, 1), QColor(0, 0, 0));
    const Image white = solidImage(QSize(1, 1), QColor(255, 255, 255, 128));
    EXPECT_TRUE(near(pixelAt(applyFilter("CIFalseColor", {{"inputImage", black}}), 0, 0), QColor(77, 0, 0)));
    EXPECT_TRUE(near(pixelAt(applyFilter("CIFalseColor", {{"inputImage", white}}), 0, 0), QColor(255, 230, 204, 128)));
}

TEST(ColorFilters, ColorMatrixIsIdentityByDefaultAndAddsItsBias)
{
    const Image orange = solidImage(QSize(1, 1), QColor(255, 128, 0));
    EXPECT_TRUE(near(pixelAt(applyFilter("CIColorMatrix", {{"inputImage", orange}}), 0, 0), QColor(255, 128, 0), 0));
    // Red and blue swapped, a quarter added to green.
    const Image swapped = applyFilter("CIColorMatrix", {{"inputImage", orange},
                                                        {"inputRVector_X", 0.0},
                                                        {"inputRVector_Z", 1.0},
                                                        {"inputBVector_X", 1.0},
                                                        {"inputBVector_Z", 0.0},
                                                        {"inputBiasVector_Y", 0.25}});
    EXPECT_TRUE(near(pixelAt(swapped, 0, 0), QColor(0, 192, 255)));
}

}  // namespace
