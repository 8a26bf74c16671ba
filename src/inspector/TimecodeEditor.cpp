#include "inspector/TimecodeEditor.h"

#include <QLineEdit>

namespace inspector {

TimecodeEditor::TimecodeEditor(const EditorOptions& options, Format format, Parse parse,
                               std::optional<double> noneBelow, const QString& noneText)
    : AttributeEditor(options), format_(std::move(format)), parse_(std::move(parse)), noneBelow_(noneBelow),
      noneText_(noneText)
{
    field_ = new QLineEdit;
    setParent(field_);
    routeUndoKeysToDocument(field_, this);
    field_->setAlignment(Qt::AlignRight);
    connect(field_, &QLineEdit::editingFinished, this, &TimecodeEditor::commit);
}

void TimecodeEditor::showValue(const QVariant& value, bool mixed)
{
    rememberShown(value, mixed);
    const QSignalBlocker quiet(field_);
    const bool none = noneBelow_ && value.toDouble() < *noneBelow_;
    field_->setPlaceholderText(mixed ? mixedValuesPlaceholder() : none ? noneText_ : QString());
    showTextFromStart(field_, mixed || none || !value.isValid() ? QString() : format_(value.toDouble()));
    field_->setModified(false);
}

QWidget* TimecodeEditor::widget() const { return field_; }

void TimecodeEditor::commit()
{
    if (!field_->isModified()) return;
    field_->setModified(false);
    const std::optional<double> seconds = parse_(field_->text());
    if (!seconds) {
        showValue(shownValue(), shownMixed());
        return;
    }
    editOnce(*seconds);
}

}  // namespace inspector
