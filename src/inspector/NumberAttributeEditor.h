#pragma once
// Numbers (and whole-number indices): a field that writes as the user types
// and on Return, and the row's label as a scrubber: dragging it sideways
// changes the value by one per pixel, ten with Shift, a tenth with Alt, held
// to the editor's range. A drag is one gesture: the binding makes it one
// undo step.

#include "inspector/AttributeEditor.h"

#include <QPointer>

#include <optional>

class QLabel;
class QLineEdit;

namespace inspector {

class NumberAttributeEditor : public AttributeEditor {
    Q_OBJECT
public:
    // `wholeNumbers`: an index, shown and written without fractions.
    NumberAttributeEditor(const EditorOptions& options, bool wholeNumbers);

    void showValue(const QVariant& value, bool mixed) override;
    QWidget* widget() const override;
    void attachLabel(QLabel* label) override;

    QLineEdit* field() const { return field_; }
    bool wholeNumbers() const { return wholeNumbers_; }
    // The text of a value as the field shows it: "#,##0.##" in the user's
    // locale, no fractions for whole numbers.
    QString format(double value) const;
    // The field's text as a number, or nothing when it is none.
    std::optional<double> parse(const QString& text) const;
    // The value a drag of `pixels` to the right from `start` gives, in the
    // range but not yet rounded to a whole number.
    double dragged(double start, double pixels, Qt::KeyboardModifiers modifiers) const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    double clamp(double value) const;
    void typed(const QString& text);
    void finishTyping();

    QLineEdit* field_;
    QPointer<QLabel> label_;
    bool wholeNumbers_;
    // The drag on the label: the last mouse x, and the value there unrounded.
    std::optional<std::pair<double, double>> drag_;
};

}  // namespace inspector
