#pragma once
// Renders a window once into an image file, for checking the look of the
// editor without a person at the screen (`velloran --screenshot`).

#include <QString>

class QWidget;

namespace app {

// Shows the window, waits until it is on screen (at most `timeoutMs`) and
// its layout has settled, then renders it into `path` as PNG. False when
// the file could not be written.
bool saveWindowScreenshot(QWidget* window, const QString& path, int timeoutMs = 10000);

}  // namespace app
