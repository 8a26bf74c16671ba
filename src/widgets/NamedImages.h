#pragma once
// The application's drawn images under the names the rest of the program
// and saved layouts refer to them by: "ToolbarAlignLeft" … "ToolbarDistributeBottom"
// for alignment and distribution, "TimelineZoomIn" … "TimelineEnd" for the
// timeline's buttons, "InspectorProperties" … "InspectorTextNatural" for the
// inspector's tabs and text alignment. Every one is drawn in code at the size asked for.

#include <QIcon>
#include <QPixmap>
#include <QString>
#include <QStringList>

namespace widgets {

class NamedImages {
public:
    // Every registered name, toolbar images first.
    static QStringList names();
    // A null icon for a name that is not registered.
    static QIcon imageNamed(const QString& name);
    // The image drawn at size × size device-independent pixels.
    static QPixmap pixmapNamed(const QString& name, int size, qreal devicePixelRatio = 1.0);
};

}  // namespace widgets
