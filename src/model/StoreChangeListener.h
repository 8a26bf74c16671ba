#pragma once
// Told of every change of a store's stored state as it happens: inserts,
// deletes, stored values and to-many relationships. The crash journal
// listens; undo and redo changes arrive the same way as any other.

#include <QString>

namespace model {

class ManagedObject;

class StoreChangeListener {
public:
    virtual ~StoreChangeListener() = default;
    virtual void objectInserted(ManagedObject* object) = 0;
    virtual void objectDeleted(quint64 objectId) = 0;
    virtual void storedValueChanged(ManagedObject* object, int attributeIndex) = 0;
    virtual void relationshipChanged(ManagedObject* owner, const QString& toManyKey) = 0;
};

}  // namespace model
