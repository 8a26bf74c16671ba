#pragma once
// An index with a menu: a pop-up of the possible values, or, when they are
// exactly the five text justifications, a segmented control of alignment
// icons. Either shows nothing chosen when the selection disagrees.

#include "inspector/AttributeEditor.h"

class QComboBox;

namespace widgets {
class VLSegmentedControl;
}

namespace inspector {

class MenuAttributeEditor : public AttributeEditor {
    Q_OBJECT
public:
    explicit MenuAttributeEditor(const EditorOptions& options);

    // "Left", "Center", "Right", "Justified", "Natural".
    static const QStringList& textJustificationNames();

    void showValue(const QVariant& value, bool mixed) override;
    QWidget* widget() const override;

    // One of the two is null.
    QComboBox* popUp() const { return popUp_; }
    widgets::VLSegmentedControl* alignment() const { return alignment_; }

private:
    QWidget* widget_;
    QComboBox* popUp_ = nullptr;
    widgets::VLSegmentedControl* alignment_ = nullptr;
};

}  // namespace inspector
