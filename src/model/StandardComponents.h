#pragma once
// Where the composition files that the editor itself instantiates live
// ("Background", "Renderer", "ImageComponent", ...), and the toolbar's list.

#include <QString>

namespace model {

class StandardComponents {
public:
    // The folder, found once: $VELLORAN_RESOURCES/standard-components, the
    // installed share folder beside the executable, or the source tree's.
    static QString folder();
    // The file "<name>.qtz" in it, or an empty string when there is none.
    static QString pathForComponent(const QString& name);
    static QString toolbarComponentsPath();
    // Tests point the lookup elsewhere (an empty folder: no components).
    static void setFolderForTesting(const QString& folder);
};

}  // namespace model
