#pragma once
// Icons drawn in code. A drawing is made on a 24 × 24 grid and painted at
// whatever size and pixel density an icon is asked for, in the palette's
// colours, so the toolbar, menus and timeline stay sharp at any scale and
// follow the look of the application.

#include <QColor>
#include <QIcon>

#include <functional>

class QPainter;

namespace widgets {

// The three colours a drawing may use: outlines, quiet fills, the accent.
struct ArtworkInk {
    QColor line;
    QColor fill;
    QColor accent;
};

using ArtworkDrawing = std::function<void(QPainter&, const ArtworkInk&)>;

inline constexpr int kArtworkGrid = 24;

// The ink for an icon mode: the palette's text and highlight colours, faded
// for disabled icons.
ArtworkInk artworkInk(QIcon::Mode mode);

// An icon that paints the drawing at any size (a null icon for no drawing).
QIcon artworkIcon(ArtworkDrawing drawing);

}  // namespace widgets
