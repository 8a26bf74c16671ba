// Consumers that draw: Clear, Sprite, Billboard, Gradient and Line.

#include "runtime/ExecutionContext.h"
#include "runtime/patches/PatchFamilies.h"

#include <cmath>
#include <numbers>

namespace runtime {

namespace {

// The blending menu of Sprite and Billboard.
InputHints blendingHints()
{
    return {{}, {}, {QStringLiteral("Replace"), QStringLiteral("Over"), QStringLiteral("Add")}};
}

constexpr double kImageBlendingDefault = 1;  // Over

class ClearPatch : public Patch {
public:
    explicit ClearPatch(const PatchSetup& setup)
        : Patch(setup), clearColor_(stateBool(setup, "clearColorBuffer", true))
    {
        // Opaque black, as a freshly added Clear patch has it.
        color_ = &addInput(QStringLiteral("inputColor"), PortType::Color, Color{0, 0, 0, 1});
    }
    ExecutionMode executionMode() const override { return ExecutionMode::Consumer; }
    void execute(ExecutionContext& context, double) override
    {
        if (clearColor_ && context.target()) context.target()->clear(color_->value.toColor());
    }

private:
    bool clearColor_;
    InputPort* color_;
};

class SpritePatch : public Patch {
public:
    explicit SpritePatch(const PatchSetup& setup)
        : Patch(setup), antialias_(stateBool(setup, "antialiasing", true))
    {
        image_ = &addInput(QStringLiteral("inputImage"), PortType::Image);
        mask_ = &addInput(QStringLiteral("inputMask"), PortType::Image);
        for (const char* key : {"inputX", "inputY", "inputZ", "inputRX", "inputRY", "inputRZ"})
            position_.push_back(&addInput(QString::fromLatin1(key), PortType::Number, 0.0));
        width_ = &addInput(QStringLiteral("inputWidth"), PortType::Number, 1.0);
        height_ = &addInput(QStringLiteral("inputHeight"), PortType::Number, 1.0);
        color_ = &addInput(QStringLiteral("inputColor"), PortType::Color, Color::white());
        blending_ = &addInput(QStringLiteral("inputBlending"), PortType::Index, kImageBlendingDefault);
        depth_ = &addInput(QStringLiteral("inputZBuffer"), PortType::Index, 0);
        culling_ = &addInput(QStringLiteral("inputCulling"), PortType::Index, 0);
        addInput(QStringLiteral("_inputInteraction"), PortType::Interaction);
    }
    ExecutionMode executionMode() const override { return ExecutionMode::Consumer; }
    InputHints inputHints(const InputPort& port) const override
    {
        if (&port == blending_) return blendingHints();
        return {};
    }
    void execute(ExecutionContext& context, double) override
    {
        if (!context.target()) return;
        QuadDraw quad;
        quad.transform = context.modelView();
        quad.transform.translate(float(number(position_[0])), float(number(position_[1])), float(number(position_[2])));
        quad.transform.rotate(float(number(position_[3])), 1, 0, 0);
        quad.transform.rotate(float(number(position_[4])), 0, 1, 0);
        quad.transform.rotate(float(number(position_[5])), 0, 0, 1);
        const double w = number(width_), h = number(height_);
        quad.rect = QRectF(-w / 2, -h / 2, w, h);
        quad.image = image_->value.toImage();
        quad.mask = mask_->value.toImage();
        quad.color = color_->value.toColor();
        quad.blend = blendModeFromIndex(index(blending_));
        quad.antialias = antialias_;
        quad.depthTest = index(depth_) != 0;
        quad.fogged = true;
        quad.lighting = context.lighting();
        const int culling = index(culling_);
        quad.culling = culling == 1 ? Culling::Back : culling == 2 ? Culling::Front : Culling::None;
        context.target()->drawQuad(quad);
    }

private:
    bool antialias_;
    InputPort* depth_;
    InputPort* culling_;
    InputPort* image_;
    InputPort* mask_;
    std::vector<InputPort*> position_;
    InputPort* width_;
    InputPort* height_;
    InputPort* color_;
    InputPort* blending_;
};

class BillboardPatch : public Patch {
public:
    enum class SizeMode { AutoHeight, AutoWidth, Custom, Real };

    explicit BillboardPatch(const PatchSetup& setup) : Patch(setup)
    {
        const QString mode = stateString(setup, "sizeMode", QStringLiteral("autoHeight"));
        sizeMode_ = mode == QLatin1String("autoWidth") ? SizeMode::AutoWidth
                    : mode == QLatin1String("custom")  ? SizeMode::Custom
                    : mode == QLatin1String("real")    ? SizeMode::Real
                                                       : SizeMode::AutoHeight;
        image_ = &addInput(QStringLiteral("inputImage"), PortType::Image);
        mask_ = &addInput(QStringLiteral("inputMask"), PortType::Image);
        x_ = &addInput(QStringLiteral("inputX"), PortType::Number, 0.0);
        y_ = &addInput(QStringLiteral("inputY"), PortType::Number, 0.0);
        rotation_ = &addInput(QStringLiteral("inputRotation"), PortType::Number, 0.0);
        color_ = &addInput(QStringLiteral("inputColor"), PortType::Color, Color::white());
        blending_ = &addInput(QStringLiteral("inputBlending"), PortType::Index, kImageBlendingDefault);
        pixelAligned_ = &addInput(QStringLiteral("inputPixelAligned"), PortType::Boolean, stateBool(setup, "pixelAligned", false));
        if (sizeMode_ == SizeMode::AutoHeight || sizeMode_ == SizeMode::AutoWidth) {
            scale_ = &addInput(QStringLiteral("inputScale"), PortType::Number, 1.0);
        } else if (sizeMode_ == SizeMode::Custom) {
            width_ = &addInput(QStringLiteral("inputWidth"), PortType::Number, 1.0);
            height_ = &addInput(QStringLiteral("inputHeight"), PortType::Number, 1.0);
        }
        addInput(QStringLiteral("_inputInteraction"), PortType::Interaction);
    }
    ExecutionMode executionMode() const override { return ExecutionMode::Consumer; }
    InputHints inputHints(const InputPort& port) const override
    {
        if (&port == blending_) return blendingHints();
        return {};
    }
    void execute(ExecutionContext& context, double) override
    {
        RenderTarget* target = context.target();
        const Image image = image_->value.toImage();
        if (!target || image.isNull()) return;  // a billboard draws nothing without an image
        const QSize destination = target->pixelSize();
        const QSizeF pixels = image.isInfinite() ? QSizeF(destination) : QSizeF(image.pixelSize());
        if (pixels.isEmpty()) return;
        const double unitsPerPixel = 2.0 / destination.width();
        double w = 0, h = 0;
        switch (sizeMode_) {
        case SizeMode::AutoHeight:
            w = number(scale_);
            h = w * pixels.height() / pixels.width();
            break;
        case SizeMode::AutoWidth:
            h = number(scale_);
            w = h * pixels.width() / pixels.height();
            break;
        case SizeMode::Custom:
            w = number(width_);
            h = number(height_);
            break;
        case SizeMode::Real:
            w = pixels.width() * unitsPerPixel;
            h = pixels.height() * unitsPerPixel;
            break;
        }
        double x = number(x_), y = number(y_);
        if (boolean(pixelAligned_)) {
            // Put the lower-left corner on a pixel boundary.
            const double left = (x - w / 2 + 1.0) / unitsPerPixel;
            const double bottom = (y - h / 2) / unitsPerPixel;
            x += (std::round(left) - left) * unitsPerPixel;
            y += (std::round(bottom) - bottom) * unitsPerPixel;
        }
        QuadDraw quad;
        quad.transform = context.modelView();
        quad.transform.translate(float(x), float(y), 0);
        quad.transform.rotate(float(number(rotation_)), 0, 0, 1);
        quad.rect = QRectF(-w / 2, -h / 2, w, h);
        quad.image = image;
        quad.mask = mask_->value.toImage();
        quad.color = color_->value.toColor();
        quad.blend = blendModeFromIndex(index(blending_));
        target->drawQuad(quad);
    }

private:
    SizeMode sizeMode_;
    InputPort* image_;
    InputPort* mask_;
    InputPort* x_;
    InputPort* y_;
    InputPort* rotation_;
    InputPort* color_;
    InputPort* blending_;
    InputPort* pixelAligned_;
    InputPort* scale_ = nullptr;
    InputPort* width_ = nullptr;
    InputPort* height_ = nullptr;
};

// Fills the destination with a two- or three-colour gradient.
class GradientPatch : public Patch {
public:
    explicit GradientPatch(const PatchSetup& setup) : Patch(setup)
    {
        color1_ = &addInput(QStringLiteral("inputColor1"), PortType::Color, Color{0, 0, 0, 1});
        color2_ = &addInput(QStringLiteral("inputColor2"), PortType::Color, Color{0.5, 0.5, 0.5, 1});
        color3_ = &addInput(QStringLiteral("inputColor3"), PortType::Color, Color{1, 1, 1, 1});
        position2_ = &addInput(QStringLiteral("inputPosition2"), PortType::Number, 0.5);
        direction_ = &addInput(QStringLiteral("inputDirection"), PortType::Index, 0);
        blending_ = &addInput(QStringLiteral("inputBlending"), PortType::Index, 0);
        threePoints_ = stateNumber(setup, "numberOfPoints", 3) >= 3;
    }
    ExecutionMode executionMode() const override { return ExecutionMode::Consumer; }
    void execute(ExecutionContext& context, double) override
    {
        RenderTarget* target = context.target();
        if (!target) return;
        const QSize size = target->pixelSize();
        // 0: vertical (colour 1 at the top), 1: horizontal (colour 1 at the left).
        const bool horizontal = index(direction_) == 1;
        QImage strip(horizontal ? QSize(256, 1) : QSize(1, 256), QImage::Format_ARGB32);
        const Color c1 = color1_->value.toColor(), c2 = color2_->value.toColor(), c3 = color3_->value.toColor();
        const double mid = std::clamp(number(position2_), 0.001, 0.999);
        for (int i = 0; i < 256; ++i) {
            const double t = i / 255.0;
            Color a = c1, b = threePoints_ ? c2 : c3;
            double f = threePoints_ ? t / mid : t;
            if (threePoints_ && t > mid) {
                a = c2;
                b = c3;
                f = (t - mid) / (1 - mid);
            }
            const auto mix = [&](double p, double q) { return std::clamp(p + (q - p) * f, 0.0, 1.0); };
            const QColor c = QColor::fromRgbF(float(mix(a.red, b.red)), float(mix(a.green, b.green)),
                                              float(mix(a.blue, b.blue)), float(mix(a.alpha, b.alpha)));
            strip.setPixel(horizontal ? i : 0, horizontal ? 0 : i, c.rgba());
        }
        strip = strip.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QuadDraw quad;
        quad.rect = QRectF(-1, -target->unitsHigh() / 2, 2, target->unitsHigh());
        quad.image = Image::fromRaster(strip.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        quad.blend = blendModeFromIndex(index(blending_));
        target->drawQuad(quad);
    }

private:
    InputPort* color1_;
    InputPort* color2_;
    InputPort* color3_;
    InputPort* position2_;
    InputPort* direction_;
    InputPort* blending_;
    bool threePoints_;
};

// A straight line from start to end, inputLineWidth pixels wide (1 by
// default), its colour running from the start colour to the end colour.
class LinePatch : public Patch {
public:
    explicit LinePatch(const PatchSetup& setup) : Patch(setup)
    {
        for (const char* key : {"inputStartX", "inputStartY", "inputStartZ", "inputEndX", "inputEndY", "inputEndZ"})
            points_.push_back(&addInput(QString::fromLatin1(key), PortType::Number, 0.0));
        startColor_ = &addInput(QStringLiteral("inputStartColor"), PortType::Color, Color::white());
        endColor_ = &addInput(QStringLiteral("inputEndColor"), PortType::Color, Color::white());
        width_ = &addInput(QStringLiteral("inputLineWidth"), PortType::Number, 1.0);
        blending_ = &addInput(QStringLiteral("inputBlending"), PortType::Index, kImageBlendingDefault);
        addInput(QStringLiteral("inputZBuffer"), PortType::Index, 0);
    }
    ExecutionMode executionMode() const override { return ExecutionMode::Consumer; }
    void execute(ExecutionContext& context, double) override
    {
        RenderTarget* target = context.target();
        if (!target) return;
        const QVector3D start(float(number(points_[0])), float(number(points_[1])), float(number(points_[2])));
        const QVector3D end(float(number(points_[3])), float(number(points_[4])), float(number(points_[5])));
        const QVector3D along = end - start;
        const double length = along.length();
        if (!(length > 0)) return;
        // The two colours as a 2 × 1 image, stretched along the line.
        QImage ramp(2, 1, QImage::Format_ARGB32);
        const auto rgba = [](const Color& c) { return QColor::fromRgbF(float(std::clamp(c.red, 0.0, 1.0)), float(std::clamp(c.green, 0.0, 1.0)),
                                                                       float(std::clamp(c.blue, 0.0, 1.0)), float(std::clamp(c.alpha, 0.0, 1.0))).rgba(); };
        ramp.setPixel(0, 0, rgba(startColor_->value.toColor()));
        ramp.setPixel(1, 0, rgba(endColor_->value.toColor()));
        const double thickness = std::max(number(width_), 0.0) * 2.0 / std::max(target->pixelSize().width(), 1);
        QuadDraw quad;
        quad.transform = context.modelView();
        quad.transform.translate(start);
        quad.transform.rotate(float(std::atan2(along.y(), along.x()) * 180.0 / std::numbers::pi), 0, 0, 1);
        quad.transform.rotate(float(-std::asin(std::clamp(double(along.z()) / length, -1.0, 1.0)) * 180.0 / std::numbers::pi), 0, 1, 0);
        quad.rect = QRectF(0, -thickness / 2, length, thickness);
        quad.image = Image::fromRaster(ramp);
        quad.blend = blendModeFromIndex(index(blending_));
        target->drawQuad(quad);
    }

private:
    std::vector<InputPort*> points_;
    InputPort* startColor_;
    InputPort* endColor_;
    InputPort* width_;
    InputPort* blending_;
};

}  // namespace

void registerRenderingPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCClear"), factoryOf<ClearPatch>());
    registry.add(QStringLiteral("QCSprite"), factoryOf<SpritePatch>());
    registry.add(QStringLiteral("QCBillboard"), factoryOf<BillboardPatch>());
    registry.add(QStringLiteral("QCGradient"), factoryOf<GradientPatch>());
    registry.add(QStringLiteral("QCLine"), factoryOf<LinePatch>());
}

}  // namespace runtime
