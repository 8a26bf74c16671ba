// "Image With String" (QCTextImage): white text on a transparent image.
// Without "manualLayout" sizes are in units of the destination (its width
// is 2 units), so the text is rendered at the destination's resolution; with
// it, glyph size, width and height are in pixels.

#include "runtime/ExecutionContext.h"
#include "runtime/patches/PatchFamilies.h"
#include "runtime/patches/TextRasterizer.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace runtime {

namespace {

constexpr int kMaxSide = 8192;

Qt::Alignment alignmentFromState(const QString& horizontal, const QString& vertical)
{
    Qt::Alignment a;
    a |= horizontal == QLatin1String("Centered")   ? Qt::AlignHCenter
         : horizontal == QLatin1String("Opposite") ? Qt::AlignRight
                                                   : Qt::AlignLeft;
    a |= vertical == QLatin1String("Centered")   ? Qt::AlignVCenter
         : vertical == QLatin1String("Opposite") ? Qt::AlignBottom
                                                 : Qt::AlignTop;
    return a;
}

class TextImagePatch : public Patch {
public:
    explicit TextImagePatch(const PatchSetup& setup)
        : Patch(setup), pixelMode_(stateBool(setup, "manualLayout", false))
    {
        alignment_ = alignmentFromState(stateString(setup, "horizontalAlignment"), stateString(setup, "verticalAlignment"));
        const double defaultSize = pixelMode_ ? 24.0 : 0.1;
        string_ = &addInput(QStringLiteral("inputString"), PortType::String, QStringLiteral("Hello World!"));
        fontName_ = &addInput(QStringLiteral("inputFontName"), PortType::String,
                              stateString(setup, "fontName", QStringLiteral("LucidaGrande")));
        glyphSize_ = &addInput(QStringLiteral("inputGlyphSize"), PortType::Number, stateNumber(setup, "fontSize", defaultSize));
        leading_ = &addInput(QStringLiteral("inputLeading"), PortType::Number, 0.0);
        kerning_ = &addInput(QStringLiteral("inputKerning"), PortType::Number, 0.0);
        width_ = &addInput(QStringLiteral("inputWidth"), PortType::Number, pixelMode_ ? stateNumber(setup, "width", 0) : 0.0);
        height_ = &addInput(QStringLiteral("inputHeight"), PortType::Number, pixelMode_ ? stateNumber(setup, "height", 0) : 0.0);
        image_ = &addOutput(QStringLiteral("outputImage"), PortType::Image);
        outWidth_ = &addOutput(QStringLiteral("outputWidth"), PortType::Number);
        outHeight_ = &addOutput(QStringLiteral("outputHeight"), PortType::Number);
        lines_ = &addOutput(QStringLiteral("outputLineCount"), PortType::Index);
        glyphs_ = &addOutput(QStringLiteral("outputGlyphCount"), PortType::Index);
    }
    // The picture depends on the destination's width in unit mode, which
    // is not a port: check it every evaluation (cheap when nothing moved).
    TimeMode timeMode() const override { return TimeMode::Idle; }
    bool readsOnlyTheDestinationSize() const override { return true; }

    void execute(ExecutionContext& context, double) override
    {
        const int destinationWidth = context.target() ? context.target()->pixelSize().width() : 640;
        const double pixelsPerUnit = destinationWidth / 2.0;
        const double scale = pixelMode_ ? 1.0 : pixelsPerUnit;  // input units → pixels
        if (!inputsChanged() && destinationWidth == lastDestinationWidth_ && rendered_) return;
        lastDestinationWidth_ = destinationWidth;
        rendered_ = true;

        const QString text = string(string_);
        const double glyphPixels = number(glyphSize_) * scale;
        if (text.isEmpty() || !(glyphPixels > 0.5) || glyphPixels > kMaxSide) {
            setOutput(*image_, Value());
            setOutput(*outWidth_, 0.0);
            setOutput(*outHeight_, 0.0);
            setOutput(*lines_, 0);
            setOutput(*glyphs_, 0);
            return;
        }
        TextBox box;
        box.fontName = string(fontName_);
        box.pixelSize = std::max(1, int(std::lround(glyphPixels)));
        box.kerning = number(kerning_) * scale;
        box.leading = number(leading_) * scale;
        box.width = std::clamp(number(width_) * scale, 0.0, double(kMaxSide));
        box.height = std::clamp(number(height_) * scale, 0.0, double(kMaxSide));
        box.alignment = alignment_;
        box.maxSide = kMaxSide;
        // Made on first use: loading builds every patch, and most never draw.
        if (!rasterizer_) rasterizer_ = std::make_unique<TextRasterizer>();
        RenderedText rendered = rasterizer_->render(text, box);
        const int w = rendered.pixels.width(), h = rendered.pixels.height();
        const int lineCount = rendered.lineCount;
        setOutput(*image_, Image::fromRaster(std::move(rendered.pixels)));
        setOutput(*outWidth_, w / pixelsPerUnit);
        setOutput(*outHeight_, h / pixelsPerUnit);
        setOutput(*lines_, lineCount);
        setOutput(*glyphs_, double(text.size() - text.count(QLatin1Char('\n'))));
    }

private:
    bool pixelMode_;
    Qt::Alignment alignment_;
    InputPort* string_;
    InputPort* fontName_;
    InputPort* glyphSize_;
    InputPort* leading_;
    InputPort* kerning_;
    InputPort* width_;
    InputPort* height_;
    OutputPort* image_;
    OutputPort* outWidth_;
    OutputPort* outHeight_;
    OutputPort* lines_;
    OutputPort* glyphs_;
    int lastDestinationWidth_ = 0;
    bool rendered_ = false;
    std::unique_ptr<TextRasterizer> rasterizer_;
};

}  // namespace

void registerTextImagePatch(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCTextImage"), factoryOf<TextImagePatch>());
}

}  // namespace runtime
