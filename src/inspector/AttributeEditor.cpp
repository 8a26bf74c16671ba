#include "inspector/AttributeEditor.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>

namespace inspector {

namespace {

class UndoKeysFilter : public QObject {
public:
    UndoKeysFilter(QObject* parent, AttributeEditor* editor) : QObject(parent), editor_(editor) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::ShortcutOverride) return QObject::eventFilter(watched, event);
        auto* key = static_cast<QKeyEvent*>(event);
        if (!key->matches(QKeySequence::Undo) && !key->matches(QKeySequence::Redo)) return false;
        if (editor_) editor_->finishEditing();
        // Not accepted: the shortcut goes on to the window's menu item.
        event->ignore();
        return true;
    }

private:
    QPointer<AttributeEditor> editor_;
};

}  // namespace

QString mixedValuesPlaceholder() { return QStringLiteral("Multiple values"); }

void routeUndoKeysToDocument(QWidget* control, AttributeEditor* editor)
{
    control->installEventFilter(new UndoKeysFilter(control, editor));
}

void showTextFromStart(QLineEdit* field, const QString& text)
{
    if (field->text() != text) field->setText(text);
    if (!field->hasFocus()) field->setCursorPosition(0);
}

}  // namespace inspector
