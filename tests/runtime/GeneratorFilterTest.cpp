// Generators: where the pattern sits relative to its centre, its defaults,
// and the symmetries each has.

#include "FilterTestSupport.h"

#include <cmath>
#include <numbers>

using runtime::Color;
using runtime::Image;
using namespace test;  // the filter helpers

namespace {

const QColor kWhite(255, 255, 255), kBlack(0, 0, 0);

TEST(GeneratorFilters, CheckerboardHasColourZeroUpAndRightOfTheCentre)
{
    const Image board = applyFilter("CICheckerboardGenerator");
    EXPECT_TRUE(board.isInfinite());
    // Default centre (150, 150), squares 80 wide.
    EXPECT_TRUE(near(pixelAt(board, 150, 150), kWhite, 0));
    EXPECT_TRUE(near(pixelAt(board, 110, 110), kWhite, 0));
    EXPECT_TRUE(near(pixelAt(board, 149, 150), kBlack, 0));
    EXPECT_TRUE(near(pixelAt(board, 270, 190), kBlack, 0));
    // Without sharpness the edges blend: half-way at an edge.
    const Image soft = applyFilter("CICheckerboardGenerator", {{"inputSharpness", 0.0}});
    EXPECT_TRUE(near(pixelAt(soft, 190, 190), kWhite, 4));
    EXPECT_NEAR(pixelAt(soft, 229, 190).red(), 128, 4);
}

TEST(GeneratorFilters, StripesAreVerticalAndStartAtTheCentre)
{
    const Image stripes = applyFilter("CIStripesGenerator", {{"inputWidth", 10.0}, {"inputCenter_X", 0.0}});
    EXPECT_TRUE(near(pixelAt(stripes, 5, -1000), kWhite, 0));
    EXPECT_TRUE(near(pixelAt(stripes, 15, 1000), kBlack, 0));
    EXPECT_TRUE(near(pixelAt(stripes, -5, 0), kBlack, 0));
}

TEST(GeneratorFilters, GaussianGradientFadesToTransparentByTheRadius)
{
    const Image gradient = applyFilter("CIGaussianGradient");
    EXPECT_TRUE(near(pixelAt(gradient, 150, 150), kWhite, 1));
    // A deviation of 100 (a third of 300): e^−½ of the way at 100.
    const QColor atDeviation = pixelAt(gradient, 250, 150);
    EXPECT_NEAR(atDeviation.alpha(), 155, 3);
    EXPECT_NEAR(atDeviation.red(), 255, 3);  // fades in premultiplied terms: stays white
    EXPECT_LT(pixelAt(gradient, 150, 450).alpha(), 4);
    EXPECT_EQ(pixelAt(gradient, 150, 250), pixelAt(gradient, 250, 150));
}

TEST(GeneratorFilters, StarShineRaysFollowTheCrossAngleInDegrees)
{
    const Image star = applyFilter("CIStarShineGenerator", {{"inputCenter_X", 0.0}, {"inputCenter_Y", 0.0}});
    EXPECT_TRUE(near(pixelAt(star, 0, 0), QColor(255, 204, 153), 1));
    // The default cross angle is 0.6 radians; a ray runs that way.
    const auto alphaAt = [&](double degrees, double distance) {
        const double a = degrees * std::numbers::pi / 180;
        return pixelAt(star, int(std::floor(distance * std::cos(a))), int(std::floor(distance * std::sin(a)))).alpha();
    };
    const double ray = 0.6 * 180 / std::numbers::pi;
    EXPECT_GT(alphaAt(ray, 200), alphaAt(ray + 20, 200) + 40);
    EXPECT_GT(alphaAt(ray + 90, 200), alphaAt(ray + 45, 200) + 40);
    // The glow falls off with distance.
    EXPECT_GT(alphaAt(ray + 45, 30), alphaAt(ray + 45, 60));
    EXPECT_LT(alphaAt(ray + 45, 300), 5);
}

TEST(GeneratorFilters, SunbeamsShowASunWithRaysThatMoveWithTime)
{
    const Image sun = applyFilter("CISunbeamsGenerator");
    EXPECT_TRUE(near(pixelAt(sun, 150, 150), QColor(255, 128, 0), 1));
    EXPECT_EQ(pixelAt(sun, 150 + 35, 150).alpha(), 255);  // inside the radius of 40
    // Beyond the striations (2.58 × 40) only the halo is left: (40 / d)².
    EXPECT_NEAR(pixelAt(sun, 150 + 160, 150).alpha(), 16, 2);
    // The rays differ from angle to angle and change with time.
    const Image later = applyFilter("CISunbeamsGenerator", {{"inputTime", 0.5}});
    int differentAngles = 0, differentTimes = 0;
    for (int i = 0; i < 36; ++i) {
        const double a = i * std::numbers::pi / 18;
        const int x = 150 + int(70 * std::cos(a)), y = 150 + int(70 * std::sin(a));
        differentAngles += std::abs(pixelAt(sun, x, y).alpha() - pixelAt(sun, 150 + 70, 150).alpha()) > 10;
        differentTimes += std::abs(pixelAt(sun, x, y).alpha() - pixelAt(later, x, y).alpha()) > 10;
    }
    EXPECT_GT(differentAngles, 10);
    EXPECT_GT(differentTimes, 10);
}

}  // namespace
