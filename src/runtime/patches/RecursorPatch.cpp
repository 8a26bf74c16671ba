// The Recursor: feedback inside a macro. Each saved port "X" is an output
// that carries what the enclosing macro published as "X" at the end of the
// previous frame, and "Initial_X" before that or while "inputInitialize" is
// on. How the corpus wires it is in docs/runtime.md.

#include "runtime/ExecutionContext.h"
#include "runtime/MacroPatch.h"
#include "runtime/patches/PatchFamilies.h"

#include <vector>

namespace runtime {

namespace {

// A damaged file must not make thousands of ports.
constexpr std::size_t kMaxSavedPorts = 256;

class RecursorPatch : public Patch {
public:
    explicit RecursorPatch(const PatchSetup& setup) : Patch(setup)
    {
        initialize_ = &addInput(QStringLiteral("inputInitialize"), PortType::Boolean, false);
        // "savedPorts": [[port class, name], ...]
        const plist::Value* list = setup.state.find("savedPorts");
        if (!list) return;
        for (const plist::Value& entry : list->array()) {
            if (saved_.size() == kMaxSavedPorts) {
                setup.report(QStringLiteral("more than %1 saved ports; the rest are left out").arg(kMaxSavedPorts));
                break;
            }
            const auto& pair = entry.array();
            if (pair.size() < 2 || !pair[0].isString() || !pair[1].isString() || pair[1].string().empty()) {
                setup.report(QStringLiteral("a saved port without a class and name is left out"));
                continue;
            }
            const QString name = QString::fromStdString(pair[1].string());
            if (output(name)) continue;
            const PortType type = portTypeFromPortClass(pair[0].string()).value_or(PortType::Virtual);
            Saved port;
            port.initial = &addInput(QStringLiteral("Initial_") + name, type);
            port.output = &addOutput(name, type);
            saved_.push_back(std::move(port));
        }
    }

    // Its outputs change from frame to frame without any input changing.
    TimeMode timeMode() const override { return TimeMode::Idle; }
    bool takesFeedback() const override { return true; }

    void execute(ExecutionContext& context, double) override
    {
        const bool initial = !started_ || boolean(initialize_);
        for (Saved& port : saved_) setOutput(*port.output, initial ? port.initial->value : port.held);
        context.runAtFrameEnd(*this);
    }

    // The loop has run for this frame: keep where it ended. A published
    // output nobody pulled this frame is evaluated now, so the loop keeps
    // going even when only the delayed value is used.
    void frameEnded(ExecutionContext& context) override
    {
        started_ = true;
        for (Saved& port : saved_) {
            OutputPort* loopEnd = parent() ? parent()->output(port.output->key) : nullptr;
            if (loopEnd) {
                context.ensure(*loopEnd);
                port.held = loopEnd->value;
            } else {
                port.held = port.output->value;  // nothing published under that name: it holds
            }
        }
    }

    void reset() override
    {
        started_ = false;
        for (Saved& port : saved_) port.held = Value();
    }

private:
    struct Saved {
        InputPort* initial = nullptr;
        OutputPort* output = nullptr;
        Value held;
    };
    InputPort* initialize_;
    std::vector<Saved> saved_;
    bool started_ = false;
};

}  // namespace

void registerRecursorPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCRecursor"), factoryOf<RecursorPatch>());
}

}  // namespace runtime
