#include "inspector/ColourAttributeEditor.h"

#include "inspector/ColourWell.h"

#include <QColorDialog>

namespace inspector {

ColourAttributeEditor::ColourAttributeEditor(const EditorOptions& options) : AttributeEditor(options)
{
    well_ = new ColourWell;
    well_->setColour(Qt::black);
    setParent(well_);
    connect(well_, &QToolButton::clicked, this, &ColourAttributeEditor::showColourPanel);
}

void ColourAttributeEditor::showValue(const QVariant& value, bool mixed)
{
    rememberShown(value, mixed);
    const QColor colour = value.value<QColor>();
    well_->setColour(mixed ? QColor() : colour.isValid() ? colour : QColor(Qt::black));
}

QWidget* ColourAttributeEditor::widget() const { return well_; }

void ColourAttributeEditor::showColourPanel()
{
    if (panel_) {
        panel_->raise();
        return;
    }
    kept_ = well_->showsMixed() ? shownValue().value<QColor>() : well_->colour();
    panel_ = new QColorDialog(kept_.isValid() ? kept_ : QColor(Qt::black), well_);
    panel_->setObjectName(panelObjectName());
    panel_->setAttribute(Qt::WA_DeleteOnClose);
    panel_->setOption(QColorDialog::ShowAlphaChannel);
    panel_->setWindowTitle(options().label);
    connect(panel_, &QColorDialog::currentColorChanged, this, [this](const QColor& colour) {
        if (!colour.isValid()) return;
        beginEdit();
        well_->setColour(colour);
        Q_EMIT edited(colour);
    });
    connect(panel_, &QDialog::finished, this, [this](int result) {
        // The panel deletes itself later; a new one may open before that.
        panel_.clear();
        if (result != QDialog::Accepted && isEditing() && kept_.isValid()) Q_EMIT edited(kept_);
        endEdit();
    });
    panel_->show();
}

}  // namespace inspector
