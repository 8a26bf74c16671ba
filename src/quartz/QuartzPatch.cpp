#include "quartz/QuartzPatch.h"

#include "quartz/QuartzComposition.h"
#include "quartz/QuartzStrings.h"

#include <charconv>
#include <vector>

using plist::Value;

namespace {
const char kState[] = "state";
const char kNodes[] = "nodes";
const char kConnections[] = "connections";
const char kPublishedInputPorts[] = "publishedInputPorts";
const char kPublishedOutputPorts[] = "publishedOutputPorts";
const char kUserInfo[] = "userInfo";
const char kTimebase[] = "timebase";

Value defaultNode()
{
    Value node = Value::emptyDictionary();
    node.set("class", "QCPatch");
    node.set(kState, Value::emptyDictionary());
    return node;
}

Value archivedName(const QString& name)
{
    plist::legacy::Object info = plist::legacy::Object::dictionary({});
    info.set("name", plist::legacy::Object::string(quartz::toStd(name)));
    return Value::data(plist::legacy::encodeNew(info));
}
}  // namespace

QuartzPatch::QuartzPatch(const Value& dictionary)
{
    const Value given = dictionary.isDictionary() ? dictionary : defaultNode();
    data_ = given;
    const Value givenState = given.value(kState);
    normaliseState(givenState);
    for (const Value& child : givenState.value(kNodes).array()) {
        auto patch = std::make_unique<QuartzPatch>(child);
        patch->parent_ = this;
        nodes_.push_back(std::move(patch));
    }
}

// The state without "nodes", and with the containers that graph editing
// writes into always present.
void QuartzPatch::normaliseState(const Value& givenState)
{
    Value state = givenState.isDictionary() ? givenState : Value::emptyDictionary();
    state.remove(kNodes);
    if (!state.value(kConnections).isDictionary()) state.set(kConnections, Value::emptyDictionary());
    if (!state.value(kPublishedInputPorts).isArray()) state.set(kPublishedInputPorts, Value::emptyArray());
    data_.set(kState, std::move(state));
}

std::unique_ptr<QuartzPatch> QuartzPatch::createRoot(QuartzComposition* owner, const Value& dictionary)
{
    auto patch = std::make_unique<QuartzPatch>(dictionary);
    patch->owner_ = owner;
    return patch;
}

std::unique_ptr<QuartzPatch> QuartzPatch::createChild(QuartzPatch* parent, const Value& dictionary)
{
    auto patch = std::make_unique<QuartzPatch>(dictionary);
    patch->parent_ = parent;
    return patch;
}

std::unique_ptr<QuartzPatch> QuartzPatch::clone() const
{
    return std::make_unique<QuartzPatch>(patchDataForFileData());
}

QuartzComposition* QuartzPatch::composition() const
{
    if (owner_) return owner_;
    return parent_ ? parent_->composition() : nullptr;
}

QString QuartzPatch::patchClass() const { return quartz::toQt(data_.value("class").string()); }

void QuartzPatch::setPatchClass(const QString& patchClass)
{
    if (patchClass.startsWith(QLatin1String("QLN"))) {
        data_.set("identifier", quartz::toStd(patchClass));
        data_.set("class", "QCPlugInPatch");
    } else {
        data_.set("class", quartz::toStd(patchClass));
    }
}

QString QuartzPatch::identifier() const { return quartz::toQt(data_.value("identifier").string()); }
void QuartzPatch::setIdentifier(const QString& identifier) { data_.set("identifier", quartz::toStd(identifier)); }
QString QuartzPatch::key() const { return quartz::toQt(data_.value("key").string()); }
void QuartzPatch::setKey(const QString& key) { data_.set("key", quartz::toStd(key)); }

const Value& QuartzPatch::state() const
{
    static const Value empty = Value::emptyDictionary();
    const Value* state = data_.find(kState);
    return state ? *state : empty;
}

Value& QuartzPatch::mutableState()
{
    plist::Dictionary& node = data_.mutableDictionary();
    Value& state = node[kState];
    if (!state.isDictionary()) state = Value::emptyDictionary();
    return state;
}

plist::legacy::Object QuartzPatch::userInfo() const
{
    const Value* archived = state().find(kUserInfo);
    if (archived && archived->isData()) {
        std::string error;
        if (auto archive = plist::legacy::decode(archived->dataBytes(), &error); archive && archive->root.isDictionary())
            return archive->root;
    }
    return plist::legacy::Object::dictionary({});
}

void QuartzPatch::setUserInfo(const plist::legacy::Object& userInfo)
{
    mutableState().set(kUserInfo, Value::data(plist::legacy::encodeNew(userInfo)));
}

QString QuartzPatch::name() const
{
    const plist::legacy::Object info = userInfo();
    if (const plist::legacy::Object* name = info.find("name"); name && name->isString())
        return quartz::toQt(name->toString());
    return key();
}

void QuartzPatch::setName(const QString& name)
{
    plist::legacy::Object info = userInfo();
    info.set("name", plist::legacy::Object::string(quartz::toStd(name)));
    setUserInfo(info);
}

QPointF QuartzPatch::position() const
{
    const plist::legacy::Object info = userInfo();
    if (const plist::legacy::Object* position = info.find("position"); position && position->isPoint()) {
        const auto point = position->toPoint();
        return QPointF(point.x, point.y);
    }
    return QPointF(0, 0);
}

void QuartzPatch::setPosition(const QPointF& position)
{
    plist::legacy::Object info = userInfo();
    info.set("position", plist::legacy::Object::point(position.x(), position.y()));
    setUserInfo(info);
}

bool QuartzPatch::timebased() const { return state().contains(kTimebase); }
Value QuartzPatch::timebase() const { return state().value(kTimebase); }

void QuartzPatch::setTimebase(const Value& timebase)
{
    if (timebase.isNull())
        mutableState().remove(kTimebase);
    else
        mutableState().set(kTimebase, timebase);
}

QuartzPatch* QuartzPatch::addNode(std::unique_ptr<QuartzPatch> child)
{
    child->parent_ = this;
    child->owner_ = nullptr;
    nodes_.push_back(std::move(child));
    return nodes_.back().get();
}

QString QuartzPatch::uniqueChildKey(const QString& patchClass) const
{
    // The smallest free number, found in one pass over the children: a
    // large graph has thousands of them, and trying number after number
    // against all of them made building one quadratic in its size.
    const std::string prefix = quartz::toStd(patchClass) + '_';
    std::vector<bool> taken(nodes_.size() + 2, false);  // n children take at most 1..n
    for (const auto& child : nodes_) {
        const plist::Value* key = child->data_.find("key");
        if (!key) continue;
        const std::string& text = key->string();
        if (text.size() <= prefix.size() || text.compare(0, prefix.size(), prefix) != 0) continue;
        std::size_t n = 0;
        const char* digits = text.data() + prefix.size();
        const char* end = text.data() + text.size();
        const auto [stop, problem] = std::from_chars(digits, end, n);
        // Only the canonical spelling of a number takes it ("_01" does not).
        if (problem != std::errc() || stop != end || *digits == '0') continue;
        if (n < taken.size()) taken[n] = true;
    }
    std::size_t n = 1;
    while (taken[n]) ++n;
    return quartz::toQt(prefix + std::to_string(n));
}

QuartzPatch* QuartzPatch::addPatchWithClass(const QString& patchClass, const Value& state,
                                            const plist::Dictionary& inputPortState)
{
    auto child = std::make_unique<QuartzPatch>();
    child->setPatchClass(patchClass);
    child->normaliseState(state);
    plist::Dictionary portStates;
    for (const auto& [port, value] : inputPortState) {
        Value entry = Value::emptyDictionary();
        entry.set("value", value);
        portStates.emplace(port, std::move(entry));
    }
    child->mutableState().set("ivarInputPortStates", Value(std::move(portStates)));
    child->setKey(uniqueChildKey(child->patchClass()));
    return addNode(std::move(child));
}

void QuartzPatch::addConnectionFromComponent(const QString& sourceNode, const QString& sourcePort,
                                             const QString& destinationNode, const QString& destinationPort)
{
    Value& connections = mutableState().mutableDictionary()[kConnections];
    // A graph built connection by connection would rescan every name each
    // time; the largest number is remembered for as long as the connections
    // are the ones this patch last counted.
    long long largest = 0;
    const ConnectionCount now{connections.payloadIdentity(), connections.size()};
    if (connectionCount_.identity && now.identity == connectionCount_.identity && now.size == connectionCount_.size) {
        largest = connectionCount_.largest;
    } else {
        for (const auto& [name, connection] : connections.dictionary()) {
            if (name.size() < 11) continue;
            // The text after "connection_" read as an integer, as the editor does.
            long long n = 0;
            const char* digits = name.data() + 11;
            std::from_chars(digits, name.data() + name.size(), n);
            if (n > largest) largest = n;
        }
    }
    Value connection = Value::emptyDictionary();
    connection.set("destinationNode", quartz::toStd(destinationNode));
    connection.set("destinationPort", quartz::toStd(destinationPort));
    connection.set("sourceNode", quartz::toStd(sourceNode));
    connection.set("sourcePort", quartz::toStd(sourcePort));
    connections.set("connection_" + std::to_string(largest + 1), std::move(connection));
    connectionCount_ = {connections.payloadIdentity(), connections.size(), largest + 1};
}

void QuartzPatch::publishPort(const QString& port, const QString& name, const std::optional<QString>& label)
{
    if (!parent_) return;
    Value published = Value::emptyDictionary();
    published.set("key", quartz::toStd(name));
    published.set("node", quartz::toStd(key()));
    published.set("port", quartz::toStd(port));
    if (label) {
        Value state = Value::emptyDictionary();
        state.set(kUserInfo, archivedName(*label));
        published.set(kState, std::move(state));
    }
    parent_->mutableState().mutableDictionary()[kPublishedInputPorts].mutableArray().push_back(std::move(published));
}

void QuartzPatch::publishOutputPort(const QString& port, const QString& name)
{
    if (!parent_) return;
    Value published = Value::emptyDictionary();
    published.set("key", quartz::toStd(name));
    published.set("node", quartz::toStd(key()));
    published.set("port", quartz::toStd(port));
    Value state = Value::emptyDictionary();
    state.set(kUserInfo, archivedName(name));
    published.set(kState, std::move(state));
    parent_->mutableState().mutableDictionary()[kPublishedOutputPorts].mutableArray().push_back(std::move(published));
}

Value QuartzPatch::infoForPublishedInputPortWithName(const QString& name) const
{
    const std::string wanted = quartz::toStd(name);
    for (const Value& port : state().value(kPublishedInputPorts).array()) {
        if (port.value("key").string() == wanted) return port;
    }
    return Value();
}

QuartzPatch* QuartzPatch::patchWithName(const QString& name) const
{
    for (const auto& child : nodes_) {
        if (child->name() == name) return child.get();
    }
    return nullptr;
}

bool QuartzPatch::setPortValue(const Value& value, const QString& key, const QString& stateKey)
{
    const std::string stateName = quartz::toStd(stateKey);
    if (!state().value(stateName).isDictionary()) return false;
    Value entry = Value::emptyDictionary();
    entry.set("value", value);
    mutableState().mutableDictionary()[stateName].set(quartz::toStd(key), std::move(entry));
    return true;
}

void QuartzPatch::setPortValue(const Value& value, const QString& key)
{
    const std::string wanted = quartz::toStd(key);
    plist::Array& published = mutableState().mutableDictionary()[kPublishedInputPorts].mutableArray();
    for (auto it = published.begin(); it != published.end(); ++it) {
        if (it->value("key").string() != wanted) continue;
        // The updated port moves to the end of the list, as the editor's
        // remove-and-append does.
        Value port = std::move(*it);
        published.erase(it);
        Value portState = port.value(kState);
        portState.set("value", value);
        port.set(kState, std::move(portState));
        published.push_back(std::move(port));
        return;
    }
    if (!setPortValue(value, key, QStringLiteral("ivarInputPortStates")))
        setPortValue(value, key, QStringLiteral("customInputPortStates"));
}

Value QuartzPatch::portValueForKey(const QString& key) const
{
    // The value is looked up on the published-port dictionary itself, not
    // inside its state; ports written by setPortValue keep theirs in the
    // state, so for them this gives null.
    const Value port = infoForPublishedInputPortWithName(key);
    return port.value("value");
}

void QuartzPatch::addNodesOfPatch(QuartzPatch& other)
{
    for (auto& child : other.nodes_) addNode(std::move(child));
    other.nodes_.clear();

    Value& connections = mutableState().mutableDictionary()[kConnections];
    for (const auto& [name, connection] : other.state().value(kConnections).dictionary()) connections.set(name, connection);

    QuartzComposition* otherComposition = other.composition();
    for (const Value& port : other.state().value(kPublishedInputPorts).array()) {
        const QString portKey = quartz::toQt(port.value("key").string());
        // A default value from the other file's input parameters is looked up
        // but deliberately not carried over: the merged file keeps the port as
        // it was published.
        if (!port.value(kState).contains("value") && otherComposition)
            (void)otherComposition->inputParameterForKey(portKey);
        QString label = portKey;
        if (const Value* archived = port.value(kState).find(kUserInfo); archived && archived->isData()) {
            std::string error;
            if (auto info = plist::legacy::decode(archived->dataBytes(), &error)) {
                if (const plist::legacy::Object* name = info->root.find("name"); name && name->isString())
                    label = quartz::toQt(name->toString());
            }
        }
        publishPort(portKey, portKey, label);
    }

    setTimebase(other.timebase());
}

Value QuartzPatch::patchDataForFileData(const Value& /*compositionDictionary*/) const
{
    Value node = data_;
    plist::Array children;
    children.reserve(nodes_.size());
    for (const auto& child : nodes_) children.push_back(child->patchDataForFileData());
    Value& state = node.mutableDictionary()[kState];
    state.set(kNodes, Value(std::move(children)));
    return node;
}
