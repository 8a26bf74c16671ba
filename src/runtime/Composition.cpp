#include "runtime/Composition.h"

#include "runtime/CompositionResources.h"
#include "runtime/GraphBuilder.h"
#include "runtime/PatchRegistry.h"

#include "plist/LegacyArchive.h"
#include "plist/PropertyList.h"

#include <QFile>
#include <QFileInfo>

#include <functional>
#include <set>
#include <string_view>

namespace runtime {

namespace {

QString qs(const std::string& s)
{
    return QString::fromStdString(s);
}

// The leaf port a published input stands for, following nested macros.
InputPort* leafInput(MacroPatch& macro, InputPort* published, int depth = 0)
{
    if (depth > GraphBuilder::kMaxDepth) return published;
    for (const auto& child : macro.children()) {
        for (InputPort* in : child->inputs()) {
            if (in->published != published) continue;
            if (MacroPatch* inner = child->asMacro()) return leafInput(*inner, in, depth + 1);
            return in;
        }
    }
    return published;
}

OutputPort* leafOutput(OutputPort* port)
{
    for (int depth = 0; port->forward && depth <= GraphBuilder::kMaxDepth; ++depth) port = port->forward;
    return port;
}

// Untyped ports (plug-ins, unknown filters) take the type of their value.
PortType typeOfValue(const Value& value)
{
    switch (value.kind()) {
    case Value::Kind::Boolean: return PortType::Boolean;
    case Value::Kind::Number: return PortType::Number;
    case Value::Kind::String: return PortType::String;
    case Value::Kind::Color: return PortType::Color;
    case Value::Kind::Image: return PortType::Image;
    case Value::Kind::Structure: return PortType::Structure;
    case Value::Kind::Mesh: return PortType::Mesh;
    case Value::Kind::Null: break;
    }
    return PortType::Virtual;
}

QStringList stringList(const plist::Value& array)
{
    QStringList list;
    for (const plist::Value& item : array.array())
        if (item.isString()) list << qs(item.string());
    return list;
}

// Name and description archived in a published port's "userInfo".
std::pair<QString, QString> archivedLabel(const plist::Value& entry)
{
    const plist::Value* userInfo = entry.value("state").find("userInfo");
    if (!userInfo || !userInfo->isData()) return {};
    const auto archive = plist::legacy::decode(userInfo->dataBytes());
    if (!archive) return {};
    const plist::legacy::Object* name = archive->root.find("name");
    const plist::legacy::Object* description = archive->root.find("description");
    return {name ? qs(name->toString()) : QString(), description ? qs(description->toString()) : QString()};
}

}  // namespace

std::shared_ptr<const Composition> Composition::loadFile(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error) *error = QStringLiteral("cannot open %1: %2").arg(path, file.errorString());
        return nullptr;
    }
    const QByteArray bytes = file.readAll();
    return loadData(bytes, error, QFileInfo(path).absolutePath());
}

std::shared_ptr<const Composition> Composition::loadData(const QByteArray& bytes, QString* error,
                                                         const QString& directory)
{
    if (bytes.isEmpty()) {
        if (error) *error = QStringLiteral("empty file");
        return nullptr;
    }
    std::string plistError;
    auto document = plist::read(std::string_view(bytes.constData(), std::size_t(bytes.size())), &plistError);
    if (!document) {
        if (error) *error = QStringLiteral("not a property list: %1").arg(qs(plistError));
        return nullptr;
    }
    return fromPlist(std::move(*document), error, directory);
}

std::shared_ptr<const Composition> Composition::fromPlist(plist::Value document, QString* error,
                                                          const QString& directory)
{
    std::shared_ptr<Composition> composition(new Composition);
    composition->document_ = std::move(document);
    composition->resources_ = std::make_unique<CompositionResources>(directory);
    if (!composition->load(error)) return nullptr;
    return composition;
}

Composition::~Composition() = default;

const QString& Composition::directory() const
{
    return resources_->directory();
}

bool Composition::load(QString* error)
{
    if (!document_.isDictionary()) {
        if (error) *error = QStringLiteral("the file's top level is a %1, not a dictionary").arg(plist::typeName(document_.type()));
        return false;
    }
    const plist::Value* root = document_.find("rootPatch");
    if (!root || !root->isDictionary()) {
        if (error) *error = QStringLiteral("no root patch (\"rootPatch\" dictionary) in the file");
        return false;
    }
    describePorts();
    countPatches();
    return true;
}

void Composition::describePorts()
{
    GraphBuilder builder(document_, *resources_, &problems_);
    std::unique_ptr<MacroPatch> root = builder.buildRoot();
    const plist::Value rootState = document_.value("rootPatch").value("state");
    const plist::Value attributes = document_.value("portAttributes");

    for (const bool isInput : {true, false}) {
        const plist::Value* list = rootState.find(isInput ? "publishedInputPorts" : "publishedOutputPorts");
        if (!list) continue;
        for (const plist::Value& entry : list->array()) {
            PortDescription d;
            d.key = qs(entry.value("key").string());
            if (d.key.isEmpty() || (isInput ? input(d.key) : output(d.key))) continue;
            if (isInput) {
                InputPort* port = root->input(d.key);
                if (!port) continue;  // reported by the builder
                InputPort* leaf = leafInput(*root, port);
                d.type = leaf->type;
                if (d.type == PortType::Virtual) d.type = typeOfValue(port->value);
                d.defaultValue = port->value.toVariant();
                const InputHints hints = leaf->owner ? leaf->owner->inputHints(*leaf) : InputHints();
                d.minimum = hints.minimum;
                d.maximum = hints.maximum;
                d.menuItems = hints.menuItems;
            } else {
                OutputPort* port = root->output(d.key);
                if (!port) continue;
                d.type = leafOutput(port)->type;
            }
            const plist::Value portAttributes = attributes.value(entry.value("key").string());
            d.name = qs(portAttributes.value("name").string());
            d.description = qs(portAttributes.value("description").string());
            if (d.name.isEmpty()) {
                // Decoding the archived label is the slow path: only when needed.
                const auto [archivedName, archivedDescription] = archivedLabel(entry);
                if (d.name.isEmpty()) d.name = archivedName;
                if (d.description.isEmpty()) d.description = archivedDescription;
            }
            if (d.name.isEmpty()) d.name = d.key;
            if (const plist::Value* menu = portAttributes.find("menu"); menu && menu->isArray())
                d.menuItems = stringList(*menu);
            (isInput ? inputs_ : outputs_).push_back(std::move(d));
        }
    }
}

void Composition::countPatches()
{
    // Counted by (class, identifier) on the file's own strings; names are
    // converted and checked against the registry once per distinct pair.
    std::map<std::pair<std::string_view, std::string_view>, int> counts;
    std::vector<const plist::Value*> scopes;
    const auto defined = [&](std::string_view name) {
        for (const plist::Value* scope : scopes)
            if (scope->find(name)) return true;
        return false;
    };
    std::set<std::string_view> undefinedVirtuals;
    std::function<void(const plist::Value&, int)> walk = [&](const plist::Value& node, int depth) {
        if (depth > GraphBuilder::kMaxDepth || !node.isDictionary()) return;
        const plist::Value* className = node.find("class");
        if (className && className->isString() && !className->string().empty()) {
            const std::string& name = className->string();
            const plist::Value* identifier = node.find("identifier");
            ++counts[{name, identifier && identifier->isString() ? std::string_view(identifier->string()) : std::string_view()}];
            if (name.front() == '/' && !defined(name)) undefinedVirtuals.insert(name);
        }
        const plist::Value* state = node.find("state");
        const plist::Value* nodes = state ? state->find("nodes") : nullptr;
        if (nodes)
            for (const plist::Value& child : nodes->array()) walk(child, depth + 1);
    };
    std::function<void(const plist::Value&, int)> walkComposition = [&](const plist::Value& composition, int depth) {
        if (depth > GraphBuilder::kMaxDepth) return;
        const plist::Value* scope = composition.find("virtualPatches");
        if (scope && scope->isDictionary()) scopes.push_back(scope);
        if (const plist::Value* root = composition.find("rootPatch")) walk(*root, 0);
        if (scope && scope->isDictionary()) {
            for (const auto& [name, definition] : scope->dictionary()) walkComposition(definition, depth + 1);
        }
    };
    walkComposition(document_, 0);

    const PatchRegistry& registry = PatchRegistry::standard();
    std::map<QString, int> unsupportedCounts;
    for (const auto& [classAndIdentifier, count] : counts) {
        const QString className = qs(std::string(classAndIdentifier.first));
        const QString identifier = qs(std::string(classAndIdentifier.second));
        patchCounts_[className] += count;
        const bool supported = className.startsWith(QLatin1Char('/')) ? !undefinedVirtuals.count(classAndIdentifier.first)
                                                                        : registry.supports(className, identifier);
        if (supported) continue;
        const bool variant = className == QLatin1String("QCImageFilter") || className == QLatin1String("QCPlugInPatch");
        unsupportedCounts[variant && !identifier.isEmpty() ? className + QLatin1Char('/') + identifier : className] += count;
    }
    for (const auto& [name, count] : unsupportedCounts) {
        unsupported_ << name;
        problems_ << QStringLiteral("%1 is not supported; its %2 node%3 do%4 nothing")
                         .arg(name)
                         .arg(count)
                         .arg(count == 1 ? QString() : QStringLiteral("s"))
                         .arg(count == 1 ? QStringLiteral("es") : QString());
    }
}

QStringList Composition::inputKeys() const
{
    QStringList keys;
    for (const auto& d : inputs_) keys << d.key;
    return keys;
}

QStringList Composition::outputKeys() const
{
    QStringList keys;
    for (const auto& d : outputs_) keys << d.key;
    return keys;
}

const PortDescription* Composition::input(const QString& key) const
{
    for (const auto& d : inputs_)
        if (d.key == key) return &d;
    return nullptr;
}

const PortDescription* Composition::output(const QString& key) const
{
    for (const auto& d : outputs_)
        if (d.key == key) return &d;
    return nullptr;
}

QVariantMap Composition::attributes() const
{
    QVariantMap map;
    for (const char* key : {"name", "description", "copyright"}) {
        const plist::Value* v = document_.find(key);
        if (v && v->isString()) map.insert(QString::fromLatin1(key), qs(v->string()));
    }
    for (const char* key : {"categories", "protocols"}) {
        const plist::Value* v = document_.find(key);
        if (v && v->isArray()) map.insert(QString::fromLatin1(key), stringList(*v));
    }
    return map;
}

}  // namespace runtime
