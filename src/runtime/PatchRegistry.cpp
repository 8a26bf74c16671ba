#include "runtime/PatchRegistry.h"

#include "runtime/patches/PatchFamilies.h"

#include <algorithm>

namespace runtime {

const PatchRegistry& PatchRegistry::standard()
{
    static const PatchRegistry registry = [] {
        PatchRegistry r;
        registerAllPatches(r);
        return r;
    }();
    return registry;
}

void PatchRegistry::add(const QString& className, Factory factory, IdentifierFilter identifiers)
{
    entries_.insert(className, Entry{std::move(factory), std::move(identifiers)});
}

bool PatchRegistry::supports(const QString& className, const QString& identifier) const
{
    auto it = entries_.constFind(className);
    if (it == entries_.constEnd()) return false;
    return !it->identifiers || it->identifiers(identifier);
}

std::unique_ptr<Patch> PatchRegistry::create(const PatchSetup& setup) const
{
    auto it = entries_.constFind(setup.className);
    if (it == entries_.constEnd()) return nullptr;
    if (it->identifiers && !it->identifiers(setup.identifier)) return nullptr;
    return it->factory(setup);
}

QStringList PatchRegistry::classNames() const
{
    QStringList names = entries_.keys();
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace runtime
