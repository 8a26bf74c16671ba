#include "model/ObjectStore.h"

#include <QMetaObject>

namespace model {

ObjectStore::ObjectStore(QObject* parent) : QObject(parent) {}

ObjectStore::~ObjectStore()
{
    *alive_ = false;
    // Undo actions own deleted objects; drop them before the live ones so no
    // object outlives the store it points to.
    undoManager_.removeAllActions();
    recentlyDeleted_.clear();
    objects_.clear();
}

ManagedObject* ObjectStore::insertObject(std::unique_ptr<ManagedObject> object, quint64 objectId)
{
    ManagedObject* raw = object.get();
    if (objectId == 0 || objects_.count(objectId)) objectId = nextId_;
    nextId_ = std::max(nextId_, objectId + 1);
    raw->objectId_ = objectId;
    raw->deleted_ = false;
    objects_.emplace(objectId, std::move(object));
    inserted_.append(raw);
    insertedSet_.insert(raw);
    schedulePendingChanges();
    undoManager_.registerUndo([this, objectId] {
        if (ManagedObject* o = objectWithId(objectId)) removeFromRegistry(o);
    });
    if (listener_) listener_->objectInserted(raw);
    return raw;
}

void ObjectStore::deleteObject(ManagedObject* object)
{
    if (!object || object->isDeleted()) return;
    const EntityDescription& entity = object->entity();
    for (const auto& relation : entity.relationships()) {
        if (!relation.toMany || relation.deleteRule != DeleteRule::Cascade) continue;
        const std::vector<ManagedObject*> owned = object->toMany(relation.name);
        for (ManagedObject* child : owned) deleteObject(child);
    }
    for (const auto& relation : entity.relationships()) {
        if (relation.toMany) {
            const std::vector<ManagedObject*> targets = object->toMany(relation.name);
            for (ManagedObject* target : targets) object->removeFromMany(relation.name, target);
        } else if (object->toOne(relation.name)) {
            object->setToOne(relation.name, nullptr);
        }
    }
    removeFromRegistry(object);
}

void ObjectStore::removeFromRegistry(ManagedObject* object)
{
    auto it = objects_.find(object->objectId());
    if (it == objects_.end() || it->second.get() != object) return;
    auto holder = std::make_shared<std::unique_ptr<ManagedObject>>(std::move(it->second));
    objects_.erase(it);
    object->deleted_ = true;
    if (insertedSet_.remove(object)) {
        inserted_.removeOne(object);
        // Inserted and deleted before anyone heard of it.
    } else {
        deleted_.append(object);
    }
    if (updatedSet_.remove(object)) updated_.removeOne(object);
    recentlyDeleted_.push_back(holder);
    schedulePendingChanges();
    undoManager_.registerUndo([this, holder] { reinsert(holder); });
    if (listener_) listener_->objectDeleted(object->objectId());
}

void ObjectStore::reinsert(const Holder& holder)
{
    if (!holder || !*holder) return;
    const quint64 id = (*holder)->objectId();
    insertObject(std::move(*holder), id);
}

std::vector<ManagedObject*> ObjectStore::registeredObjects() const
{
    std::vector<ManagedObject*> all;
    all.reserve(objects_.size());
    for (const auto& [id, object] : objects_) all.push_back(object.get());
    return all;
}

std::vector<ManagedObject*> ObjectStore::objectsOfEntity(const QString& entityName) const
{
    std::vector<ManagedObject*> matching;
    for (const auto& [id, object] : objects_)
        if (object->entity().name() == entityName) matching.push_back(object.get());
    return matching;
}

ManagedObject* ObjectStore::objectWithId(quint64 objectId) const
{
    auto it = objects_.find(objectId);
    return it == objects_.end() ? nullptr : it->second.get();
}

void ObjectStore::noteUpdated(ManagedObject* object)
{
    if (object->isDeleted() || insertedSet_.contains(object) || updatedSet_.contains(object)) return;
    updatedSet_.insert(object);
    updated_.append(object);
    schedulePendingChanges();
}

void ObjectStore::schedulePendingChanges()
{
    if (processingPosted_) return;
    processingPosted_ = true;
    std::weak_ptr<bool> alive = alive_;
    QMetaObject::invokeMethod(
        this,
        [this, alive] {
            if (alive.expired()) return;
            processPendingChanges();
        },
        Qt::QueuedConnection);
}

void ObjectStore::processPendingChanges()
{
    processingPosted_ = false;
    if (!hasPendingChanges()) {
        recentlyDeleted_.clear();
        return;
    }
    const QList<ManagedObject*> inserted = std::exchange(inserted_, {});
    const QList<ManagedObject*> updated = std::exchange(updated_, {});
    const QList<ManagedObject*> deleted = std::exchange(deleted_, {});
    insertedSet_.clear();
    updatedSet_.clear();
    Q_EMIT objectsDidChange(inserted, updated, deleted);
    recentlyDeleted_.clear();
}

}  // namespace model
