#include "inspector/TextAttributeEditor.h"

#include "inspector/VLTextPanel.h"

#include <QLineEdit>
#include <QPushButton>

namespace inspector {

TextAttributeEditor::TextAttributeEditor(const EditorOptions& options) : AttributeEditor(options)
{
    field_ = new QLineEdit;
    setParent(field_);
    routeUndoKeysToDocument(field_, this);
    editButton_ = new QPushButton(QStringLiteral("Edit..."));
    // The button row is separate in the form; it goes when the field goes.
    connect(field_, &QObject::destroyed, editButton_, &QObject::deleteLater);
    connect(field_, &QLineEdit::textEdited, this, [this](const QString& text) {
        beginEdit();
        Q_EMIT edited(text);
    });
    connect(field_, &QLineEdit::editingFinished, this, [this] { endEdit(); });
    connect(editButton_, &QPushButton::clicked, this, &TextAttributeEditor::showTextPanel);
}

void TextAttributeEditor::showValue(const QVariant& value, bool mixed)
{
    rememberShown(value, mixed);
    const QSignalBlocker quiet(field_);
    field_->setPlaceholderText(mixed ? mixedValuesPlaceholder() : QString());
    const QString text = mixed ? QString() : value.toString();
    showTextFromStart(field_, text);
}

QWidget* TextAttributeEditor::widget() const { return field_; }
QWidget* TextAttributeEditor::secondRow() const { return editButton_; }

void TextAttributeEditor::showTextPanel()
{
    if (panel_) return;
    // The panel opens on the value the field shows; cancelling restores it.
    keptValue_ = shownValue();
    panel_ = new VLTextPanel(field_->window());
    panel_->setAttribute(Qt::WA_DeleteOnClose);
    panel_->setWindowTitle(options().label);
    panel_->setStringValue(keptValue_);
    panel_->textView()->moveCursor(QTextCursor::End);
    connect(panel_, &VLTextPanel::textPanelDidChange, this, &TextAttributeEditor::textPanelDidChange);
    connect(panel_, &QDialog::finished, this, &TextAttributeEditor::textPanelFinished);
    beginEdit();
    panel_->open();
}

void TextAttributeEditor::textPanelDidChange(const QString& text)
{
    beginEdit();
    {
        // The field under the panel shows the same text.
        const QSignalBlocker quiet(field_);
        field_->setText(text);
    }
    Q_EMIT edited(text);
}

void TextAttributeEditor::textPanelFinished(int response)
{
    panel_.clear();
    if (response != QDialog::Accepted) Q_EMIT edited(keptValue_);
    endEdit();
}

}  // namespace inspector
