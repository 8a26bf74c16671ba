// Generators: infinite images computed for whatever region is asked for.
// Positions and sizes are in image-space pixels.

#include "runtime/patches/ImageOps.h"
#include "runtime/patches/filters/ColorMath.h"
#include "runtime/patches/filters/FilterDefinition.h"

#include <cmath>
#include <numbers>

namespace runtime {

namespace {

Image constantColor(const FilterInputs& in)
{
    const Color c = in.color("inputColor");
    return generatedImage([c](double, double) { return c; });
}

Image radialGradient(const FilterInputs& in)
{
    const double cx = in.number("inputCenter_X"), cy = in.number("inputCenter_Y");
    const double r0 = in.number("inputRadius0"), r1 = in.number("inputRadius1");
    const Color c0 = in.color("inputColor0"), c1 = in.color("inputColor1");
    return generatedImage([=](double x, double y) {
        const double d = std::hypot(x - cx, y - cy);
        if (r1 == r0) return d < r0 ? c0 : c1;
        return mix(c0, c1, (d - r0) / (r1 - r0));
    });
}

Image linearGradient(const FilterInputs& in)
{
    const double x0 = in.number("inputPoint0_X"), y0 = in.number("inputPoint0_Y");
    const double dx = in.number("inputPoint1_X") - x0, dy = in.number("inputPoint1_Y") - y0;
    const double length2 = dx * dx + dy * dy;
    const Color c0 = in.color("inputColor0"), c1 = in.color("inputColor1");
    return generatedImage([=](double x, double y) {
        return length2 > 0 ? mix(c0, c1, ((x - x0) * dx + (y - y0) * dy) / length2) : c0;
    });
}

// +1 on [0, 1) of every period of 2 and −1 on [1, 2), with edges softened
// over (1 − sharpness) of a half period.
double squareWave(double t, double sharpness)
{
    const double phase = t - 2 * std::floor(t / 2);
    const double sign = phase < 1 ? 1 : -1;
    const double inHalf = phase - std::floor(phase);
    const double softness = 1 - std::clamp(sharpness, 0.0, 1.0);
    if (softness <= 0) return sign;
    // 0 at an edge, ±1 half-way between edges.
    const double triangle = sign * 2 * std::min(inHalf, 1 - inHalf);
    return std::clamp(triangle / softness, -1.0, 1.0);
}

// Squares of the given width with a corner at the centre; colour 0 fills
// the square above and to the right of it.
Image checkerboard(const FilterInputs& in)
{
    const QPointF c = in.point("inputCenter");
    const double width = std::max(std::abs(in.number("inputWidth", -1e9, 1e9)), 1e-3);
    const double sharpness = in.number("inputSharpness", 0, 1);
    const Color c0 = in.color("inputColor0"), c1 = in.color("inputColor1");
    return generatedImage([=](double x, double y) {
        const double v = squareWave((x - c.x()) / width, sharpness) * squareWave((y - c.y()) / width, sharpness);
        return mixPremultiplied(c1, c0, (v + 1) / 2);
    });
}

// Vertical stripes of the given width; colour 0 starts at the centre.
Image stripes(const FilterInputs& in)
{
    const double cx = in.point("inputCenter").x();
    const double width = std::max(std::abs(in.number("inputWidth", -1e9, 1e9)), 1e-3);
    const double sharpness = in.number("inputSharpness", 0, 1);
    const Color c0 = in.color("inputColor0"), c1 = in.color("inputColor1");
    return generatedImage([=](double x, double) { return mixPremultiplied(c1, c0, (squareWave((x - cx) / width, sharpness) + 1) / 2); });
}

// Colour 0 at the centre, fading to colour 1 along a Gaussian that is all
// but gone at the radius (a deviation of a third of it).
Image gaussianGradient(const FilterInputs& in)
{
    const QPointF c = in.point("inputCenter");
    const double sigma = std::max(std::abs(in.number("inputRadius", -1e9, 1e9)), 1e-3) / 3;
    const Color c0 = in.color("inputColor0"), c1 = in.color("inputColor1");
    return generatedImage([=](double x, double y) {
        const double d2 = (x - c.x()) * (x - c.x()) + (y - c.y()) * (y - c.y());
        return mixPremultiplied(c1, c0, std::exp(-d2 / (2 * sigma * sigma)));
    });
}

// A glowing star: a core whose glow falls off as 1 / (1 + (2d / radius)²)
// and two thin rays crossing at the centre, the first at the cross angle,
// reaching radius × cross scale. Their brightness doubles for every 2 of
// cross opacity (half at the default −2). Epsilon is not used.
Image starShine(const FilterInputs& in)
{
    const QPointF c = in.point("inputCenter");
    const Color color = in.color("inputColor");
    const double radius = std::max(in.number("inputRadius", 0, 1e6), 1e-3);
    const double reach = radius * in.number("inputCrossScale", 0, 1e3);
    const double angle = in.angle("inputCrossAngle");
    const double width = std::max(in.number("inputCrossWidth", 0, 1e6), 1e-3);
    const double strength = std::pow(2.0, in.number("inputCrossOpacity", -100, 4) / 2);
    const QPointF along(std::cos(angle), std::sin(angle));
    return generatedImage([=](double x, double y) {
        const QPointF p(x - c.x(), y - c.y());
        const double d2 = QPointF::dotProduct(p, p);
        double intensity = 1 / (1 + 4 * d2 / (radius * radius));
        for (const QPointF& dir : {along, QPointF(-along.y(), along.x())}) {
            const double a = std::abs(QPointF::dotProduct(p, dir)), across = std::abs(p.x() * dir.y() - p.y() * dir.x());
            if (reach > 0 && a < reach) intensity += strength * std::exp(-(across * across) / (width * width)) * (1 - a / reach);
        }
        return Color{color.red, color.green, color.blue, color.alpha * std::min(intensity, 1.0)};
    });
}

// Striations around the sun: a sum of waves over the angle (whole periods
// per turn, so the pattern closes), drifting with time; 0…1.
double striation(double angle, double time)
{
    static constexpr struct {
        int frequency;
        double phase, drift;
    } kWaves[] = {{7, 0.3, 0.9}, {13, 1.9, -1.3}, {23, 4.1, 1.7}, {37, 2.6, -2.3}, {53, 5.3, 2.9}};
    double sum = 0;
    for (const auto& w : kWaves) sum += std::sin(w.frequency * angle + w.phase + w.drift * time);
    return 0.5 + sum / (2 * std::size(kWaves));
}

// A sun of the given radius with a halo falling off as (radius / d)², and
// rays from its edge out to max striation radius × sun radius. Striation
// strength scales the rays and contrast sharpens them; time moves them.
Image sunbeams(const FilterInputs& in)
{
    const QPointF c = in.point("inputCenter");
    const Color color = in.color("inputColor");
    const double sun = std::max(in.number("inputSunRadius", 0, 1e6), 1e-3);
    const double reach = sun * in.number("inputMaxStriationRadius", 0, 1e3);
    const double strength = in.number("inputStriationStrength", 0, 1e3);
    const double contrast = in.number("inputStriationContrast", 0, 100);
    const double time = in.number("inputTime", -1e6, 1e6);
    return generatedImage([=](double x, double y) {
        const double d = std::hypot(x - c.x(), y - c.y());
        double intensity = 1;
        if (d > sun) {
            intensity = (sun / d) * (sun / d);
            if (d - sun < reach)
                intensity += strength * std::pow(striation(std::atan2(y - c.y(), x - c.x()), time), contrast) * (1 - (d - sun) / reach);
        }
        return Color{color.red, color.green, color.blue, color.alpha * std::min(intensity, 1.0)};
    });
}

const Color kTransparent{0, 0, 0, 0};

}  // namespace

const std::vector<FilterDefinition>& generatorFilters()
{
    static const std::vector<FilterDefinition> all = {
        {"CIConstantColorGenerator", {colorPort("inputColor", {1, 0, 0, 1})}, constantColor},
        {"CIRadialGradient",
         {numberPort("inputCenter_X", 150), numberPort("inputCenter_Y", 150), numberPort("inputRadius0", 5), numberPort("inputRadius1", 100),
          colorPort("inputColor0", kWhite), colorPort("inputColor1", kBlack)},
         radialGradient},
        {"CILinearGradient",
         {numberPort("inputPoint0_X", 0), numberPort("inputPoint0_Y", 0), numberPort("inputPoint1_X", 200), numberPort("inputPoint1_Y", 200),
          colorPort("inputColor0", kWhite), colorPort("inputColor1", kBlack)},
         linearGradient},
        {"CICheckerboardGenerator",
         {numberPort("inputCenter_X", 150), numberPort("inputCenter_Y", 150), colorPort("inputColor0", kWhite),
          colorPort("inputColor1", kBlack), numberPort("inputWidth", 80), numberPort("inputSharpness", 1)},
         checkerboard},
        {"CIStripesGenerator",
         {numberPort("inputCenter_X", 150), numberPort("inputCenter_Y", 150), colorPort("inputColor0", kWhite),
          colorPort("inputColor1", kBlack), numberPort("inputWidth", 80), numberPort("inputSharpness", 1)},
         stripes},
        {"CIGaussianGradient",
         {numberPort("inputCenter_X", 150), numberPort("inputCenter_Y", 150), colorPort("inputColor0", kWhite),
          colorPort("inputColor1", kTransparent), numberPort("inputRadius", 300)},
         gaussianGradient},
        {"CIStarShineGenerator",
         {numberPort("inputCenter_X", 150), numberPort("inputCenter_Y", 150), colorPort("inputColor", {1, 0.8, 0.6, 1}),
          numberPort("inputRadius", 50), numberPort("inputCrossScale", 15),
          // 0.6 radians, shown in degrees.
          numberPort("inputCrossAngle", 0.6 * 180 / std::numbers::pi), numberPort("inputCrossOpacity", -2),
          numberPort("inputCrossWidth", 2.5), numberPort("inputEpsilon", -2)},
         starShine},
        {"CISunbeamsGenerator",
         {numberPort("inputCenter_X", 150), numberPort("inputCenter_Y", 150), colorPort("inputColor", {1, 0.5, 0, 1}),
          numberPort("inputSunRadius", 40), numberPort("inputMaxStriationRadius", 2.58), numberPort("inputStriationStrength", 0.5),
          numberPort("inputStriationContrast", 1.375), numberPort("inputTime", 0)},
         sunbeams},
    };
    return all;
}

}  // namespace runtime
