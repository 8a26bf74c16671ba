#include "runtime/ExecutionContext.h"

#include "runtime/MacroPatch.h"

#include <algorithm>

namespace runtime {

namespace {
// Restores the depth counter however a pull returns.
struct DepthGuard {
    int& depth;
    explicit DepthGuard(int& d) : depth(d) { ++depth; }
    ~DepthGuard() { --depth; }
};
}  // namespace

ExecutionContext::ExecutionContext(Backend& backend, RendererServices& services)
    : backend_(backend), services_(services)
{
}

void ExecutionContext::beginFrame(double time, RenderTarget* target, const QVariantMap* arguments)
{
    ++frame_;
    ++pass_;
    rootTime_ = time;
    target_ = target;
    arguments_ = arguments;
    modelView_.setToIdentity();
    iterations_.clear();
    atFrameEnd_.clear();
}

void ExecutionContext::runAtFrameEnd(Patch& patch)
{
    if (std::find(atFrameEnd_.begin(), atFrameEnd_.end(), &patch) == atFrameEnd_.end()) atFrameEnd_.push_back(&patch);
}

void ExecutionContext::endFrame()
{
    // By index: a patch's frameEnded may evaluate others that ask too.
    for (std::size_t i = 0; i < atFrameEnd_.size(); ++i) atFrameEnd_[i]->frameEnded(*this);
    atFrameEnd_.clear();
}

RenderTarget* ExecutionContext::setTarget(RenderTarget* target)
{
    RenderTarget* previous = target_;
    target_ = target;
    return previous;
}

const QVariantMap& ExecutionContext::arguments() const
{
    static const QVariantMap none;
    return arguments_ ? *arguments_ : none;
}

void ExecutionContext::pull(InputPort& port)
{
    if (port.pulledPass == pass_ || depth_ > kMaxDepth) return;
    port.pulledPass = pass_;
    DepthGuard guard(depth_);
    Port* source = nullptr;
    if (port.connection) {
        ensure(*port.connection);
        source = port.connection;
    } else if (port.published) {
        pull(*port.published);
        source = port.published;
    }
    if (source && source->version != port.sourceVersion) {
        port.sourceVersion = source->version;
        port.setValue(source->value);
    }
}

void ExecutionContext::pullInputs(Patch& patch)
{
    for (const auto& port : patch.inputs()) pull(*port);
}

void ExecutionContext::ensure(OutputPort& port)
{
    if (port.forward) {
        if (port.pulledPass == pass_ || depth_ > kMaxDepth) return;
        port.pulledPass = pass_;
        DepthGuard guard(depth_);
        Patch& macro = *port.owner;
        if (!isEnabled(macro)) return;
        markUsed(macro);
        ensure(*port.forward);
        port.assign(port.forward->value);
        return;
    }
    // A consumer's outputs are set when it renders.
    if (port.owner && port.owner->executionMode() != ExecutionMode::Consumer) evaluate(*port.owner);
}

void ExecutionContext::evaluate(Patch& processor)
{
    Patch::Evaluation& e = processor.evaluation;
    if (e.evaluatedPass == pass_ || depth_ > kMaxDepth) return;
    e.evaluatedPass = pass_;
    DepthGuard guard(depth_);
    if (!isEnabled(processor)) return;
    markUsed(processor);
    const bool selective = processor.pullsInputsItself();
    if (!selective) pullInputs(processor);
    const double time = timeOf(processor);
    const TimeMode mode = processor.timeMode();
    const bool timeMatters = mode == TimeMode::TimeBase || processor.timebase() != Timebase::Parent;
    const bool run = selective || !e.executedOnce || processor.inputsChanged() || mode == TimeMode::Idle ||
                     (timeMatters && time != e.lastExecutedTime);
    if (!run) return;
    processor.execute(*this, time);
    processor.clearInputChanges();
    e.executedOnce = true;
    e.lastExecutedTime = time;
}

bool ExecutionContext::isEnabled(Patch& patch)
{
    InputPort& enable = patch.enableInput();
    pull(enable);
    return enable.value.toBool();
}

double ExecutionContext::timeOf(Patch& patch)
{
    Patch::Evaluation& e = patch.evaluation;
    if (e.timePass == pass_) return e.time;
    const double parentTime = patch.parent() ? timeOf(*patch.parent()) : rootTime_;
    double time = parentTime;
    switch (patch.timebase()) {
    case Timebase::Parent: break;
    case Timebase::Local: time = parentTime - e.localStart; break;
    case Timebase::External:
        if (InputPort* t = patch.input(u"_time")) {
            pull(*t);
            time = t->value.toNumber();
        }
        break;
    }
    e.timePass = pass_;
    e.time = time;
    return time;
}

void ExecutionContext::markUsed(Patch& patch)
{
    Patch::Evaluation& e = patch.evaluation;
    if (e.lastUsedFrame == frame_) return;
    // A local timebase restarts when the patch starts being used again.
    if (patch.timebase() == Timebase::Local && (e.lastUsedFrame == 0 || e.lastUsedFrame + 1 < frame_)) {
        e.localStart = patch.parent() ? timeOf(*patch.parent()) : rootTime_;
        e.timePass = 0;
    }
    e.lastUsedFrame = frame_;
}

void ExecutionContext::renderConsumers(MacroPatch& macro)
{
    // Index-based: a patch may not add children while rendering, but be safe
    // against the vector moving.
    const auto& children = macro.children();
    for (std::size_t i = 0; i < children.size(); ++i) {
        Patch& child = *children[i];
        if (child.executionMode() == ExecutionMode::Consumer) renderConsumer(child);
    }
}

void ExecutionContext::renderConsumer(Patch& consumer)
{
    if (depth_ > kMaxDepth) return;
    DepthGuard guard(depth_);
    if (!isEnabled(consumer)) return;
    markUsed(consumer);
    pullInputs(consumer);
    const double time = timeOf(consumer);
    consumer.execute(*this, time);
    consumer.clearInputChanges();
    consumer.evaluation.executedOnce = true;
    consumer.evaluation.lastExecutedTime = time;
}

}  // namespace runtime
