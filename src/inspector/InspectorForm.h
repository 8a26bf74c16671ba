#pragma once
// The labelled rows of a pane: a label column, the controls beside it and,
// for animateable rows, the keyframe buttons at the end. Rows without a
// label span the control column; a label row stands alone. Reset throws
// every row away.

#include <QWidget>

class QGridLayout;
class QLabel;

namespace inspector {

class InspectorForm : public QWidget {
    Q_OBJECT
public:
    explicit InspectorForm(QWidget* parent = nullptr);

    // A label (its text also its tool tip; neither editable nor selectable)
    // beside the control, and `trailing` (or nothing) after it.
    QLabel* addRow(const QString& label, QWidget* control, QWidget* trailing = nullptr);
    // A control under the one before, without a label.
    void addUnlabelledRow(QWidget* control);
    // A line of text across the form ("No attributes").
    QLabel* addLabelRow(const QString& text);
    void reset();
    int rowCount() const { return rows_; }
    // The labels of the rows, top to bottom.
    QStringList labels() const;

private:
    QGridLayout* grid_;
    int rows_ = 0;
};

}  // namespace inspector
