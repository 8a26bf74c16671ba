#include "inspector/InspectorGroupView.h"

#include <QFrame>
#include <QToolButton>
#include <QVBoxLayout>

namespace inspector {

InspectorGroupView::InspectorGroupView(const QString& title, QWidget* content, QWidget* parent)
    : QWidget(parent), content_(content)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    header_ = new QToolButton(this);
    header_->setObjectName(QStringLiteral("groupHeader"));
    header_->setText(title);
    header_->setCheckable(true);
    header_->setChecked(true);
    header_->setArrowType(Qt::DownArrow);
    header_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    header_->setAutoRaise(true);
    header_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    QFont bold = header_->font();
    bold.setBold(true);
    header_->setFont(bold);
    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    layout->addWidget(line);
    layout->addWidget(header_);
    layout->addWidget(content_);
    connect(header_, &QToolButton::toggled, this, &InspectorGroupView::setExpanded);
}

QString InspectorGroupView::title() const { return header_->text(); }

bool InspectorGroupView::isExpanded() const { return header_->isChecked(); }

void InspectorGroupView::setExpanded(bool expanded)
{
    if (header_->isChecked() != expanded) header_->setChecked(expanded);
    header_->setArrowType(expanded ? Qt::DownArrow : Qt::RightArrow);
    content_->setVisible(expanded);
}

}  // namespace inspector
