#pragma once
// The toolbar's icons, drawn in code so they stay sharp at any scale and
// follow the palette: "imageOfToolbar<Name>" for a name without spaces or
// slashes ("Poster Frame" → "imageOfToolbarPosterFrame").

#include <QIcon>
#include <QString>

namespace widgets {

class ToolbarArtwork {
public:
    // The icon for a toolbar item or component name; a null icon when there
    // is no drawing of that name.
    static QIcon toolbarImageWithName(const QString& name);
    static QString imageNameForToolbarItem(const QString& name);
};

}  // namespace widgets
