#pragma once
// Which document a path means. Packages are folders, and a desktop hands
// the editor whatever the user double-clicked: the folder, its info file,
// its store, or a picture in QuickLook/.

#include <QString>

namespace document {

// The package folder that is `path` or holds it, however deep: the nearest
// folder named "*.composition" or holding a store. Empty when the path does
// not exist or no such folder encloses it.
QString packageContainingPath(const QString& path);

}  // namespace document
