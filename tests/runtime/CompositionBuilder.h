#pragma once
// Builds composition dictionaries in tests, shaped as Quartz Composer
// writes them, so that tests do not depend on fixture files.

#include "runtime/Composition.h"
#include "runtime/Renderer.h"

#include "plist/Value.h"

#include <QImage>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace test {

inline plist::Value colorValue(double r, double g, double b, double a = 1.0)
{
    plist::Dictionary d;
    d["red"] = r;
    d["green"] = g;
    d["blue"] = b;
    d["alpha"] = a;
    return plist::Value(std::move(d));
}

class Node {
public:
    Node(const std::string& className, const std::string& key)
    {
        dict_.set("class", className);
        if (!key.empty()) dict_.set("key", key);
        dict_.set("state", plist::Value::emptyDictionary());
    }
    Node& identifier(const std::string& id)
    {
        dict_.set("identifier", id);
        return *this;
    }
    Node& state(const std::string& key, plist::Value value)
    {
        state().set(key, std::move(value));
        return *this;
    }
    Node& input(const std::string& port, plist::Value value) { return portState("ivarInputPortStates", port, std::move(value)); }
    Node& custom(const std::string& port, plist::Value value) { return portState("customInputPortStates", port, std::move(value)); }
    Node& system(const std::string& port, plist::Value value) { return portState("systemInputPortStates", port, std::move(value)); }
    Node& child(const Node& node)
    {
        plist::Value nodes = state().value("nodes");
        nodes.mutableArray().push_back(node.value());
        state().set("nodes", nodes);
        return *this;
    }
    Node& connect(const std::string& source, const std::string& sourcePort, const std::string& destination,
                  const std::string& destinationPort)
    {
        plist::Value connections = state().value("connections");
        plist::Dictionary c;
        c["sourceNode"] = source;
        c["sourcePort"] = sourcePort;
        c["destinationNode"] = destination;
        c["destinationPort"] = destinationPort;
        const std::string name = "connection_" + std::to_string(connections.size() + 1);
        connections.mutableDictionary()[name] = plist::Value(std::move(c));
        state().set("connections", connections);
        return *this;
    }
    Node& publishInput(const std::string& key, const std::string& node, const std::string& port)
    {
        return publish("publishedInputPorts", key, node, port);
    }
    Node& publishOutput(const std::string& key, const std::string& node, const std::string& port)
    {
        return publish("publishedOutputPorts", key, node, port);
    }
    const plist::Value& value() const { return dict_; }

private:
    plist::Value& state() { return dict_.mutableDictionary()["state"]; }
    Node& portState(const char* group, const std::string& port, plist::Value value)
    {
        plist::Value ports = state().value(group);
        plist::Dictionary entry;
        entry["value"] = std::move(value);
        ports.mutableDictionary()[port] = plist::Value(std::move(entry));
        state().set(group, ports);
        return *this;
    }
    Node& publish(const char* group, const std::string& key, const std::string& node, const std::string& port)
    {
        plist::Value list = state().value(group);
        plist::Dictionary entry;
        entry["key"] = key;
        entry["node"] = node;
        entry["port"] = port;
        list.mutableArray().push_back(plist::Value(std::move(entry)));
        state().set(group, list);
        return *this;
    }
    plist::Value dict_ = plist::Value::emptyDictionary();
};

inline Node root()
{
    return Node("QCPatch", "");
}

inline plist::Value document(const Node& rootPatch, plist::Dictionary extras = {})
{
    extras["rootPatch"] = rootPatch.value();
    return plist::Value(std::move(extras));
}

inline std::shared_ptr<const runtime::Composition> load(const Node& rootPatch, plist::Dictionary extras = {})
{
    QString error;
    auto composition = runtime::Composition::fromPlist(document(rootPatch, std::move(extras)), &error);
    if (!composition) ADD_FAILURE() << error.toStdString();
    return composition;
}

inline QString problemsText(const runtime::Composition& c)
{
    return c.problems().join(QLatin1Char('\n'));
}

}  // namespace test
