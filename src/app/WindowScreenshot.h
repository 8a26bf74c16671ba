#pragma once
// Renders a window once into an image file, for checking the look of the
// editor without a person at the screen (`velloran --screenshot`).

#include <QString>
#include <QStringList>

class QWidget;

namespace model {
class Composition;
}

namespace app {

// Shows the window, waits until it is on screen (at most `timeoutMs`) and
// its layout has settled, then renders it into `path` as PNG. False when
// the file could not be written.
// With `part`, only the window's child of that object name is written (the
// rulers, the timeline, a toolbar button), at the screen's pixel density;
// false when the window has no such child.
bool saveWindowScreenshot(QWidget* window, const QString& path, int timeoutMs = 10000, const QString& part = {});

// Selects exactly the components whose title is one of `titles` (every
// component of a title shared by several). False, with the first title no
// component has in `missing`, when one is unknown; the selection is then
// left as it was.
bool selectComponentsWithTitles(model::Composition& composition, const QStringList& titles, QString* missing);

}  // namespace app
