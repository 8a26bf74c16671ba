#include "rtf/RunFormat.h"

#include "rtf/Rtf.h"

#include <QFont>
#include <QTextCharFormat>

#include <algorithm>
#include <cmath>

namespace rtf {

RunFormat resolveRunFormat(const QTextCharFormat& format, const QFont& defaultFont)
{
    const QFont font = format.font().resolve(defaultFont);
    RunFormat run;
    run.family = font.families().value(0, font.family());
    // RTF sizes are half points; a size in pixels only (or none) counts as 12 pt.
    const double points = font.pointSizeF() > 0 ? font.pointSizeF() : 12.0;
    run.halfPoints = int(std::lround(std::clamp(points, kMinPointSize, kMaxPointSize) * 2));
    run.bold = font.bold();
    run.italic = font.italic();
    // fontUnderline() also sees QTextEdit's underline style property.
    run.underline = format.fontUnderline() || font.underline();
    run.strike = font.strikeOut();
    if (format.hasProperty(QTextFormat::ForegroundBrush) && format.foreground().style() != Qt::NoBrush) {
        const QColor colour = format.foreground().color();
        run.colour = QColor(colour.red(), colour.green(), colour.blue());  // RTF has no alpha
    }
    return run;
}

}  // namespace rtf
