// RGB and HSL colours from and to components (all 0…1, hue included), and
// Color Transform: a colour moved in HSL.

#include "runtime/patches/PatchFamilies.h"

#include <algorithm>
#include <cmath>

namespace runtime {

namespace {

double hueToChannel(double p, double q, double t)
{
    t -= std::floor(t);
    if (t < 1.0 / 6) return p + (q - p) * 6 * t;
    if (t < 0.5) return q;
    if (t < 2.0 / 3) return p + (q - p) * (2.0 / 3 - t) * 6;
    return p;
}

Color colorFromHsl(double h, double s, double l, double alpha)
{
    s = std::clamp(s, 0.0, 1.0);
    l = std::clamp(l, 0.0, 1.0);
    if (s == 0) return {l, l, l, alpha};
    const double q = l < 0.5 ? l * (1 + s) : l + s - l * s;
    const double p = 2 * l - q;
    return {hueToChannel(p, q, h + 1.0 / 3), hueToChannel(p, q, h), hueToChannel(p, q, h - 1.0 / 3), alpha};
}

void hslFromColor(const Color& c, double* h, double* s, double* l)
{
    const double r = std::clamp(c.red, 0.0, 1.0), g = std::clamp(c.green, 0.0, 1.0), b = std::clamp(c.blue, 0.0, 1.0);
    const double max = std::max({r, g, b}), min = std::min({r, g, b});
    *l = (max + min) / 2;
    if (max == min) {
        *h = *s = 0;
        return;
    }
    const double d = max - min;
    *s = *l > 0.5 ? d / (2 - max - min) : d / (max + min);
    if (max == r) *h = (g - b) / d + (g < b ? 6 : 0);
    else if (max == g) *h = (b - r) / d + 2;
    else *h = (r - g) / d + 4;
    *h /= 6;
}

class ColorFromComponentsPatch : public Patch {
public:
    explicit ColorFromComponentsPatch(const PatchSetup& setup)
        : Patch(setup), hsl_(setup.identifier == QLatin1String("hsl"))
    {
        c1_ = &addInput(QStringLiteral("input1"), PortType::Number, hsl_ ? 0.0 : 1.0);
        c2_ = &addInput(QStringLiteral("input2"), PortType::Number, hsl_ ? 0.0 : 1.0);
        c3_ = &addInput(QStringLiteral("input3"), PortType::Number, 1.0);
        alpha_ = &addInput(QStringLiteral("inputAlpha"), PortType::Number, 1.0);
        color_ = &addOutput(QStringLiteral("outputColor"), PortType::Color);
    }
    void execute(ExecutionContext&, double) override
    {
        if (hsl_) setOutput(*color_, colorFromHsl(number(c1_), number(c2_), number(c3_), number(alpha_)));
        else setOutput(*color_, Color{number(c1_), number(c2_), number(c3_), number(alpha_)});
    }

private:
    bool hsl_;
    InputPort* c1_;
    InputPort* c2_;
    InputPort* c3_;
    InputPort* alpha_;
    OutputPort* color_;
};

class ColorToComponentsPatch : public Patch {
public:
    explicit ColorToComponentsPatch(const PatchSetup& setup)
        : Patch(setup), hsl_(setup.identifier == QLatin1String("hsl"))
    {
        color_ = &addInput(QStringLiteral("inputColor"), PortType::Color, Color::white());
        c1_ = &addOutput(QStringLiteral("output1"), PortType::Number);
        c2_ = &addOutput(QStringLiteral("output2"), PortType::Number);
        c3_ = &addOutput(QStringLiteral("output3"), PortType::Number);
        alpha_ = &addOutput(QStringLiteral("outputAlpha"), PortType::Number);
    }
    void execute(ExecutionContext&, double) override
    {
        const Color c = color_->value.toColor();
        double a = c.red, b = c.green, d = c.blue;
        if (hsl_) hslFromColor(c, &a, &b, &d);
        setOutput(*c1_, a);
        setOutput(*c2_, b);
        setOutput(*c3_, d);
        setOutput(*alpha_, c.alpha);
    }

private:
    bool hsl_;
    InputPort* color_;
    OutputPort* c1_;
    OutputPort* c2_;
    OutputPort* c3_;
    OutputPort* alpha_;
};

// Turns the hue by `inputHue` (a fraction of a turn, like every hue here)
// and scales saturation, luminosity and alpha by their inputs.
class ColorTransformPatch : public Patch {
public:
    explicit ColorTransformPatch(const PatchSetup& setup) : Patch(setup)
    {
        color_ = &addInput(QStringLiteral("inputColor"), PortType::Color, Color::white());
        hue_ = &addInput(QStringLiteral("inputHue"), PortType::Number, 0.0);
        saturation_ = &addInput(QStringLiteral("inputSaturation"), PortType::Number, 1.0);
        luminosity_ = &addInput(QStringLiteral("inputLuminosity"), PortType::Number, 1.0);
        alpha_ = &addInput(QStringLiteral("inputAlpha"), PortType::Number, 1.0);
        output_ = &addOutput(QStringLiteral("outputColor"), PortType::Color);
    }
    void execute(ExecutionContext&, double) override
    {
        const Color c = color_->value.toColor();
        double h = 0, s = 0, l = 0;
        hslFromColor(c, &h, &s, &l);
        const double alpha = std::clamp(c.alpha * number(alpha_), 0.0, 1.0);
        setOutput(*output_, colorFromHsl(h + number(hue_), s * number(saturation_), l * number(luminosity_), alpha));
    }

private:
    InputPort* color_;
    InputPort* hue_;
    InputPort* saturation_;
    InputPort* luminosity_;
    InputPort* alpha_;
    OutputPort* output_;
};

bool rgbOrHsl(const QString& identifier)
{
    return identifier.isEmpty() || identifier == QLatin1String("rgb") || identifier == QLatin1String("hsl");
}

}  // namespace

void registerColorPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCColorFromComponents"), factoryOf<ColorFromComponentsPatch>(), rgbOrHsl);
    registry.add(QStringLiteral("QCColorToComponents"), factoryOf<ColorToComponentsPatch>(), rgbOrHsl);
    registry.add(QStringLiteral("QCColorTransform"), factoryOf<ColorTransformPatch>());
}

}  // namespace runtime
