#pragma once
// Opacity as a percentage: a slider and a field. The value is 0–1; the
// controls show 0–100. A slider drag is one gesture.

#include "inspector/AttributeEditor.h"

class QLineEdit;
class QSlider;

namespace inspector {

class OpacityEditor : public AttributeEditor {
    Q_OBJECT
public:
    explicit OpacityEditor(const EditorOptions& options);

    void showValue(const QVariant& value, bool mixed) override;
    QWidget* widget() const override;
    QSlider* slider() const { return slider_; }
    QLineEdit* field() const { return field_; }

private:
    QWidget* widget_;
    QSlider* slider_;
    QLineEdit* field_;
};

}  // namespace inspector
