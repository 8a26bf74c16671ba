#include "runtime/patches/TextRasterizer.h"

#include "runtime/FontResolver.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace runtime {

namespace {
// A scratch image larger than this (a full-screen text box, say) is not
// kept between strings.
constexpr qint64 kKeptScratchPixels = 1024 * 1024;
// Nor the layouts of more paragraphs than this.
constexpr std::size_t kKeptLayouts = 16;
}  // namespace

void TextRasterizer::setFont(const TextBox& box)
{
    if (haveFont_ && box.fontName == fontName_ && box.pixelSize == pixelSize_ && box.kerning == kerning_) return;
    // Resolving and measuring a font allocates: only when it changes.
    QFont font = resolveFont(box.fontName).font;
    font.setPixelSize(box.pixelSize);
    font.setLetterSpacing(QFont::AbsoluteSpacing, box.kerning);
    fontHeight_ = QFontMetricsF(font).height();
    font_ = font;
    fontName_ = box.fontName;
    pixelSize_ = box.pixelSize;
    kerning_ = box.kerning;
    haveFont_ = true;
}

QTextLayout& TextRasterizer::layoutAt(std::size_t index)
{
    while (layouts_.size() <= index) {
        layouts_.push_back(std::make_unique<QTextLayout>());
        // Keeps the shaped glyphs from layout to drawing instead of shaping twice.
        layouts_.back()->setCacheEnabled(true);
    }
    return *layouts_[index];
}

QImage& TextRasterizer::scratchOfAtLeast(int width, int height)
{
    if (scratch_.width() < width || scratch_.height() < height) {
        painter_.end();
        // Grown to hold this string and the last; not to the area of a
        // long line and a tall column together.
        QSize size(std::max(width, scratch_.width()), std::max(height, scratch_.height()));
        if (qint64(size.width()) * size.height() > kKeptScratchPixels) size = QSize(width, height);
        scratch_ = QImage(size, QImage::Format_ARGB32_Premultiplied);
    }
    return scratch_;
}

RenderedText TextRasterizer::render(const QString& text, const TextBox& box)
{
    setFont(box);
    const double lineHeight = fontHeight_ + box.leading;
    // Most strings are one paragraph: no list of them to build.
    const QStringList paragraphs = text.contains(QLatin1Char('\n')) ? text.split(QLatin1Char('\n')) : QStringList();
    const std::size_t paragraphCount = paragraphs.isEmpty() ? 1 : std::size_t(paragraphs.size());
    QTextOption option;
    option.setWrapMode(box.width > 0 ? QTextOption::WrapAtWordBoundaryOrAnywhere : QTextOption::NoWrap);

    double y = 0, widest = 0;
    int lineCount = 0;
    for (std::size_t p = 0; p < paragraphCount; ++p) {
        QTextLayout& layout = layoutAt(p);
        layout.setText(paragraphs.isEmpty() ? text : paragraphs[qsizetype(p)]);
        layout.setFont(font_);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            // Without a box the line is as long as the paragraph.
            line.setLineWidth(box.width > 0 ? box.width : 1e6);
            line.setPosition(QPointF(0, y));
            y += lineHeight;
            widest = std::max(widest, line.naturalTextWidth());
            ++lineCount;
            if (lineCount > 10000) break;
        }
        layout.endLayout();
    }
    const double textHeight = y;
    const int w = std::clamp(int(std::ceil(box.width > 0 ? box.width : widest)), 1, box.maxSide);
    const int h = std::clamp(int(std::ceil(box.height > 0 ? box.height : textHeight)), 1, box.maxSide);

    QImage& scratch = scratchOfAtLeast(w, h);
    if (scratch.isNull()) return {};
    uchar* bits = scratch.bits();
    for (int row = 0; row < h; ++row) std::memset(bits + row * scratch.bytesPerLine(), 0, std::size_t(w) * 4);
    QPainter* painter = painter_.on(scratch);
    if (!painter) return {};
    painter->setRenderHint(QPainter::TextAntialiasing);
    painter->setPen(pen_);
    double top = 0;
    if (box.alignment & Qt::AlignVCenter) top = (h - textHeight) / 2;
    else if (box.alignment & Qt::AlignBottom) top = h - textHeight;
    for (std::size_t p = 0; p < paragraphCount; ++p) {
        const QTextLayout& layout = *layouts_[p];
        for (int i = 0; i < layout.lineCount(); ++i) {
            const QTextLine line = layout.lineAt(i);
            double left = 0;
            if (box.alignment & Qt::AlignHCenter) left = (w - line.naturalTextWidth()) / 2;
            else if (box.alignment & Qt::AlignRight) left = w - line.naturalTextWidth();
            line.draw(painter, QPointF(left - line.position().x(), top));
        }
    }
    // Glyphs reaching past the picture landed on scratch pixels that are not copied.
    RenderedText rendered{scratch.copy(0, 0, w, h), lineCount};
    if (qint64(scratch.width()) * scratch.height() > kKeptScratchPixels) {
        painter_.end();
        scratch_ = QImage();
    }
    if (layouts_.size() > kKeptLayouts) layouts_.resize(kKeptLayouts);
    return rendered;
}

}  // namespace runtime
