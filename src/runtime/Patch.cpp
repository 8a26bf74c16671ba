#include "runtime/Patch.h"

#include "runtime/MacroPatch.h"

namespace runtime {

void PatchSetup::report(const QString& message) const
{
    if (problems) problems->append((path.isEmpty() ? key : path) + QStringLiteral(": ") + message);
}

Patch::Patch(const PatchSetup& setup)
    : className_(setup.className), identifier_(setup.identifier), key_(setup.key)
{
    enable_ = &addInput(QStringLiteral("_enable"), PortType::Boolean, true);
    setTimebase(timebaseFromState(setup.state));
}

Patch::~Patch() = default;

QString Patch::path() const
{
    if (!parent_ || !parent_->parent()) return key_;
    return parent_->path() + QLatin1Char('/') + key_;
}

InputPort* Patch::input(QStringView key) const
{
    for (const auto& port : inputs_)
        if (port->key == key) return port;
    return nullptr;
}

OutputPort* Patch::output(QStringView key) const
{
    for (const auto& port : outputs_)
        if (port->key == key) return port;
    return nullptr;
}

InputPort& Patch::addInput(const QString& key, PortType type, Value initial)
{
    if (InputPort* existing = input(key)) return *existing;
    InputPort& port = inputStorage_.emplace_back();
    port.key = key;
    port.type = type;
    port.owner = this;
    port.value = initial.convertedTo(type);
    inputs_.push_back(&port);
    return port;
}

OutputPort& Patch::addOutput(const QString& key, PortType type)
{
    if (OutputPort* existing = output(key)) return *existing;
    OutputPort& port = outputStorage_.emplace_back();
    port.key = key;
    port.type = type;
    port.owner = this;
    port.value = Value().convertedTo(type);
    outputs_.push_back(&port);
    return port;
}

void Patch::setTimebase(Timebase timebase)
{
    timebase_ = timebase;
    if (timebase == Timebase::External) addInput(QStringLiteral("_time"), PortType::Number, 0.0);
}

bool Patch::inputsChanged() const
{
    for (const auto& port : inputs_)
        if (port->changed) return true;
    return false;
}

void Patch::clearInputChanges()
{
    for (const auto& port : inputs_) port->changed = false;
}

double Patch::stateNumber(const PatchSetup& setup, const char* key, double fallback)
{
    const plist::Value* v = setup.state.find(key);
    if (!v) return fallback;
    if (v->isBoolean()) return v->toBool() ? 1.0 : 0.0;
    return v->isNumber() ? v->toDouble() : fallback;
}

bool Patch::stateBool(const PatchSetup& setup, const char* key, bool fallback)
{
    const plist::Value* v = setup.state.find(key);
    if (!v) return fallback;
    if (v->isBoolean()) return v->toBool();
    if (v->isNumber()) return v->toDouble() != 0.0;
    return fallback;
}

QString Patch::stateString(const PatchSetup& setup, const char* key, const QString& fallback)
{
    const plist::Value* v = setup.state.find(key);
    return v && v->isString() ? QString::fromStdString(v->string()) : fallback;
}

Timebase timebaseFromState(const plist::Value& state)
{
    const plist::Value* v = state.find("timebase");
    if (!v || !v->isString()) return Timebase::Parent;
    if (v->string() == "local") return Timebase::Local;
    if (v->string() == "external") return Timebase::External;
    return Timebase::Parent;
}

}  // namespace runtime
