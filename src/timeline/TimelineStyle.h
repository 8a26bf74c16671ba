#pragma once
// The timeline's colours and fonts, made from the application's palette so
// they sit in the editor's dark theme: quiet rows and grid, the clips a
// muted blue that the selection colour replaces, a red playhead, amber stop
// frames, light keyframes that turn the selection colour when selected.

#include <QColor>
#include <QFont>

class QPalette;

namespace timeline {

struct TimelineStyle {
    QColor textColor;                  // ruler labels and ticks
    QColor editorMarkerColor;          // the playhead
    QColor stopFrameColor;
    QColor rulerBackgroundColor;
    QColor componentSeparatorColor;    // the grid and the marquee's outline
    QColor componentBackgroundColor;   // clip bars
    QColor componentSelectedBackgroundColor;  // a selected clip and its name row
    QColor componentKeyframeColor;
    QColor componentKeyframeSelectedColor;
    QColor draggingKeyFrameColor;      // the marquee's fill
    QColor rowsBackgroundColor;        // behind the rows (the clip view)
    QColor alternateRowColor;          // odd rows of the name column, the ruler's corner
    QColor componentTextColor;         // names in the name column
    QColor selectedComponentTextColor;
    QFont rulerFont;                   // digits of even width
    QFont componentFont;

    static TimelineStyle fromPalette(const QPalette& palette, const QFont& font);
};

}  // namespace timeline
