#include "inspector/VLInspectorAttributesController.h"

#include "inspector/AttributeEditorFactory.h"
#include "inspector/MenuAttributeEditor.h"

#include "model/Attribute.h"
#include "model/QuartzComponent.h"

#include <QLabel>

#include <algorithm>
#include <map>

namespace inspector {

VLInspectorAttributesController::VLInspectorAttributesController(VLInspectorController* inspectorController)
    : VLInspectorViewContoller(inspectorController)
{
    setObjectName(QStringLiteral("attributesPane"));
}

const QStringList& VLInspectorAttributesController::textJustificationNames()
{
    return MenuAttributeEditor::textJustificationNames();
}

const QStringList& VLInspectorAttributesController::leftOutKeys()
{
    static const QStringList keys{QStringLiteral("inputWidth"), QStringLiteral("inputHeight"), QStringLiteral("originX"),
                                  QStringLiteral("originY"),    QStringLiteral("opacity"),     QStringLiteral("zRotation"),
                                  QStringLiteral("marginX"),    QStringLiteral("marginY"),
                                  QStringLiteral("visibleInCompositionEditor")};
    return keys;
}

QString VLInspectorAttributesController::rowLabel(const QString& label)
{
    return QString(label).replace(QLatin1Char('_'), QLatin1Char(' '));
}

AttributeEditor* VLInspectorAttributesController::editorForKey(const QString& key) const
{
    for (const auto& [k, editor] : editors_)
        if (k == key) return editor;
    return nullptr;
}

void VLInspectorAttributesController::rebuild()
{
    resetRows();
    editors_.clear();
    noAttributes_ = nullptr;

    // The first attribute met for a key stands for all of that key; the map
    // keeps them sorted by key.
    std::map<QString, model::Attribute*> byKey;
    for (model::QuartzComponent* c : selectedComponents())
        for (model::Attribute* a : c->attributes())
            if (!leftOutKeys().contains(a->key())) byKey.emplace(a->key(), a);
    if (byKey.empty()) {
        noAttributes_ = form()->addLabelRow(QStringLiteral("No attributes"));
        return;
    }
    for (const auto& [key, attribute] : byKey) {
        const QString label = rowLabel(attribute->label());
        AttributeEditor* editor =
            makeAttributeEditorForType(attribute->type(), EditorOptions{label, attribute->possibleValues()});
        if (!editor) continue;  // live video and rich fonts: no row, and no "No attributes" either
        editor->setObjectName(key);
        if (addAttributeRow(label, key, editor, QStringLiteral("Change %1").arg(label))) editors_.append({key, editor});
    }
}

}  // namespace inspector
