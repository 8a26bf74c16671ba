#pragma once
// The attribute pane: one labelled control per attribute of the selected
// components (all made from one composition file), chosen by the
// attribute's type through the editor factory, and bound to every selected
// component at once. The geometry, opacity and visibility keys belong to
// the other panes and get no row here.

#include "inspector/VLInspectorViewContoller.h"

#include <QStringList>

class QLabel;

namespace inspector {

class AttributeEditor;

class VLInspectorAttributesController : public VLInspectorViewContoller {
    Q_OBJECT
public:
    explicit VLInspectorAttributesController(VLInspectorController* inspectorController);

    // "Left", "Center", "Right", "Justified", "Natural".
    static const QStringList& textJustificationNames();
    // The keys other panes edit, or nobody does.
    static const QStringList& leftOutKeys();
    // A label as the row shows it: every "_" a blank.
    static QString rowLabel(const QString& label);

    void rebuild() override;

    // The rows' editors by attribute key, in row order.
    const QList<QPair<QString, AttributeEditor*>>& editors() const { return editors_; }
    AttributeEditor* editorForKey(const QString& key) const;
    // The "No attributes" line, when shown.
    QLabel* noAttributesLabel() const { return noAttributes_; }

private:
    QList<QPair<QString, AttributeEditor*>> editors_;
    QLabel* noAttributes_ = nullptr;
};

}  // namespace inspector
