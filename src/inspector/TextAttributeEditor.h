#pragma once
// A string: a one-line field that writes as the user types (one undo step
// per edit, ended by Return or leaving the field), and an "Edit..." button
// under it that opens the multi-line text panel. Cancelling the panel puts
// back the text it opened with, even after its live changes.

#include "inspector/AttributeEditor.h"
#include "inspector/VLTextPanel.h"

#include <QPointer>

class QLineEdit;
class QPushButton;

namespace inspector {



class TextAttributeEditor : public AttributeEditor {
    Q_OBJECT
public:
    explicit TextAttributeEditor(const EditorOptions& options);

    void showValue(const QVariant& value, bool mixed) override;
    QWidget* widget() const override;
    QWidget* secondRow() const override;

    QLineEdit* field() const { return field_; }
    QPushButton* editButton() const { return editButton_; }
    // The open text panel, or null.
    VLTextPanel* textPanel() const { return panel_; }
    void showTextPanel();

private:
    void textPanelDidChange(const QString& text);
    void textPanelFinished(int response);

    QLineEdit* field_;
    QPushButton* editButton_;
    QPointer<VLTextPanel> panel_;
    QVariant keptValue_;
};

}  // namespace inspector
