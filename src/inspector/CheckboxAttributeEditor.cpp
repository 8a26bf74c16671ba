#include "inspector/CheckboxAttributeEditor.h"

#include <QCheckBox>

namespace inspector {

CheckboxAttributeEditor::CheckboxAttributeEditor(const EditorOptions& options, const QString& text)
    : AttributeEditor(options)
{
    box_ = new QCheckBox(text);
    setParent(box_);
    connect(box_, &QCheckBox::clicked, this, [this] {
        // The third state is only ever shown, never chosen by a click.
        const bool on = box_->checkState() != Qt::Unchecked;
        {
            const QSignalBlocker quiet(box_);
            box_->setTristate(false);
            box_->setChecked(on);
        }
        editOnce(on);
    });
}

void CheckboxAttributeEditor::showValue(const QVariant& value, bool mixed)
{
    rememberShown(value, mixed);
    const QSignalBlocker quiet(box_);
    box_->setTristate(mixed);
    box_->setCheckState(mixed ? Qt::PartiallyChecked : value.toBool() ? Qt::Checked : Qt::Unchecked);
}

QWidget* CheckboxAttributeEditor::widget() const { return box_; }

}  // namespace inspector
