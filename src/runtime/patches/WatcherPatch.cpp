// The Watcher: in Quartz Composer it shows the value passing through it in
// the editor. Rendering has no editor, so it passes its input to its output
// and does nothing else. Its port names are not known from any file we
// have: "input"/"output" (the splitter's) are a guess, typed by a stored
// "portClass" where there is one, and a connection under another name is
// taken as the same port (see docs/runtime.md).

#include "runtime/patches/PatchFamilies.h"

namespace runtime {

namespace {

class WatcherPatch : public Patch {
public:
    explicit WatcherPatch(const PatchSetup& setup) : Patch(setup)
    {
        PortType type = PortType::Virtual;
        if (const plist::Value* portClass = setup.state.find("portClass"); portClass && portClass->isString())
            type = portTypeFromPortClass(portClass->string()).value_or(PortType::Virtual);
        input_ = &addInput(QStringLiteral("input"), type);
        output_ = &addOutput(QStringLiteral("output"), type);
    }
    // System ports ("_enable", "_time") keep their own names.
    InputPort* inputForConnection(QStringView key) override
    {
        InputPort* port = input(key);
        return port || key.startsWith(u'_') ? port : input_;
    }
    OutputPort* outputForConnection(QStringView key) override
    {
        OutputPort* port = output(key);
        return port ? port : output_;
    }
    void execute(ExecutionContext&, double) override { setOutput(*output_, input_->value); }

private:
    InputPort* input_;
    OutputPort* output_;
};

}  // namespace

void registerWatcherPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCWatcher"), factoryOf<WatcherPatch>());
}

}  // namespace runtime
