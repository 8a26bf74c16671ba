#pragma once
// The one interface every attribute control sits behind. An editor shows a
// value (or that the selection disagrees), and says when the user starts a
// gesture, changes the value and ends the gesture; the binding that owns it
// turns that into model writes and undo groups. Editors know nothing of the
// model: no model header is included by any of them.

#include <QObject>
#include <QStringList>
#include <QVariant>

class QLabel;
class QLineEdit;
class QWidget;

namespace inspector {

// What an editor needs to know besides the value.
struct EditorOptions {
    QString label;               // the row label, for panel titles and tool tips
    QStringList possibleValues;  // the items of a menu
    double minimum = -1e9;       // the range of numbers
    double maximum = 1e9;
};

class AttributeEditor : public QObject {
    Q_OBJECT
public:
    explicit AttributeEditor(const EditorOptions& options) : options_(options) {}

    // `value` is the first selected object's; `mixed` says the others differ.
    // Never emits edited().
    virtual void showValue(const QVariant& value, bool mixed) = 0;
    // The control beside the label. The editor lives as long as it does.
    virtual QWidget* widget() const = 0;
    // A second row under the control without a label ("Edit...", "Choose..."), or null.
    virtual QWidget* secondRow() const { return nullptr; }
    // The row's label, for editors that react to it (numbers drag on it).
    virtual void attachLabel(QLabel* /*label*/) {}

    const EditorOptions& options() const { return options_; }
    // True between editStarted() and editFinished(): the model's echo of the
    // user's own change is then not shown, and the rows are not rebuilt.
    bool isEditing() const { return editing_; }
    // Ends a gesture in progress (the window's Undo is about to run).
    void finishEditing() { endEdit(); }
    // The value last shown, and whether it was mixed.
    const QVariant& shownValue() const { return shownValue_; }
    bool shownMixed() const { return shownMixed_; }

Q_SIGNALS:
    void edited(const QVariant& value);
    void editStarted();
    void editFinished();

protected:
    void rememberShown(const QVariant& value, bool mixed)
    {
        shownValue_ = value;
        shownMixed_ = mixed;
    }
    void beginEdit()
    {
        if (editing_) return;
        editing_ = true;
        Q_EMIT editStarted();
    }
    void endEdit()
    {
        if (!editing_) return;
        editing_ = false;
        Q_EMIT editFinished();
    }
    // One change that is a whole gesture by itself (a click, a menu choice).
    void editOnce(const QVariant& value)
    {
        const bool wasEditing = editing_;
        beginEdit();
        Q_EMIT edited(value);
        if (!wasEditing) endEdit();
    }

private:
    EditorOptions options_;
    QVariant shownValue_;
    bool shownMixed_ = false;
    bool editing_ = false;
};

// The placeholder of a control whose selection disagrees.
QString mixedValuesPlaceholder();

// Lets the document's Undo and Redo keys through a text control instead of
// its own one-field undo, which would change the text behind the model's
// back; a gesture in progress ends first, so Undo takes it back whole.
void routeUndoKeysToDocument(QWidget* control, AttributeEditor* editor);

// Puts text into a line edit showing its beginning, as a field that is not
// being typed in should.
void showTextFromStart(QLineEdit* field, const QString& text);

}  // namespace inspector
