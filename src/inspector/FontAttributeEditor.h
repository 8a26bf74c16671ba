#pragma once
// A font: its family and size, and a "Choose..." button that opens the font
// panel. Like the colour panel, the font panel edits live as one gesture.

#include "inspector/AttributeEditor.h"

#include <QFont>
#include <QPointer>

#include <QFontDialog>
class QLabel;
class QPushButton;

namespace inspector {

class FontAttributeEditor : public AttributeEditor {
    Q_OBJECT
public:
    explicit FontAttributeEditor(const EditorOptions& options);

    void showValue(const QVariant& value, bool mixed) override;
    QWidget* widget() const override;

    QPushButton* chooseButton() const { return button_; }
    QLabel* fontLabel() const { return label_; }
    QFontDialog* fontPanel() const { return panel_; }
    void showFontPanel();
    static QString panelObjectName() { return QStringLiteral("inspectorFontPanel"); }

private:
    QWidget* widget_;
    QLabel* label_;
    QPushButton* button_;
    QPointer<QFontDialog> panel_;
    QFont kept_;
};

}  // namespace inspector
