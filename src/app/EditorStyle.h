#pragma once
// The editor's look: the Fusion style with a dark palette, as broadcast
// tools use so that the picture, not the chrome, stands out.

class QApplication;

namespace app {

void applyEditorStyle(QApplication& application);

}  // namespace app
