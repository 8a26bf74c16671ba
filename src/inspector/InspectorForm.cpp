#include "inspector/InspectorForm.h"

#include <QGridLayout>
#include <QLabel>
#include <QLayoutItem>

namespace inspector {

InspectorForm::InspectorForm(QWidget* parent) : QWidget(parent)
{
    grid_ = new QGridLayout(this);
    grid_->setContentsMargins(8, 4, 8, 8);
    grid_->setHorizontalSpacing(8);
    grid_->setVerticalSpacing(4);
    grid_->setColumnStretch(1, 1);
}

QLabel* InspectorForm::addRow(const QString& label, QWidget* control, QWidget* trailing)
{
    auto* name = new QLabel(label, this);
    name->setToolTip(label);
    name->setTextInteractionFlags(Qt::NoTextInteraction);
    name->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    name->setObjectName(QStringLiteral("rowLabel"));
    grid_->addWidget(name, rows_, 0);
    grid_->addWidget(control, rows_, 1);
    if (trailing) grid_->addWidget(trailing, rows_, 2);
    ++rows_;
    return name;
}

void InspectorForm::addUnlabelledRow(QWidget* control)
{
    grid_->addWidget(control, rows_, 1, Qt::AlignLeft);
    ++rows_;
}

QLabel* InspectorForm::addLabelRow(const QString& text)
{
    auto* label = new QLabel(text, this);
    label->setAlignment(Qt::AlignCenter);
    label->setEnabled(false);
    label->setObjectName(QStringLiteral("formMessage"));
    grid_->addWidget(label, rows_, 0, 1, 3);
    ++rows_;
    return label;
}

void InspectorForm::reset()
{
    while (QLayoutItem* item = grid_->takeAt(0)) {
        // At once, so that no old row goes on observing the model; rows are
        // only rebuilt from queued updates, never inside one of their signals.
        delete item->widget();
        delete item;
    }
    rows_ = 0;
}

QStringList InspectorForm::labels() const
{
    QStringList result;
    for (int row = 0; row < rows_; ++row)
        if (QLayoutItem* item = grid_->itemAtPosition(row, 0))
            if (auto* label = qobject_cast<QLabel*>(item->widget()); label && label->objectName() == QLatin1String("rowLabel"))
                result << label->text();
    return result;
}

}  // namespace inspector
