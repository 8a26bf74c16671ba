#include "inspector/StyledTextAttributeEditor.h"

#include "rtf/Rtf.h"

#include <QFontMetrics>
#include <QTextDocument>

namespace inspector {

QSize StyledTextView::sizeHint() const
{
    // Three lines of the view's font.
    const int lines = 3 * QFontMetrics(font()).lineSpacing();
    return QSize(QTextEdit::sizeHint().width(), lines + 2 * frameWidth() + 8);
}

void StyledTextView::focusOutEvent(QFocusEvent* event)
{
    QTextEdit::focusOutEvent(event);
    Q_EMIT focusLost();
}

StyledTextAttributeEditor::StyledTextAttributeEditor(const EditorOptions& options) : AttributeEditor(options)
{
    view_ = new StyledTextView;
    setParent(view_);
    view_->setAcceptRichText(true);
    routeUndoKeysToDocument(view_, this);
    view_->setFixedHeight(view_->sizeHint().height());
    connect(view_, &QTextEdit::textChanged, this, [this] {
        beginEdit();
        Q_EMIT edited(QString::fromLatin1(rtf::write(*view_->document())));
    });
    connect(view_, &StyledTextView::focusLost, this, [this] { endEdit(); });
}

void StyledTextAttributeEditor::showValue(const QVariant& value, bool mixed)
{
    rememberShown(value, mixed);
    const QSignalBlocker quiet(view_);
    view_->setPlaceholderText(mixed ? mixedValuesPlaceholder() : QString());
    const QString rtfText = mixed ? QString() : value.toString();
    std::unique_ptr<QTextDocument> read = rtfText.isEmpty() ? nullptr : rtf::read(rtfText.toLatin1());
    if (read) {
        // The view keeps its own document (and so its cursor and undo); only
        // the content is replaced.
        view_->document()->setHtml(read->toHtml());
    } else {
        view_->clear();
    }
}

QWidget* StyledTextAttributeEditor::widget() const { return view_; }

}  // namespace inspector
