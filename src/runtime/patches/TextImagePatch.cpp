// "Image With String" (QCTextImage): white text on a transparent image.
// Without "manualLayout" sizes are in units of the destination (its width
// is 2 units), so the text is rendered at the destination's resolution; with
// it, glyph size, width and height are in pixels.

#include "runtime/ExecutionContext.h"
#include "runtime/FontResolver.h"
#include "runtime/patches/PatchFamilies.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

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
        QFont font = resolveFont(string(fontName_)).font;
        font.setPixelSize(std::max(1, int(std::lround(glyphPixels))));
        font.setLetterSpacing(QFont::AbsoluteSpacing, number(kerning_) * scale);
        const double boxWidth = std::clamp(number(width_) * scale, 0.0, double(kMaxSide));
        const double boxHeight = std::clamp(number(height_) * scale, 0.0, double(kMaxSide));

        const QFontMetricsF metrics(font);
        const double lineHeight = metrics.height() + number(leading_) * scale;
        std::vector<std::unique_ptr<QTextLayout>> paragraphs;
        double y = 0, widest = 0;
        int lineCount = 0;
        for (const QString& paragraph : text.split(QLatin1Char('\n'))) {
            auto layout = std::make_unique<QTextLayout>(paragraph, font);
            QTextOption option;
            option.setWrapMode(boxWidth > 0 ? QTextOption::WrapAtWordBoundaryOrAnywhere : QTextOption::NoWrap);
            layout->setTextOption(option);
            layout->beginLayout();
            for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
                // Without a box the line is as long as the paragraph.
                line.setLineWidth(boxWidth > 0 ? boxWidth : 1e6);
                line.setPosition(QPointF(0, y));
                y += lineHeight;
                widest = std::max(widest, line.naturalTextWidth());
                ++lineCount;
                if (lineCount > 10000) break;
            }
            layout->endLayout();
            paragraphs.push_back(std::move(layout));
        }
        const double textHeight = y;
        const int w = std::clamp(int(std::ceil(boxWidth > 0 ? boxWidth : widest)), 1, kMaxSide);
        const int h = std::clamp(int(std::ceil(boxHeight > 0 ? boxHeight : textHeight)), 1, kMaxSide);

        QImage pixels(w, h, QImage::Format_ARGB32_Premultiplied);
        pixels.fill(Qt::transparent);
        QPainter painter(&pixels);
        painter.setRenderHint(QPainter::TextAntialiasing);
        painter.setPen(Qt::white);
        double top = 0;
        if (alignment_ & Qt::AlignVCenter) top = (h - textHeight) / 2;
        else if (alignment_ & Qt::AlignBottom) top = h - textHeight;
        for (const auto& layout : paragraphs) {
            for (int i = 0; i < layout->lineCount(); ++i) {
                QTextLine line = layout->lineAt(i);
                double left = 0;
                if (alignment_ & Qt::AlignHCenter) left = (w - line.naturalTextWidth()) / 2;
                else if (alignment_ & Qt::AlignRight) left = w - line.naturalTextWidth();
                line.draw(&painter, QPointF(left - line.position().x(), top));
            }
        }
        painter.end();
        setOutput(*image_, Image::fromRaster(std::move(pixels)));
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
};

}  // namespace

void registerTextImagePatch(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCTextImage"), factoryOf<TextImagePatch>());
}

}  // namespace runtime
