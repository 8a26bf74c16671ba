#pragma once
// Class name → implementation. A class (or an identifier of a multi-mode
// class such as QCImageFilter) that is not registered loads as an inert node.

#include "runtime/Patch.h"

#include <QHash>
#include <QStringList>

#include <functional>
#include <memory>

namespace runtime {

class PatchRegistry {
public:
    using Factory = std::function<std::unique_ptr<Patch>(const PatchSetup&)>;
    // For multi-mode classes: which identifiers the factory implements.
    using IdentifierFilter = std::function<bool(const QString& identifier)>;

    // Every patch the runtime implements.
    static const PatchRegistry& standard();

    void add(const QString& className, Factory factory, IdentifierFilter identifiers = {});
    bool supports(const QString& className, const QString& identifier = {}) const;
    // Null when the class or identifier is not supported.
    std::unique_ptr<Patch> create(const PatchSetup& setup) const;
    QStringList classNames() const;

private:
    struct Entry {
        Factory factory;
        IdentifierFilter identifiers;
    };
    QHash<QString, Entry> entries_;
};

}  // namespace runtime
