#include "runtime/GraphBuilder.h"

#include "runtime/InertPatch.h"
#include "runtime/PatchRegistry.h"

#include <algorithm>
#include <unordered_map>

namespace runtime {

namespace {


QString join(const QString& parentPath, const QString& key)
{
    return parentPath.isEmpty() ? key : parentPath + QLatin1Char('/') + key;
}

// "connection_12" sorts after "connection_2".
long long connectionNumber(const std::string& name)
{
    const auto underscore = name.rfind('_');
    if (underscore == std::string::npos) return -1;
    long long n = 0;
    for (std::size_t i = underscore + 1; i < name.size(); ++i) {
        if (name[i] < '0' || name[i] > '9' || n > 1000000000) return -1;
        n = n * 10 + (name[i] - '0');
    }
    return n;
}

// A recursor, or a macro holding one, reads what arrives around a loop one
// evaluation late: the loop is how a file builds feedback, not a mistake.
bool takesFeedback(Patch& patch)
{
    if (patch.takesFeedback()) return true;
    MacroPatch* macro = patch.asMacro();
    if (!macro) return false;
    return std::any_of(macro->children().begin(), macro->children().end(),
                       [](const auto& child) { return child->takesFeedback(); });
}

}  // namespace

void applyStoredPortStates(Patch& patch, const plist::Value& state)
{
    for (const char* group : {"ivarInputPortStates", "customInputPortStates", "systemInputPortStates"}) {
        const plist::Value* ports = state.find(group);
        if (!ports || !ports->isDictionary()) continue;
        for (const auto& [key, entry] : ports->dictionary()) {
            const plist::Value* value = entry.find("value");
            if (!value) continue;  // labels only ("userInfo")
            if (InputPort* port = patch.inputForConnection(QString::fromStdString(key)))
                port->setValue(Value::fromPlist(*value));
        }
    }
}

void applyInputParameters(MacroPatch& macro, const plist::Value& parameters)
{
    if (!parameters.isDictionary()) return;
    for (const auto& [key, value] : parameters.dictionary()) {
        if (InputPort* port = macro.input(QString::fromStdString(key))) port->setValue(Value::fromPlist(value));
    }
}

GraphBuilder::GraphBuilder(const plist::Value& document, const CompositionResources& resources, QStringList* problems)
    : document_(document), resources_(resources), problems_(problems)
{
    if (const plist::Value* scope = document.find("virtualPatches"); scope && scope->isDictionary())
        virtualScopes_.push_back(scope);
}

QString GraphBuilder::text(const plist::Value& dict, const char* key)
{
    const plist::Value* v = dict.find(key);
    if (!v || !v->isString()) return {};
    // Keys, classes and port names repeat thousands of times in large
    // files: convert each distinct one once and share it.
    const std::string& utf8 = v->string();
    auto it = strings_.find(std::string_view(utf8));
    if (it != strings_.end()) return it->second;
    QString converted = QString::fromStdString(utf8);
    strings_.emplace(std::string_view(utf8), converted);
    return converted;
}

void GraphBuilder::report(const QString& where, const QString& message)
{
    if (problems_) problems_->append((where.isEmpty() ? QStringLiteral("root") : where) + QStringLiteral(": ") + message);
}

std::unique_ptr<MacroPatch> GraphBuilder::buildRoot()
{
    const plist::Value* rootNode = document_.find("rootPatch");
    std::unique_ptr<Patch> root;
    if (rootNode && rootNode->isDictionary()) root = buildNodeAt(*rootNode, QString(), 0);
    std::unique_ptr<MacroPatch> macro;
    if (root && root->asMacro()) {
        macro.reset(root.release()->asMacro());
    } else {
        // A root that is not a macro still renders, inside a plain one.
        PatchSetup setup;
        setup.className = QStringLiteral("QCPatch");
        macro = std::make_unique<MacroPatch>(setup);
        if (root) {
            report(QString(), QStringLiteral("the root patch is a %1, not a macro").arg(root->className()));
            macro->addChild(std::move(root));
        } else {
            report(QString(), QStringLiteral("no root patch"));
        }
    }
    macro->setKey(QString());
    if (const plist::Value* parameters = document_.find("inputParameters")) applyInputParameters(*macro, *parameters);
    return macro;
}

std::unique_ptr<Patch> GraphBuilder::buildNode(const plist::Value& node, const QString& parentPath)
{
    return buildNodeAt(node, parentPath, 1);
}

std::unique_ptr<Patch> GraphBuilder::buildNodeAt(const plist::Value& node, const QString& parentPath, int depth)
{
    PatchSetup setup;
    setup.className = text(node, "class");
    setup.key = text(node, "key");
    setup.identifier = text(node, "identifier");
    const plist::Value* state = node.find("state");
    setup.state = state && state->isDictionary() ? *state : plist::Value::emptyDictionary();
    setup.resources = &resources_;
    setup.problems = problems_;
    const QString where = join(parentPath, setup.key);
    setup.path = where;
    ++nodes_;

    if (!node.isDictionary() || setup.className.isEmpty()) {
        report(where, QStringLiteral("node without a class; it does nothing"));
        return std::make_unique<InertPatch>(setup);
    }
    if (setup.className.startsWith(QLatin1Char('/'))) return buildVirtual(setup, where, depth);

    std::unique_ptr<Patch> patch = PatchRegistry::standard().create(setup);
    if (!patch) {
        if (setup.state.find("nodes")) patch = std::make_unique<InertMacroPatch>(setup);
        else patch = std::make_unique<InertPatch>(setup);
    }
    if (MacroPatch* macro = patch->asMacro()) buildContents(*macro, setup.state, where, depth + 1);
    applyStoredPortStates(*patch, setup.state);
    return patch;
}

const plist::Value* GraphBuilder::virtualDefinition(const std::string& name) const
{
    for (auto it = virtualScopes_.rbegin(); it != virtualScopes_.rend(); ++it) {
        const plist::Value* definition = (*it)->find(name);
        if (definition && definition->isDictionary()) return definition;
    }
    return nullptr;
}

std::unique_ptr<Patch> GraphBuilder::buildVirtual(const PatchSetup& setup, const QString& where, int depth)
{
    const std::string name = setup.className.toStdString();
    const plist::Value* definition = virtualDefinition(name);
    const plist::Value* root = definition ? definition->find("rootPatch") : nullptr;
    if (!root || !root->isDictionary()) {
        report(where, QStringLiteral("virtual patch \"%1\" is not defined in the file; it does nothing").arg(setup.className));
        return std::make_unique<InertPatch>(setup);
    }
    if (std::find(virtualStack_.begin(), virtualStack_.end(), name) != virtualStack_.end()) {
        report(where, QStringLiteral("virtual patch \"%1\" contains itself; the inner copy does nothing").arg(setup.className));
        return std::make_unique<InertPatch>(setup);
    }
    auto macro = std::make_unique<MacroPatch>(setup);
    const plist::Value* scope = definition->find("virtualPatches");
    if (scope && scope->isDictionary()) virtualScopes_.push_back(scope);
    virtualStack_.push_back(name);
    const plist::Value* rootState = root->find("state");
    if (rootState) buildContents(*macro, *rootState, where, depth + 1);
    if (const plist::Value* parameters = definition->find("inputParameters")) applyInputParameters(*macro, *parameters);
    virtualStack_.pop_back();
    if (scope && scope->isDictionary()) virtualScopes_.pop_back();
    applyStoredPortStates(*macro, setup.state);
    return macro;
}

void GraphBuilder::buildContents(MacroPatch& macro, const plist::Value& state, const QString& where, int depth)
{
    const plist::Value* nodes = state.find("nodes");
    if (!nodes) return;
    if (depth > kMaxDepth) {
        report(where, QStringLiteral("patches nested more than %1 deep; the inner ones are left out").arg(kMaxDepth));
        return;
    }
    for (const plist::Value& node : nodes->array()) {
        if (nodes_ >= kMaxNodes) {
            if (!reportedNodeLimit_) report(where, QStringLiteral("more than %1 patches; the rest are left out").arg(kMaxNodes));
            reportedNodeLimit_ = true;
            break;
        }
        std::unique_ptr<Patch> child = buildNodeAt(node, where, depth);
        if (child->key().isEmpty() || macro.child(child->key())) {
            const QString key = macro.uniqueChildKey(child->className());
            report(join(where, child->key()), child->key().isEmpty()
                                                  ? QStringLiteral("node without a key, named %1").arg(key)
                                                  : QStringLiteral("duplicate key, renamed %1").arg(key));
            child->setKey(key);
        }
        macro.addChild(std::move(child));
    }
    publishPorts(macro, state, where);
    connectChildren(macro, state, where);
    breakCycles(macro, where);
}

void GraphBuilder::publishPorts(MacroPatch& macro, const plist::Value& state, const QString& where)
{
    for (const bool inputs : {true, false}) {
        const plist::Value* list = state.find(inputs ? "publishedInputPorts" : "publishedOutputPorts");
        if (!list) continue;
        for (const plist::Value& entry : list->array()) {
            const QString key = text(entry, "key");
            const QString nodeKey = text(entry, "node");
            const QString portKey = text(entry, "port");
            const QString what = inputs ? QStringLiteral("published input") : QStringLiteral("published output");
            if (key.isEmpty()) {
                report(where, QStringLiteral("%1 without a key ignored").arg(what));
                continue;
            }
            Patch* child = macro.child(nodeKey);
            if (!child) {
                report(where, QStringLiteral("%1 \"%2\" names a missing node \"%3\"").arg(what, key, nodeKey));
                continue;
            }
            if (inputs) {
                InputPort* port = child->inputForConnection(portKey);
                if (!port) {
                    report(where, QStringLiteral("%1 \"%2\" names a missing port %3.%4").arg(what, key, nodeKey, portKey));
                    continue;
                }
                InputPort& published = macro.publishInput(key, *port);
                if (const plist::Value* value = entry.value("state").find("value"))
                    published.setValue(Value::fromPlist(*value));
            } else {
                OutputPort* port = child->outputForConnection(portKey);
                if (!port) {
                    report(where, QStringLiteral("%1 \"%2\" names a missing port %3.%4").arg(what, key, nodeKey, portKey));
                    continue;
                }
                if (macro.output(key)) {
                    report(where, QStringLiteral("%1 \"%2\" is published twice; the first stays").arg(what, key));
                    continue;
                }
                macro.publishOutput(key, *port);
            }
        }
    }
}

void GraphBuilder::connectChildren(MacroPatch& macro, const plist::Value& state, const QString& where)
{
    const plist::Value* connections = state.find("connections");
    if (!connections) return;
    std::vector<std::pair<std::string, const plist::Value*>> ordered;
    for (const auto& [name, connection] : connections->dictionary()) ordered.emplace_back(name, &connection);
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const auto& a, const auto& b) { return connectionNumber(a.first) < connectionNumber(b.first); });
    for (const auto& [nameStd, connection] : ordered) {
        const QString name = QString::fromStdString(nameStd);
        const QString sourceKey = text(*connection, "sourceNode");
        const QString sourcePortKey = text(*connection, "sourcePort");
        const QString destinationKey = text(*connection, "destinationNode");
        const QString destinationPortKey = text(*connection, "destinationPort");
        Patch* source = macro.child(sourceKey);
        Patch* destination = macro.child(destinationKey);
        if (!source || !destination) {
            report(where, QStringLiteral("%1 names a missing node \"%2\"").arg(name, source ? destinationKey : sourceKey));
            continue;
        }
        OutputPort* out = source->outputForConnection(sourcePortKey);
        InputPort* in = destination->inputForConnection(destinationPortKey);
        if (!out || !in) {
            report(where, QStringLiteral("%1 names a missing port %2.%3")
                              .arg(name, out ? destinationKey : sourceKey, out ? destinationPortKey : sourcePortKey));
            continue;
        }
        if (in->connection)
            report(where, QStringLiteral("%1: %2.%3 already has a source; the later connection wins")
                              .arg(name, destinationKey, destinationPortKey));
        QString error;
        if (!macro.connect(*out, *in, &error)) report(where, name + QStringLiteral(": ") + error);
    }
}

void GraphBuilder::breakCycles(MacroPatch& macro, const QString& where)
{
    const auto& children = macro.children();
    const std::size_t n = children.size();
    if (n == 0) return;
    std::unordered_map<const Patch*, std::size_t> indexOf;
    for (std::size_t i = 0; i < n; ++i) indexOf[children[i].get()] = i;
    // edges[i]: the inputs that sibling i feeds, in child and port order.
    // Connections into a patch that takes feedback are left out: a loop
    // through them is evaluated with a one-evaluation delay where it closes.
    std::vector<std::vector<InputPort*>> edges(n);
    for (std::size_t i = 0; i < n; ++i) {
        if (takesFeedback(*children[i])) continue;
        for (InputPort* in : children[i]->inputs()) {
            if (!in->connection) continue;
            auto it = indexOf.find(in->connection->owner);
            if (it != indexOf.end()) edges[it->second].push_back(in);
        }
    }
    enum Mark : std::uint8_t { White, Grey, Black };
    std::vector<Mark> mark(n, White);
    // Iterative depth-first search: a long chain must not exhaust the stack.
    std::vector<std::pair<std::size_t, std::size_t>> stack;
    for (std::size_t start = 0; start < n; ++start) {
        if (mark[start] != White) continue;
        stack.emplace_back(start, 0);
        mark[start] = Grey;
        while (!stack.empty()) {
            auto& [node, next] = stack.back();
            if (next == edges[node].size()) {
                mark[node] = Black;
                stack.pop_back();
                continue;
            }
            InputPort* in = edges[node][next++];
            if (!in->connection) continue;
            const std::size_t target = indexOf[in->owner];
            if (mark[target] == Grey) {
                report(where, QStringLiteral("connection %1.%2 → %3.%4 closes a cycle and is ignored")
                                  .arg(in->connection->owner->key(), in->connection->key, in->owner->key(), in->key));
                in->connection = nullptr;
            } else if (mark[target] == White) {
                mark[target] = Grey;
                stack.emplace_back(target, 0);
            }
        }
    }
}

}  // namespace runtime
