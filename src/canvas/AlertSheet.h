#pragma once
// A message attached to a document window with one "Ok" button, the way
// commands report their results. It does not block: the window stays live
// and the box deletes itself when dismissed.

#include <QString>

class QMessageBox;
class QWidget;

namespace document {
struct Alert;
}

namespace canvas {

// Shows the alert unless the user turned it off under its suppression key;
// answers the box shown, or null when suppressed.
QMessageBox* showAlertSheet(QWidget* window, const document::Alert& alert, bool warning = false);

// The object name every alert box carries, so tests and automation find it.
inline QString alertSheetObjectName() { return QStringLiteral("AlertSheet"); }

}  // namespace canvas
