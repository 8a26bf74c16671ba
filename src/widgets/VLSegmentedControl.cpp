#include "widgets/VLSegmentedControl.h"

#include <QHBoxLayout>
#include <QToolButton>

namespace widgets {

VLSegmentedControl::VLSegmentedControl(const std::vector<Segment>& segments, QWidget* parent) : QWidget(parent)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    for (const Segment& segment : segments) {
        auto* button = new QToolButton(this);
        button->setIcon(segment.icon);
        button->setToolTip(segment.toolTip);
        button->setIconSize(QSize(20, 20));
        button->setAutoRaise(true);
        button->setObjectName(QStringLiteral("Segment%1").arg(segment.tag));
        const int tag = segment.tag;
        connect(button, &QToolButton::clicked, this, [this, tag] { Q_EMIT segmentTriggered(tag); });
        layout->addWidget(button);
        buttons_.emplace_back(tag, button);
    }
}

QToolButton* VLSegmentedControl::buttonForTag(int tag) const
{
    for (const auto& [t, button] : buttons_)
        if (t == tag) return button;
    return nullptr;
}

}  // namespace widgets
