#pragma once
// Makes the editor of an attribute type from the attribute-type table's
// editor kind: one maker per kind, and a new type needs no change here
// unless it brings a new kind of control.

#include "inspector/AttributeEditor.h"

#include "model/AttributeTypes.h"

namespace inspector {

// The editor for the kind, owned by its widget; null for a kind the
// attribute pane shows no row for (live video, rich fonts).
AttributeEditor* makeAttributeEditor(model::EditorKind kind, const EditorOptions& options);
// The same for a type code, through the table.
AttributeEditor* makeAttributeEditorForType(int typeCode, const EditorOptions& options);

}  // namespace inspector
