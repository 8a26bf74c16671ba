#include "timeline/TimelineStyle.h"

#include <QPalette>

namespace timeline {

TimelineStyle TimelineStyle::fromPalette(const QPalette& palette, const QFont& font)
{
    TimelineStyle s;
    const QColor base = palette.color(QPalette::Base);
    const QColor window = palette.color(QPalette::Window);
    const QColor text = palette.color(QPalette::Text);
    const QColor highlight = palette.color(QPalette::Highlight);
    const bool dark = base.lightness() < 128;

    s.textColor = text;
    s.textColor.setAlphaF(0.75f);
    s.editorMarkerColor = QColor(0xf0, 0x4e, 0x3e);
    s.stopFrameColor = QColor(0xf2, 0xb1, 0x34);
    s.rulerBackgroundColor = dark ? window.darker(115) : window;
    s.componentSeparatorColor = dark ? base.lighter(165) : base.darker(115);
    s.componentBackgroundColor = dark ? QColor(0x4b, 0x5b, 0x72) : QColor(0xa9, 0xb8, 0xcc);
    s.componentSelectedBackgroundColor = highlight.darker(dark ? 115 : 100);
    s.componentKeyframeColor = dark ? text.darker(115) : text.lighter(150);
    s.componentKeyframeSelectedColor = dark ? highlight.lighter(140) : highlight;
    // The platform's selected-content colour at half strength.
    s.draggingKeyFrameColor = highlight;
    s.draggingKeyFrameColor.setAlphaF(0.5f);
    s.rowsBackgroundColor = base;
    s.alternateRowColor = dark ? base.lighter(118) : palette.color(QPalette::AlternateBase);
    s.componentTextColor = text;
    s.selectedComponentTextColor = palette.color(QPalette::HighlightedText);

    s.componentFont = font;
    s.componentFont.setPixelSize(12);
    s.rulerFont = font;
    // DejaVu Sans, our user-interface font, has digits of one width.
    s.rulerFont.setPixelSize(10);
    return s;
}

}  // namespace timeline
