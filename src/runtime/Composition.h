#pragma once
// A loaded composition: the immutable template that renderers instantiate.
// Loading never fails on damaged content inside a readable file: unknown
// classes become inert nodes and every problem is listed. It fails only when
// the bytes are not a property list with a root patch.

#include "runtime/PortType.h"
#include "runtime/Value.h"

#include "plist/Value.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace runtime {

class CompositionResources;

// A published port as the editor sees it (the framework's port attributes).
struct PortDescription {
    QString key;
    QString name;  // label: portAttributes "name", else the port's userInfo name, else the key
    QString description;
    PortType type = PortType::Virtual;
    QVariant defaultValue;  // the value a new renderer starts with
    QStringList menuItems;  // Index ports with named values
    std::optional<double> minimum;
    std::optional<double> maximum;

    QString typeName() const { return portTypeName(type); }
};

class Composition {
public:
    static std::shared_ptr<const Composition> loadFile(const QString& path, QString* error = nullptr);
    // `directory` resolves relative paths (image files) for data not read from a file.
    static std::shared_ptr<const Composition> loadData(const QByteArray& bytes, QString* error = nullptr,
                                                       const QString& directory = {});
    static std::shared_ptr<const Composition> fromPlist(plist::Value document, QString* error = nullptr,
                                                        const QString& directory = {});
    ~Composition();

    const plist::Value& document() const { return document_; }
    const CompositionResources& resources() const { return *resources_; }
    const QString& directory() const;

    // Published inputs and outputs of the root patch, in the file's order.
    const std::vector<PortDescription>& inputs() const { return inputs_; }
    const std::vector<PortDescription>& outputs() const { return outputs_; }
    QStringList inputKeys() const;
    QStringList outputKeys() const;
    const PortDescription* input(const QString& key) const;
    const PortDescription* output(const QString& key) const;

    // "name", "description", "copyright" (strings), "categories",
    // "protocols" (string lists) where the file has them.
    QVariantMap attributes() const;
    QString name() const { return attributes().value(QStringLiteral("name")).toString(); }

    // Everything that did not load as written, one line each.
    const QStringList& problems() const { return problems_; }
    // Node classes in the file (embedded virtual patches counted once) and
    // those the runtime does not implement ("QCImageFilter/CIShadedMaterial"
    // for unsupported variants, "/name" for undefined virtual patches).
    const std::map<QString, int>& patchCounts() const { return patchCounts_; }
    const QStringList& unsupportedClasses() const { return unsupported_; }

private:
    Composition() = default;
    bool load(QString* error);
    void describePorts();
    void countPatches();

    plist::Value document_;
    std::unique_ptr<CompositionResources> resources_;
    std::vector<PortDescription> inputs_;
    std::vector<PortDescription> outputs_;
    QStringList problems_;
    std::map<QString, int> patchCounts_;
    QStringList unsupported_;
};

}  // namespace runtime
