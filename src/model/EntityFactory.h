#pragma once
// Makes an empty object of a stored entity by its name, for readers that
// rebuild objects from their stored form (the store file, the journal).

#include <QString>

#include <memory>

namespace model {

class ManagedObject;
class ObjectStore;

// Null for a name that is no entity of ours.
std::unique_ptr<ManagedObject> makeEntityObject(const QString& entityName, ObjectStore* store);

}  // namespace model
