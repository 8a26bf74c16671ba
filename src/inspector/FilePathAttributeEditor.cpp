#include "inspector/FilePathAttributeEditor.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>

namespace inspector {

FilePathAttributeEditor::FilePathAttributeEditor(const EditorOptions& options) : AttributeEditor(options)
{
    field_ = new QLineEdit;
    setParent(field_);
    routeUndoKeysToDocument(field_, this);
    button_ = new QPushButton(QStringLiteral("Choose..."));
    connect(field_, &QObject::destroyed, button_, &QObject::deleteLater);
    // A path half typed names no file: it is written only when finished.
    connect(field_, &QLineEdit::editingFinished, this, [this] {
        if (!field_->isModified()) return;
        field_->setModified(false);
        editOnce(field_->text());
    });
    connect(button_, &QPushButton::clicked, this, &FilePathAttributeEditor::showFilePanel);
}

void FilePathAttributeEditor::showValue(const QVariant& value, bool mixed)
{
    rememberShown(value, mixed);
    const QSignalBlocker quiet(field_);
    field_->setPlaceholderText(mixed ? mixedValuesPlaceholder() : QString());
    showTextFromStart(field_, mixed ? QString() : value.toString());
    field_->setModified(false);
}

QWidget* FilePathAttributeEditor::widget() const { return field_; }
QWidget* FilePathAttributeEditor::secondRow() const { return button_; }

void FilePathAttributeEditor::showFilePanel()
{
    if (dialog_) return;
    dialog_ = new QFileDialog(field_->window(), options().label);
    dialog_->setAttribute(Qt::WA_DeleteOnClose);
    dialog_->setFileMode(QFileDialog::ExistingFile);
    dialog_->setWindowModality(Qt::WindowModal);
    const QFileInfo current(field_->text());
    if (!field_->text().isEmpty() && current.isAbsolute()) dialog_->setDirectory(current.absolutePath());
    connect(dialog_, &QFileDialog::fileSelected, this, [this](const QString& path) { editOnce(path); });
    connect(dialog_, &QDialog::finished, this, [this] { dialog_.clear(); });
    dialog_->open();
}

}  // namespace inspector
