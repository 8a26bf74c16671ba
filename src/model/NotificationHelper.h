#pragma once
// The one registry through which controllers observe model keys. Adding the
// same observation twice registers it once; removing one that was never
// added, or was already removed, does nothing. A controller's cleanUp calls
// removeObserver(this) and is safe to call again.

#include "model/ManagedObject.h"

#include <QMutex>
#include <QPointer>

#include <map>
#include <tuple>

namespace model {

class NotificationHelper {
public:
    static void addObserver(const void* observer, ManagedObject* object, const QString& key, KeyObserver callback);
    static void removeObserver(const void* observer, ManagedObject* object, const QString& key);
    // Every observation the observer made, on every object.
    static void removeObserver(const void* observer);
    static bool isObserving(const void* observer, ManagedObject* object, const QString& key);
    static int observationCount();

private:
    struct Entry {
        QPointer<ManagedObject> object;
        ObservationToken token;
    };
    using Key = std::tuple<const void*, const ManagedObject*, QString>;
    static QMutex& mutex();
    static std::map<Key, Entry>& registry();
};

}  // namespace model
