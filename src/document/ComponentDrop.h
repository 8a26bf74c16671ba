#pragma once
// Components from files the way a drop on the canvas makes them: a .qtz file
// becomes its own component, an image an image component, a Photoshop file
// one image component per visible layer.

#include <QString>
#include <QStringList>

namespace model {
class Composition;
}
namespace psd {
class PSDLayerImporter;
}

namespace document {

struct DropResult {
    bool ok = true;          // false when a composition file could not be used
    QStringList warnings;    // to show the user ("Import Composition")
    int componentsAdded = 0;
};

// `commandKeyPressed`: a Photoshop file becomes one flat image instead of layers.
DropResult addComponentsFromPaths(model::Composition& composition, const QStringList& paths,
                                  bool commandKeyPressed = false);

// One image component per visible layer, bottom layer first so that the
// stacking is kept; each at its layer's place, named "<layer> - <file>".
int importPSDLayers(model::Composition& composition, const psd::PSDLayerImporter& importer,
                    const QString& componentFile);

bool isPSDFile(const QString& path);

// The sheet text for the warnings of a composition import.
QString importWarningText(const QStringList& warnings);

}  // namespace document
