#include "inspector/MenuAttributeEditor.h"

#include "widgets/NamedImages.h"
#include "widgets/VLSegmentedControl.h"

#include <QComboBox>
#include <QToolButton>

#include <cmath>

namespace inspector {

const QStringList& MenuAttributeEditor::textJustificationNames()
{
    static const QStringList names{QStringLiteral("Left"), QStringLiteral("Center"), QStringLiteral("Right"),
                                   QStringLiteral("Justified"), QStringLiteral("Natural")};
    return names;
}

MenuAttributeEditor::MenuAttributeEditor(const EditorOptions& options) : AttributeEditor(options)
{
    if (options.possibleValues == textJustificationNames()) {
        static const char* icons[] = {"InspectorTextLeft", "InspectorTextCenter", "InspectorTextRight",
                                      "InspectorTextJustified", "InspectorTextNatural"};
        std::vector<widgets::VLSegmentedControl::Segment> segments;
        for (int i = 0; i < 5; ++i)
            segments.push_back({i, widgets::NamedImages::imageNamed(QLatin1String(icons[i])), textJustificationNames()[i]});
        alignment_ = new widgets::VLSegmentedControl(segments);
        for (int i = 0; i < 5; ++i) {
            alignment_->buttonForTag(i)->setCheckable(true);
            alignment_->buttonForTag(i)->setIconSize(QSize(16, 16));
        }
        connect(alignment_, &widgets::VLSegmentedControl::segmentTriggered, this, [this](int tag) {
            showValue(tag, false);
            editOnce(tag);
        });
        widget_ = alignment_;
    } else {
        popUp_ = new QComboBox;
        popUp_->addItems(options.possibleValues);
        popUp_->setPlaceholderText(mixedValuesPlaceholder());
        connect(popUp_, &QComboBox::activated, this, [this](int index) { editOnce(index); });
        widget_ = popUp_;
    }
    setParent(widget_);
}

void MenuAttributeEditor::showValue(const QVariant& value, bool mixed)
{
    rememberShown(value, mixed);
    const int index = mixed || !value.isValid() ? -1 : int(std::lround(value.toDouble()));
    if (popUp_) {
        const QSignalBlocker quiet(popUp_);
        popUp_->setCurrentIndex(index < popUp_->count() ? index : -1);
        return;
    }
    for (int tag = 0; tag < 5; ++tag) {
        QToolButton* button = alignment_->buttonForTag(tag);
        const QSignalBlocker quiet(button);
        button->setChecked(tag == index);
    }
}

QWidget* MenuAttributeEditor::widget() const { return widget_; }

}  // namespace inspector
