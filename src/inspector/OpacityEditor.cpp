#include "inspector/OpacityEditor.h"

#include <QHBoxLayout>
#include <QIntValidator>
#include <QLineEdit>
#include <QLocale>
#include <QSlider>

#include <cmath>

namespace inspector {

OpacityEditor::OpacityEditor(const EditorOptions& options) : AttributeEditor(options)
{
    widget_ = new QWidget;
    setParent(widget_);
    auto* layout = new QHBoxLayout(widget_);
    layout->setContentsMargins(0, 0, 0, 0);
    slider_ = new QSlider(Qt::Horizontal, widget_);
    slider_->setRange(0, 100);
    field_ = new QLineEdit(widget_);
    field_->setValidator(new QIntValidator(0, 100, field_));
    field_->setAlignment(Qt::AlignRight);
    field_->setMaximumWidth(48);
    layout->addWidget(slider_, 1);
    layout->addWidget(field_);
    connect(slider_, &QSlider::sliderPressed, this, [this] { beginEdit(); });
    connect(slider_, &QSlider::sliderReleased, this, [this] { endEdit(); });
    connect(slider_, &QSlider::valueChanged, this, [this](int percent) {
        {
            const QSignalBlocker quiet(field_);
            field_->setText(QString::number(percent));
        }
        // Clicks in the groove and keys move the slider without a press.
        if (isEditing()) Q_EMIT edited(percent / 100.0);
        else editOnce(percent / 100.0);
    });
    connect(field_, &QLineEdit::editingFinished, this, [this] {
        if (!field_->isModified()) return;
        field_->setModified(false);
        editOnce(field_->text().toInt() / 100.0);
    });
}

void OpacityEditor::showValue(const QVariant& value, bool mixed)
{
    rememberShown(value, mixed);
    const int percent = int(std::lround(value.toDouble() * 100.0));
    const QSignalBlocker quietSlider(slider_);
    const QSignalBlocker quietField(field_);
    slider_->setValue(mixed ? 0 : percent);
    field_->setPlaceholderText(mixed ? mixedValuesPlaceholder() : QString());
    field_->setText(mixed ? QString() : QString::number(percent));
}

QWidget* OpacityEditor::widget() const { return widget_; }

}  // namespace inspector
