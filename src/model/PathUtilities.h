#pragma once
// Paths relative to a document, so a template and its resources can move together.

#include <QString>

namespace model {

// The target path relative to the base path (normally the document's own
// path, whose last component is taken as a file name). Relative paths, paths
// with nothing in common, and paths on different volumes stay as they are.
QString pathRelativeTo(const QString& target, const QString& base);

}  // namespace model
