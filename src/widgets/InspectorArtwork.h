#pragma once
// The inspector's drawings, made like the toolbar's: the three tab icons
// "Properties", "Permissions" and "Document", and the text alignment icons
// "TextLeft", "TextCenter", "TextRight", "TextJustified", "TextNatural" of
// the justification control.

#include <QIcon>
#include <QString>
#include <QStringList>

namespace widgets {

class InspectorArtwork {
public:
    static QStringList names();
    // A null icon when there is no drawing of that name.
    static QIcon inspectorImageWithName(const QString& name);
};

}  // namespace widgets
