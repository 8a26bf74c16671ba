#include "runtime/MacroPatch.h"

#include "runtime/ExecutionContext.h"

#include <algorithm>

namespace runtime {

MacroPatch::MacroPatch(const PatchSetup& setup) : Patch(setup) {}

MacroPatch::~MacroPatch() = default;

ExecutionMode MacroPatch::executionMode() const
{
    if (consumerCache_ < 0) {
        consumerCache_ = 0;
        for (const auto& child : children_) {
            if (child->executionMode() == ExecutionMode::Consumer) {
                consumerCache_ = 1;
                break;
            }
        }
    }
    return consumerCache_ ? ExecutionMode::Consumer : ExecutionMode::Processor;
}

void MacroPatch::execute(ExecutionContext& context, double)
{
    context.renderConsumers(*this);
}

void MacroPatch::reset()
{
    for (const auto& child : children_) child->reset();
}

Patch* MacroPatch::child(const QString& key) const
{
    return byKey_.value(key, nullptr);
}

Patch& MacroPatch::addChild(std::unique_ptr<Patch> child)
{
    child->setParent(this);
    byKey_.insert(child->key(), child.get());
    children_.push_back(std::move(child));
    childrenChanged();
    return *children_.back();
}

bool MacroPatch::removeChild(const QString& key)
{
    auto it = std::find_if(children_.begin(), children_.end(), [&](const auto& c) { return c->key() == key; });
    if (it == children_.end()) return false;
    Patch* removed = it->get();
    for (const auto& sibling : children_) {
        for (const auto& in : sibling->inputs()) {
            if (in->connection && in->connection->owner == removed) {
                in->connection = nullptr;
                in->sourceVersion = 0;
            }
        }
    }
    for (const auto& out : outputs()) {
        if (out->forward && out->forward->owner == removed) out->forward = nullptr;
    }
    byKey_.remove(removed->key());
    children_.erase(it);
    childrenChanged();
    return true;
}

QString MacroPatch::uniqueChildKey(const QString& className) const
{
    QString base = className;
    if (base.startsWith(QLatin1String("QC"))) base = base.mid(2);
    if (base.startsWith(QLatin1Char('/'))) base = base.mid(1);
    if (base.isEmpty()) base = QStringLiteral("Patch");
    for (int n = 1;; ++n) {
        QString key = base + QLatin1Char('_') + QString::number(n);
        if (!child(key)) return key;
    }
}

bool MacroPatch::connect(OutputPort& source, InputPort& destination, QString* error)
{
    if (!source.owner || source.owner->parent() != this || !destination.owner ||
        destination.owner->parent() != this) {
        if (error) *error = QStringLiteral("ports are not both inside %1").arg(key().isEmpty() ? QStringLiteral("the root") : key());
        return false;
    }
    if (source.owner == destination.owner) {
        if (error) *error = QStringLiteral("%1 cannot feed itself").arg(source.owner->key());
        return false;
    }
    destination.connection = &source;
    destination.published = nullptr;
    destination.sourceVersion = 0;
    return true;
}

InputPort& MacroPatch::publishInput(const QString& key, InputPort& childPort)
{
    InputPort& port = addInput(key, childPort.type, childPort.value);
    childPort.published = &port;
    childPort.connection = nullptr;
    childPort.sourceVersion = 0;
    return port;
}

OutputPort& MacroPatch::publishOutput(const QString& key, OutputPort& childPort)
{
    OutputPort& port = addOutput(key, childPort.type);
    port.forward = &childPort;
    return port;
}

void MacroPatch::childrenChanged()
{
    for (MacroPatch* m = this; m; m = m->parent()) m->consumerCache_ = -1;
    contentsChangedBelow();
}

void MacroPatch::contentsChangedBelow()
{
    for (MacroPatch* m = this; m; m = m->parent()) m->contentsChanged();
}

}  // namespace runtime
