// QCImageFilter: Core Image filters, selected by the node's identifier. The
// filters implemented here are listed in kFilters; any other identifier
// loads as an inert node.

#include "runtime/patches/ImageOps.h"
#include "runtime/patches/PatchFamilies.h"

#include <cmath>
#include <cstring>
#include <numbers>

namespace runtime {

namespace {

class FilterInputs;
using FilterFunction = Image (*)(const FilterInputs& in);

struct FilterPort {
    const char* key;
    PortType type;
    double number = 0;  // default of a Number port
    Color color{};      // default of a Color port
};

struct FilterDefinition {
    const char* name;
    std::vector<FilterPort> ports;
    FilterFunction apply;
};

class FilterInputs {
public:
    FilterInputs(const std::vector<std::pair<const char*, InputPort*>>& ports, bool normalized)
        : ports_(ports), normalized_(normalized)
    {
    }
    const Value& value(const char* key) const
    {
        static const Value none;
        for (const auto& [k, port] : ports_)
            if (std::strcmp(k, key) == 0) return port->value;
        return none;
    }
    double number(const char* key) const { return value(key).toNumber(); }
    Image image(const char* key = "inputImage") const { return value(key).toImage(); }
    Color color(const char* key) const { return value(key).toColor(); }
    // A distance: with normalised coordinates it is a fraction of the
    // input image's width.
    double distance(const char* key) const
    {
        const double d = number(key);
        if (!normalized_) return d;
        const Image in = image();
        return d * (in.isNull() || in.isInfinite() ? 1.0 : in.pixelSize().width());
    }

private:
    const std::vector<std::pair<const char*, InputPort*>>& ports_;
    bool normalized_;
};

Color mix(const Color& a, const Color& b, double t)
{
    t = std::clamp(t, 0.0, 1.0);
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t,
            a.alpha + (b.alpha - a.alpha) * t};
}

Image crop(const FilterInputs& in)
{
    const QRectF r(in.number("inputRectangle_X"), in.number("inputRectangle_Y"), in.number("inputRectangle_Z"),
                   in.number("inputRectangle_W"));
    if (!(r.width() > 0 && r.height() > 0) || r.width() > 1e7 || r.height() > 1e7 || std::abs(r.x()) > 1e7 ||
        std::abs(r.y()) > 1e7)
        return {};
    return cropImage(in.image(), r.toRect());
}

Image affineTransform(const FilterInputs& in)
{
    const double ox = in.number("inputTransform_OriginX"), oy = in.number("inputTransform_OriginY");
    QTransform t;
    // Row-vector order: scale and rotate about the origin, then translate.
    t.translate(-ox, -oy);
    t *= QTransform().scale(in.number("inputTransform_ScaleX"), in.number("inputTransform_ScaleY"));
    t *= QTransform().rotate(in.number("inputTransform_Rotate"));
    t *= QTransform::fromTranslate(ox + in.number("inputTransform_TranslateX"), oy + in.number("inputTransform_TranslateY"));
    return transformImage(in.image(), t);
}

Image gaussianBlur(const FilterInputs& in)
{
    return blurImage(in.image(), in.distance("inputRadius"));
}

Image sourceOver(const FilterInputs& in)
{
    return composeImages(in.image(), in.image("inputBackgroundImage"), QPainter::CompositionMode_SourceOver);
}

Image multiply(const FilterInputs& in)
{
    return composeImages(in.image(), in.image("inputBackgroundImage"), QPainter::CompositionMode_Multiply);
}

Image addition(const FilterInputs& in)
{
    return composeImages(in.image(), in.image("inputBackgroundImage"), QPainter::CompositionMode_Plus);
}

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

Image colorInvert(const FilterInputs& in)
{
    return mapColors(in.image(), [](const Color& c) { return Color{1 - c.red, 1 - c.green, 1 - c.blue, c.alpha}; });
}

Image colorMonochrome(const FilterInputs& in)
{
    const Color tint = in.color("inputColor");
    const double intensity = in.number("inputIntensity");
    return mapColors(in.image(), [=](const Color& c) {
        const double l = 0.2126 * c.red + 0.7152 * c.green + 0.0722 * c.blue;
        const Color mono{l * tint.red, l * tint.green, l * tint.blue, c.alpha};
        return mix(c, mono, intensity);
    });
}

Image exposureAdjust(const FilterInputs& in)
{
    const double gain = std::pow(2.0, in.number("inputEV"));
    return mapColors(in.image(), [=](const Color& c) { return Color{c.red * gain, c.green * gain, c.blue * gain, c.alpha}; });
}

const Color kWhite{1, 1, 1, 1};
const Color kBlack{0, 0, 0, 1};

const std::vector<FilterDefinition>& filters()
{
    static const std::vector<FilterDefinition> all = {
        {"CICrop",
         {{"inputImage", PortType::Image}, {"inputRectangle_X", PortType::Number, 0}, {"inputRectangle_Y", PortType::Number, 0},
          {"inputRectangle_Z", PortType::Number, 300}, {"inputRectangle_W", PortType::Number, 300}},
         crop},
        {"CIAffineTransform",
         {{"inputImage", PortType::Image}, {"inputTransform_OriginX", PortType::Number, 0}, {"inputTransform_OriginY", PortType::Number, 0},
          {"inputTransform_ScaleX", PortType::Number, 1}, {"inputTransform_ScaleY", PortType::Number, 1},
          {"inputTransform_Rotate", PortType::Number, 0}, {"inputTransform_TranslateX", PortType::Number, 0},
          {"inputTransform_TranslateY", PortType::Number, 0}},
         affineTransform},
        {"CIGaussianBlur", {{"inputImage", PortType::Image}, {"inputRadius", PortType::Number, 10}}, gaussianBlur},
        {"CISourceOverCompositing", {{"inputImage", PortType::Image}, {"inputBackgroundImage", PortType::Image}}, sourceOver},
        {"CIMultiplyCompositing", {{"inputImage", PortType::Image}, {"inputBackgroundImage", PortType::Image}}, multiply},
        {"CIAdditionCompositing", {{"inputImage", PortType::Image}, {"inputBackgroundImage", PortType::Image}}, addition},
        {"CIConstantColorGenerator", {{"inputColor", PortType::Color, 0, {1, 0, 0, 1}}}, constantColor},
        {"CIRadialGradient",
         {{"inputCenter_X", PortType::Number, 150}, {"inputCenter_Y", PortType::Number, 150}, {"inputRadius0", PortType::Number, 5},
          {"inputRadius1", PortType::Number, 100}, {"inputColor0", PortType::Color, 0, kWhite}, {"inputColor1", PortType::Color, 0, kBlack}},
         radialGradient},
        {"CILinearGradient",
         {{"inputPoint0_X", PortType::Number, 0}, {"inputPoint0_Y", PortType::Number, 0}, {"inputPoint1_X", PortType::Number, 200},
          {"inputPoint1_Y", PortType::Number, 200}, {"inputColor0", PortType::Color, 0, kWhite}, {"inputColor1", PortType::Color, 0, kBlack}},
         linearGradient},
        {"CIColorInvert", {{"inputImage", PortType::Image}}, colorInvert},
        {"CIColorMonochrome",
         {{"inputImage", PortType::Image}, {"inputColor", PortType::Color, 0, {0.6, 0.45, 0.3, 1}}, {"inputIntensity", PortType::Number, 1}},
         colorMonochrome},
        {"CIExposureAdjust", {{"inputImage", PortType::Image}, {"inputEV", PortType::Number, 0.5}}, exposureAdjust},
    };
    return all;
}

const FilterDefinition* findFilter(const QString& name)
{
    for (const FilterDefinition& f : filters())
        if (name == QLatin1String(f.name)) return &f;
    return nullptr;
}

class ImageFilterPatch : public Patch {
public:
    explicit ImageFilterPatch(const PatchSetup& setup)
        : Patch(setup), filter_(findFilter(setup.identifier)), normalized_(stateBool(setup, "normalizeCoordinates", false))
    {
        for (const FilterPort& p : filter_->ports) {
            const Value initial = p.type == PortType::Color ? Value(p.color) : p.type == PortType::Number ? Value(p.number) : Value();
            ports_.emplace_back(p.key, &addInput(QString::fromLatin1(p.key), p.type, initial));
        }
        image_ = &addOutput(QStringLiteral("outputImage"), PortType::Image);
    }
    void execute(ExecutionContext&, double) override
    {
        setOutput(*image_, filter_->apply(FilterInputs(ports_, normalized_)));
    }

private:
    const FilterDefinition* filter_;
    bool normalized_;
    std::vector<std::pair<const char*, InputPort*>> ports_;
    OutputPort* image_;
};

}  // namespace

void registerImageFilterPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCImageFilter"), factoryOf<ImageFilterPatch>(),
                 [](const QString& identifier) { return findFilter(identifier) != nullptr; });
}

}  // namespace runtime
