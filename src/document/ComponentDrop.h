#pragma once
// Components from files the way a drop on the canvas makes them: a .qtz file
// becomes its own component, an image an image component, a Photoshop file
// one image component per visible layer.

#include "document/WorkProgress.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace model {
class Composition;
class QuartzComponent;
}  // namespace model
namespace psd {
class PSDLayerImporter;
}

namespace document {

struct DropResult {
    bool ok = true;          // false when a composition file could not be used
    QStringList warnings;    // to show the user ("Import Composition")
    int componentsAdded = 0;
};

// Takes a Photoshop file over from the drop, with the image component file
// its pictures are to be shown with: the editor lets the user choose the
// layers in a sheet first. Without one the layers come in straight away.
using PSDImportHandler = std::function<void(const QString& psdPath, const QString& componentFile)>;

// `commandKeyPressed`: a Photoshop file becomes one flat image instead of
// layers, and is never handed to `psdImport`.
// `progress` follows the reading and the import of a Photoshop file; it may
// be told from the decoding threads, one call at a time.
DropResult addComponentsFromPaths(model::Composition& composition, const QStringList& paths,
                                  bool commandKeyPressed = false, const PSDImportHandler& psdImport = {},
                                  const WorkProgress& progress = {});

// One image component per visible layer, bottom layer first so that the
// stacking is kept; each at its layer's place, named "<layer> - <file>".
// `progress` is told the layers done before each one and may stop the
// import between layers (what was added stays; the caller rolls it back).
int importPSDLayers(model::Composition& composition, const psd::PSDLayerImporter& importer,
                    const QString& componentFile, const WorkProgress& progress = {});

// One image component of the visible layers flattened, titled with the file
// name, its lower-left corner on the canvas's; null when the component file
// cannot be used.
model::QuartzComponent* importCombinedPSDImage(model::Composition& composition,
                                               const psd::PSDLayerImporter& importer, const QString& componentFile);

// The extension is exactly "psd" (lower case, as the drop has always tested it).
bool isPSDFile(const QString& path);

// The sheet text for the warnings of a composition import.
QString importWarningText(const QStringList& warnings);

}  // namespace document
