#include "inspector/PropertyBinding.h"

#include "inspector/AttributeEditor.h"

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/NotificationHelper.h"
#include "model/QuartzComponent.h"

#include <QImage>

namespace inspector {

bool sameValue(const QVariant& a, const QVariant& b)
{
    // Numbers are stored in single precision: compare them as such, so that
    // 0.1 typed and 0.1 stored agree.
    const bool numbers = a.typeId() == QMetaType::Float || a.typeId() == QMetaType::Double;
    if (numbers && (b.typeId() == QMetaType::Float || b.typeId() == QMetaType::Double))
        return float(a.toDouble()) == float(b.toDouble());
    return a == b;
}

PropertyBinding::PropertyBinding(model::UndoManager& undo, std::vector<model::ManagedObject*> objects, Read read,
                                 Write write, const std::vector<Observed>& observed, AttributeEditor* editor,
                                 const QString& actionName)
    : QObject(editor), undo_(undo), read_(std::move(read)), write_(std::move(write)), editor_(editor),
      actionName_(actionName)
{
    for (model::ManagedObject* object : objects) objects_.emplace_back(object);
    for (const Observed& o : observed)
        model::NotificationHelper::addObserver(this, o.object, o.key,
                                               [this](model::ManagedObject*, const QString&) { refresh(); });
    connect(editor, &AttributeEditor::edited, this, &PropertyBinding::write);
    connect(editor, &AttributeEditor::editStarted, this, &PropertyBinding::started);
    connect(editor, &AttributeEditor::editFinished, this, &PropertyBinding::finished);
    refresh();
}

PropertyBinding::~PropertyBinding()
{
    model::NotificationHelper::removeObserver(this);
    // A row thrown away mid-gesture still closes its group.
    if (gesture_) {
        gesture_.reset();
        Q_EMIT editingChanged(false);
    }
}

PropertyBinding* PropertyBinding::forAttribute(model::UndoManager& undo,
                                               const std::vector<model::QuartzComponent*>& components,
                                               const QString& key, AttributeEditor* editor, const QString& actionName)
{
    std::vector<model::ManagedObject*> objects;
    std::vector<Observed> observed;
    for (model::QuartzComponent* c : components) {
        model::Attribute* a = c->attributeForKey(key);
        if (!a) continue;
        objects.push_back(c);
        // The value, its animation switch, and (through the playhead) the
        // time it is read at.
        observed.push_back({a, QStringLiteral("values")});
        observed.push_back({a, QStringLiteral("animateable")});
    }
    if (!components.empty() && components.front()->composition())
        observed.push_back({components.front()->composition(), QStringLiteral("editorTimepoint")});
    auto read = [key](model::ManagedObject* o) { return static_cast<model::QuartzComponent*>(o)->valueForKey(key); };
    auto write = [key](model::ManagedObject* o, const QVariant& v) {
        auto* c = static_cast<model::QuartzComponent*>(o);
        const model::Attribute* a = c->attributeForKey(key);
        if (!a) return;
        // The store's form of the type: what `doc apply` writes too.
        const QVariant stored = a->typeInfo().normalized(v);
        if (stored.isValid()) c->setValueForKey(key, stored);
    };
    return new PropertyBinding(undo, std::move(objects), read, write, observed, editor, actionName);
}

std::vector<model::ManagedObject*> PropertyBinding::liveObjects() const
{
    std::vector<model::ManagedObject*> live;
    for (const QPointer<model::ManagedObject>& o : objects_)
        if (o && !o->isDeleted()) live.push_back(o);
    return live;
}

QVariant PropertyBinding::value() const
{
    const auto live = liveObjects();
    return live.empty() ? QVariant() : read_(live.front());
}

bool PropertyBinding::isMixed() const
{
    const auto live = liveObjects();
    if (live.size() < 2) return false;
    const QVariant first = read_(live.front());
    for (std::size_t i = 1; i < live.size(); ++i)
        if (!sameValue(first, read_(live[i]))) return true;
    return false;
}

bool PropertyBinding::isEditing() const { return editor_ && editor_->isEditing(); }

void PropertyBinding::refresh()
{
    if (!editor_ || editor_->isEditing()) return;
    const auto live = liveObjects();
    if (live.empty()) {
        editor_->showValue(QVariant(), false);
        return;
    }
    const QVariant first = read_(live.front());
    bool mixed = false;
    for (std::size_t i = 1; i < live.size() && !mixed; ++i) mixed = !sameValue(first, read_(live[i]));
    editor_->showValue(first, mixed);
}

void PropertyBinding::write(const QVariant& value)
{
    const auto live = liveObjects();
    if (live.empty()) return;
    std::optional<model::UndoGroup> single;
    if (!gesture_) single.emplace(undo_, actionName_);
    for (model::ManagedObject* o : live) write_(o, value);
}

void PropertyBinding::started()
{
    if (gesture_) return;
    gesture_.emplace(undo_, actionName_);
    Q_EMIT editingChanged(true);
}

void PropertyBinding::finished()
{
    if (!gesture_) return;
    gesture_.reset();
    Q_EMIT editingChanged(false);
    // The model may hold something other than what was typed (clamped,
    // rounded, the partner of a constrained size): show it now.
    refresh();
}

}  // namespace inspector
