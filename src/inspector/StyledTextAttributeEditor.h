#pragma once
// Styled text: a three-line rich text view. The value is RTF; the view
// edits the document it reads to, and every change writes RTF again as the
// user types (one undo step until the view loses focus).

#include "inspector/AttributeEditor.h"

#include <QTextEdit>

namespace inspector {

// A text edit that says when it loses focus: the end of a typing gesture.
class StyledTextView : public QTextEdit {
    Q_OBJECT
public:
    using QTextEdit::QTextEdit;
    QSize sizeHint() const override;

Q_SIGNALS:
    void focusLost();

protected:
    void focusOutEvent(QFocusEvent* event) override;
};

class StyledTextAttributeEditor : public AttributeEditor {
    Q_OBJECT
public:
    explicit StyledTextAttributeEditor(const EditorOptions& options);

    void showValue(const QVariant& value, bool mixed) override;
    QWidget* widget() const override;
    StyledTextView* textView() const { return view_; }

private:
    StyledTextView* view_;
};

}  // namespace inspector
