#pragma once
// A boolean: a check box, partly checked when the selection disagrees. A
// click is one change; from the mixed state it checks.

#include "inspector/AttributeEditor.h"

class QCheckBox;

namespace inspector {

class CheckboxAttributeEditor : public AttributeEditor {
    Q_OBJECT
public:
    explicit CheckboxAttributeEditor(const EditorOptions& options, const QString& text = QString());

    void showValue(const QVariant& value, bool mixed) override;
    QWidget* widget() const override;
    QCheckBox* checkBox() const { return box_; }

private:
    QCheckBox* box_;
};

}  // namespace inspector
