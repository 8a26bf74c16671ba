#include "model/NotificationHelper.h"

namespace model {

QMutex& NotificationHelper::mutex()
{
    static QMutex m;
    return m;
}

std::map<NotificationHelper::Key, NotificationHelper::Entry>& NotificationHelper::registry()
{
    static std::map<Key, Entry> r;
    return r;
}

void NotificationHelper::addObserver(const void* observer, ManagedObject* object, const QString& key, KeyObserver callback)
{
    if (!observer || !object) return;
    QMutexLocker lock(&mutex());
    auto& entries = registry();
    const Key k{observer, object, key};
    auto it = entries.find(k);
    if (it != entries.end()) {
        if (it->second.object) return;  // already observing
        entries.erase(it);               // the object died; its address was reused
    }
    const ObservationToken token = object->observe(key, std::move(callback));
    entries.emplace(k, Entry{object, token});
}

void NotificationHelper::removeObserver(const void* observer, ManagedObject* object, const QString& key)
{
    QMutexLocker lock(&mutex());
    auto& entries = registry();
    auto it = entries.find(Key{observer, object, key});
    if (it == entries.end()) return;
    if (it->second.object) it->second.object->removeObservation(it->second.token);
    entries.erase(it);
}

void NotificationHelper::removeObserver(const void* observer)
{
    QMutexLocker lock(&mutex());
    auto& entries = registry();
    for (auto it = entries.begin(); it != entries.end();) {
        if (std::get<0>(it->first) == observer) {
            if (it->second.object) it->second.object->removeObservation(it->second.token);
            it = entries.erase(it);
        } else {
            ++it;
        }
    }
}

bool NotificationHelper::isObserving(const void* observer, ManagedObject* object, const QString& key)
{
    QMutexLocker lock(&mutex());
    auto it = registry().find(Key{observer, object, key});
    return it != registry().end() && it->second.object;
}

int NotificationHelper::observationCount()
{
    QMutexLocker lock(&mutex());
    int live = 0;
    for (const auto& [key, entry] : registry())
        if (entry.object) ++live;
    return live;
}

}  // namespace model
