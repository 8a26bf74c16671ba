#pragma once
// A colour: a colour well that opens the colour panel. The panel edits live
// (the canvas follows the picker) as one gesture until it closes; Cancel
// puts back the colour the well had when the panel opened.

#include "inspector/AttributeEditor.h"

#include <QColor>
#include <QPointer>

#include <QColorDialog>

namespace inspector {

class ColourWell;

class ColourAttributeEditor : public AttributeEditor {
    Q_OBJECT
public:
    explicit ColourAttributeEditor(const EditorOptions& options);

    void showValue(const QVariant& value, bool mixed) override;
    QWidget* widget() const override;

    ColourWell* well() const { return well_; }
    // The open colour panel, or null.
    QColorDialog* colourPanel() const { return panel_; }
    void showColourPanel();
    static QString panelObjectName() { return QStringLiteral("inspectorColourPanel"); }

private:
    ColourWell* well_;
    QPointer<QColorDialog> panel_;
    QColor kept_;
};

}  // namespace inspector
