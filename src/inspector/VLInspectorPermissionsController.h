#pragma once
// The Permissions tab: for every attribute of the selected components, the
// switch that lets the operator change it on air (the export publishes
// exactly those), with buttons that allow or forbid all of them at once.
// Several components are set together; a key they disagree on shows mixed.

#include "inspector/VLInspectorViewContoller.h"

class QPushButton;

namespace inspector {

class CheckboxAttributeEditor;

class VLInspectorPermissionsController : public VLInspectorViewContoller {
    Q_OBJECT
public:
    explicit VLInspectorPermissionsController(VLInspectorController* inspectorController);

    // Keys the export never publishes (the editor's own margins and
    // visibility): their switch would change nothing, so they get none.
    static const QStringList& editorOnlyKeys();

    void rebuild() override;
    // Every attribute of the selection allowed, or none.
    void setAll(bool allowed);

    // The switch of an attribute key, or null.
    CheckboxAttributeEditor* switchForKey(const QString& key) const;
    QPushButton* allButton() const { return all_; }
    QPushButton* noneButton() const { return none_; }

private:
    QList<QPair<QString, CheckboxAttributeEditor*>> switches_;
    QPushButton* all_ = nullptr;
    QPushButton* none_ = nullptr;
};

}  // namespace inspector
