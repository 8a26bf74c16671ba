#include "inspector/FontAttributeEditor.h"

#include <QFontDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace inspector {

FontAttributeEditor::FontAttributeEditor(const EditorOptions& options) : AttributeEditor(options)
{
    widget_ = new QWidget;
    setParent(widget_);
    auto* layout = new QHBoxLayout(widget_);
    layout->setContentsMargins(0, 0, 0, 0);
    label_ = new QLabel(widget_);
    label_->setTextInteractionFlags(Qt::NoTextInteraction);
    // A long family name is cut rather than widening the whole inspector.
    label_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    label_->setMinimumWidth(40);
    button_ = new QPushButton(QStringLiteral("Choose..."), widget_);
    layout->addWidget(label_, 1);
    layout->addWidget(button_);
    connect(button_, &QPushButton::clicked, this, &FontAttributeEditor::showFontPanel);
}

void FontAttributeEditor::showValue(const QVariant& value, bool mixed)
{
    rememberShown(value, mixed);
    const QFont font = value.value<QFont>();
    label_->setText(mixed ? mixedValuesPlaceholder()
                          : QStringLiteral("%1 %2").arg(font.family()).arg(font.pointSizeF()));
    label_->setToolTip(label_->text());
}

QWidget* FontAttributeEditor::widget() const { return widget_; }

void FontAttributeEditor::showFontPanel()
{
    if (panel_) {
        panel_->raise();
        return;
    }
    kept_ = shownValue().value<QFont>();
    panel_ = new QFontDialog(kept_, widget_);
    panel_->setObjectName(panelObjectName());
    panel_->setAttribute(Qt::WA_DeleteOnClose);
    panel_->setWindowTitle(options().label);
    connect(panel_, &QFontDialog::currentFontChanged, this, [this](const QFont& font) {
        beginEdit();
        Q_EMIT edited(font);
    });
    connect(panel_, &QDialog::finished, this, [this](int result) {
        // The panel deletes itself later; a new one may open before that.
        panel_.clear();
        if (result != QDialog::Accepted && isEditing()) Q_EMIT edited(kept_);
        endEdit();
    });
    panel_->show();
}

}  // namespace inspector
