#pragma once
// Lays out and draws white text on a transparent image for Image With
// String. The font, the layouts and a scratch image with its open painter
// are kept from string to string, so a new string costs its layout and the
// picture handed out, little more: a ticker retypes one every frame.

#include "runtime/TargetPainter.h"

#include <QFont>
#include <QImage>
#include <QPen>
#include <QString>
#include <QTextLayout>

#include <memory>
#include <vector>

namespace runtime {

struct TextBox {
    QString fontName;     // PostScript name, resolved by FontResolver
    int pixelSize = 12;
    double kerning = 0;   // extra pixels between letters
    double leading = 0;   // extra pixels between lines
    double width = 0;     // 0: no wrapping, the image fits the text
    double height = 0;    // 0: the image fits the lines
    Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignTop;
    int maxSide = 8192;
};

struct RenderedText {
    QImage pixels;  // premultiplied, exactly the box (or the text) in size
    int lineCount = 0;
};

class TextRasterizer {
public:
    RenderedText render(const QString& text, const TextBox& box);

private:
    void setFont(const TextBox& box);
    QTextLayout& layoutAt(std::size_t index);
    QImage& scratchOfAtLeast(int width, int height);

    // The font as last set up, and what it was set up from.
    QString fontName_;
    int pixelSize_ = 0;
    double kerning_ = 0;
    QFont font_;
    double fontHeight_ = 0;
    bool haveFont_ = false;

    std::vector<std::unique_ptr<QTextLayout>> layouts_;  // one per paragraph
    QImage scratch_;  // drawn on, then the text's part copied out
    TargetPainter painter_;
    const QPen pen_{Qt::white};  // one pen, set without allocating a new one
};

}  // namespace runtime
