#pragma once
// The object store of one document: it owns the entity objects, records
// their insertion and deletion for undo, and after processPendingChanges()
// announces what was inserted, updated and deleted since the last time.
//
// A deleted object is owned by the undo action that can bring it back, so a
// pointer held by an older undo action never dangles; when that action is
// dropped the object is freed.

#include "model/ManagedObject.h"
#include "model/StoreChangeListener.h"
#include "model/UndoManager.h"

#include <QList>
#include <QObject>
#include <QSet>

#include <map>
#include <memory>

namespace model {

class ObjectStore : public QObject {
    Q_OBJECT
public:
    explicit ObjectStore(QObject* parent = nullptr);
    ~ObjectStore() override;

    UndoManager& undoManager() { return undoManager_; }

    template <class T, class... Args> T* insertNewObject(Args&&... args)
    {
        auto object = std::make_unique<T>(this, std::forward<Args>(args)...);
        T* raw = object.get();
        insertObject(std::move(object));
        raw->awakeFromInsert();
        return raw;
    }
    // Takes ownership; an object id of 0 gets the next free id.
    ManagedObject* insertObject(std::unique_ptr<ManagedObject> object, quint64 objectId = 0);
    // Deletes the object and, by their cascade rules, what it owns; the other
    // sides of its relationships forget it.
    void deleteObject(ManagedObject* object);

    std::vector<ManagedObject*> registeredObjects() const;
    std::vector<ManagedObject*> objectsOfEntity(const QString& entityName) const;
    ManagedObject* objectWithId(quint64 objectId) const;

    void noteUpdated(ManagedObject* object);
    // One listener at a time (the crash journal), or none.
    void setChangeListener(StoreChangeListener* listener) { listener_ = listener; }
    StoreChangeListener* changeListener() const { return listener_; }
    bool hasPendingChanges() const { return !inserted_.isEmpty() || !updated_.isEmpty() || !deleted_.isEmpty(); }
    void processPendingChanges();

Q_SIGNALS:
    void objectsDidChange(const QList<model::ManagedObject*>& inserted, const QList<model::ManagedObject*>& updated,
                          const QList<model::ManagedObject*>& deleted);

private:
    using Holder = std::shared_ptr<std::unique_ptr<ManagedObject>>;
    void removeFromRegistry(ManagedObject* object);
    void reinsert(const Holder& holder);
    void schedulePendingChanges();

    UndoManager undoManager_;
    StoreChangeListener* listener_ = nullptr;
    std::map<quint64, std::unique_ptr<ManagedObject>> objects_;
    quint64 nextId_ = 1;
    QList<ManagedObject*> inserted_, updated_, deleted_;
    QSet<ManagedObject*> insertedSet_, updatedSet_;  // fast membership for the lists above
    std::vector<Holder> recentlyDeleted_;  // alive at least until the next announcement
    bool processingPosted_ = false;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace model
