#pragma once
// One row's binding: it shows the value of every bound object in the row's
// editor ("mixed" when they disagree) and writes an edit to all of them in
// one undo group. A gesture (typing, a drag on a label, an open colour
// panel) holds one group from its start to its end, and the writes inside
// it merge per object and key, so the whole gesture is one small step.
//
// Model → editor updates come from observing the objects, and are shown in
// place under a signal blocker; the editor the user is working in is left
// alone until the gesture ends.

#include "model/ManagedObject.h"
#include "model/UndoManager.h"

#include <QObject>
#include <QPointer>
#include <QVariant>

#include <functional>
#include <optional>
#include <vector>

namespace model {
class Attribute;
class QuartzComponent;
}  // namespace model

namespace inspector {

class AttributeEditor;

class PropertyBinding : public QObject {
    Q_OBJECT
public:
    using Read = std::function<QVariant(model::ManagedObject*)>;
    using Write = std::function<void(model::ManagedObject*, const QVariant&)>;
    struct Observed {
        model::ManagedObject* object;
        QString key;
    };

    // `objects` are what `read` and `write` get; `observed` the keys whose
    // change refreshes the row. The binding takes the editor's signals; it
    // is a child of the editor, so the two go together.
    PropertyBinding(model::UndoManager& undo, std::vector<model::ManagedObject*> objects, Read read, Write write,
                    const std::vector<Observed>& observed, AttributeEditor* editor, const QString& actionName);
    ~PropertyBinding() override;

    // A row for the attribute `key` of every component: read at the playhead,
    // written through QuartzComponent::setValueForKey (as `doc apply` does),
    // the value first put in the form the type stores.
    static PropertyBinding* forAttribute(model::UndoManager& undo, const std::vector<model::QuartzComponent*>& components,
                                         const QString& key, AttributeEditor* editor, const QString& actionName);

    // Reads every object and shows the result, unless the user is editing.
    void refresh();
    // The values as last read: the first object's and whether others differ.
    QVariant value() const;
    bool isMixed() const;
    AttributeEditor* editor() const { return editor_; }
    bool isEditing() const;
    const std::vector<QPointer<model::ManagedObject>>& objects() const { return objects_; }

    // Writes the value to every object in one undo step (or into the open
    // gesture's group).
    void write(const QVariant& value);

Q_SIGNALS:
    void editingChanged(bool editing);

private:
    void started();
    void finished();
    std::vector<model::ManagedObject*> liveObjects() const;

    model::UndoManager& undo_;
    std::vector<QPointer<model::ManagedObject>> objects_;
    Read read_;
    Write write_;
    QPointer<AttributeEditor> editor_;
    QString actionName_;
    std::optional<model::UndoGroup> gesture_;
};

// Whether two attribute values count as the same for "mixed".
bool sameValue(const QVariant& a, const QVariant& b);

}  // namespace inspector
