#include "model/LoadedCompositions.h"

#include "runtime/Composition.h"

#include <QHash>

#include <deque>
#include <mutex>

namespace model {

namespace {

struct Entry {
    QByteArray data;
    QString directory;
    std::weak_ptr<const runtime::Composition> composition;
};

// A handful of recent files is what a document repeats; weak references, so
// the cache never keeps a composition alive on its own.
constexpr std::size_t kRecent = 32;

}  // namespace

std::shared_ptr<const runtime::Composition> loadSharedComposition(const QByteArray& data, const QString& directory,
                                                                  QString* error)
{
    static std::mutex mutex;
    static std::deque<Entry> recent;
    {
        const std::lock_guard lock(mutex);
        for (const Entry& entry : recent) {
            if (entry.directory != directory || entry.data.size() != data.size() || entry.data != data) continue;
            if (auto shared = entry.composition.lock()) return shared;
        }
    }
    std::shared_ptr<const runtime::Composition> loaded = runtime::Composition::loadData(data, error, directory);
    if (!loaded) return nullptr;
    const std::lock_guard lock(mutex);
    std::erase_if(recent, [](const Entry& e) { return e.composition.expired(); });
    recent.push_front(Entry{data, directory, loaded});
    if (recent.size() > kRecent) recent.pop_back();
    return loaded;
}

}  // namespace model
