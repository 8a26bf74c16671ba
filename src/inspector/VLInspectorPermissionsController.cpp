#include "inspector/VLInspectorPermissionsController.h"

#include "inspector/CheckboxAttributeEditor.h"
#include "inspector/PropertyBinding.h"
#include "inspector/VLInspectorAttributesController.h"

#include "model/Attribute.h"
#include "model/QuartzComponent.h"
#include "model/UndoManager.h"

#include <QHBoxLayout>
#include <QPushButton>

#include <map>

namespace inspector {

VLInspectorPermissionsController::VLInspectorPermissionsController(VLInspectorController* inspectorController)
    : VLInspectorViewContoller(inspectorController)
{
    setObjectName(QStringLiteral("permissionsPane"));
}

const QStringList& VLInspectorPermissionsController::editorOnlyKeys()
{
    static const QStringList keys{QStringLiteral("marginX"), QStringLiteral("marginY"),
                                  QStringLiteral("visibleInCompositionEditor")};
    return keys;
}

CheckboxAttributeEditor* VLInspectorPermissionsController::switchForKey(const QString& key) const
{
    for (const auto& [k, editor] : switches_)
        if (k == key) return editor;
    return nullptr;
}

void VLInspectorPermissionsController::rebuild()
{
    resetRows();
    switches_.clear();
    all_ = none_ = nullptr;
    const auto components = selectedComponents();
    if (components.empty()) {
        form()->addLabelRow(QStringLiteral("Select components to choose what the operator may change."));
        return;
    }
    // One row per key, labelled as the first attribute of that key is.
    std::map<QString, std::vector<model::ManagedObject*>> byKey;
    std::map<QString, QString> labels;
    for (model::QuartzComponent* c : components)
        for (model::Attribute* a : c->attributes()) {
            if (editorOnlyKeys().contains(a->key())) continue;
            byKey[a->key()].push_back(a);
            labels.emplace(a->key(), VLInspectorAttributesController::rowLabel(a->label()));
        }

    auto* buttons = new QWidget;
    auto* layout = new QHBoxLayout(buttons);
    layout->setContentsMargins(0, 0, 0, 0);
    all_ = new QPushButton(QStringLiteral("Allow All"), buttons);
    none_ = new QPushButton(QStringLiteral("Allow None"), buttons);
    layout->addWidget(all_);
    layout->addWidget(none_);
    layout->addStretch(1);
    connect(all_, &QPushButton::clicked, this, [this] { setAll(true); });
    connect(none_, &QPushButton::clicked, this, [this] { setAll(false); });
    form()->addRow(QStringLiteral("Operator"), buttons);

    for (const auto& [key, attributes] : byKey) {
        auto* editor = new CheckboxAttributeEditor(EditorOptions{labels[key]}, QStringLiteral("Operator may change"));
        editor->setObjectName(key);
        std::vector<PropertyBinding::Observed> observed;
        for (model::ManagedObject* a : attributes) observed.push_back({a, QStringLiteral("permissionToChange")});
        form()->addRow(labels[key], editor->widget());
        adopt(new PropertyBinding(
            *undoManager(), attributes,
            [](model::ManagedObject* o) { return QVariant(static_cast<model::Attribute*>(o)->permissionToChange()); },
            [](model::ManagedObject* o, const QVariant& v) { static_cast<model::Attribute*>(o)->setPermissionToChange(v.toBool()); },
            observed, editor, QStringLiteral("Change Permission")));
        switches_.append({key, editor});
    }
}

void VLInspectorPermissionsController::setAll(bool allowed)
{
    if (!undoManager()) return;
    model::UndoGroup group(*undoManager(), allowed ? QStringLiteral("Allow All") : QStringLiteral("Allow None"));
    for (model::QuartzComponent* c : selectedComponents())
        for (model::Attribute* a : c->attributes())
            if (!editorOnlyKeys().contains(a->key())) a->setPermissionToChange(allowed);
}

}  // namespace inspector
