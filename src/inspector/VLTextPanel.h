#pragma once
// The multi-line text panel of string attributes: a text view with OK and
// Cancel, shown window-modal over the inspector. Every change is announced
// at once (the canvas follows the typing); Return confirms instead of
// starting a new line, Escape cancels.

#include <QDialog>
#include <QPlainTextEdit>
#include <QVariant>

class QPushButton;

namespace inspector {

// The panel's text view: Return and Escape end the panel.
class VLTextPanelView : public QPlainTextEdit {
    Q_OBJECT
public:
    using QPlainTextEdit::QPlainTextEdit;

Q_SIGNALS:
    void stopModalWithResponse(int response);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

class VLTextPanel : public QDialog {
    Q_OBJECT
public:
    explicit VLTextPanel(QWidget* parent = nullptr);

    QString stringValue() const;
    // A string goes into the text view; anything else (none, a number) empties it.
    void setStringValue(const QVariant& value);

    VLTextPanelView* textView() const { return textView_; }
    QPushButton* okButton() const { return okButton_; }
    QPushButton* cancelButton() const { return cancelButton_; }

    // Ends the panel: 1 confirms, anything else cancels.
    void stopModalWithResponse(int response);

Q_SIGNALS:
    void textPanelDidChange(const QString& text);

private:
    VLTextPanelView* textView_;
    QPushButton* okButton_;
    QPushButton* cancelButton_;
};

}  // namespace inspector
