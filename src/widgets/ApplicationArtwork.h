#pragma once
// The application's own picture: a broadcast monitor with a lower third on
// it, drawn in code like every other icon. It has fixed colours, not the
// palette's, because the desktop shows it outside the program too (menus,
// file managers, the task switcher), where our palette does not apply.
// tools/icons renders it into the installed SVG and PNG icons.

#include <QIcon>

class QPainter;

namespace widgets {

class ApplicationArtwork {
public:
    // The side of the square grid the drawing is made on.
    static constexpr int kGrid = 128;
    // The icon name the desktop looks the installed files up by.
    static QString iconName() { return QStringLiteral("org.velloran.Velloran"); }

    // Draws the picture into the square (0, 0)–(side, side) of the painter.
    static void draw(QPainter& painter, double side);
    // An icon that draws the picture at whatever size and pixel density it
    // is asked for: the windows' icon.
    static QIcon icon();
};

}  // namespace widgets
