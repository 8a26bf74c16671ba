#pragma once
// A file path: a field (written when the user finishes typing) and a
// "Choose..." button under it that opens a window-modal file dialog.
// Cancelling the dialog changes nothing.

#include "inspector/AttributeEditor.h"

#include <QPointer>

#include <QFileDialog>
class QLineEdit;
class QPushButton;

namespace inspector {

class FilePathAttributeEditor : public AttributeEditor {
    Q_OBJECT
public:
    explicit FilePathAttributeEditor(const EditorOptions& options);

    void showValue(const QVariant& value, bool mixed) override;
    QWidget* widget() const override;
    QWidget* secondRow() const override;

    QLineEdit* field() const { return field_; }
    QPushButton* chooseButton() const { return button_; }
    QFileDialog* fileDialog() const { return dialog_; }
    void showFilePanel();

private:
    QLineEdit* field_;
    QPushButton* button_;
    QPointer<QFileDialog> dialog_;
};

}  // namespace inspector
