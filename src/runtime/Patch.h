#pragma once
// A running patch: ports, timebase and the bookkeeping the evaluator needs.
// Subclasses declare their ports in the constructor (from the node's stored
// state where the ports are dynamic) and implement execute().

#include "runtime/Port.h"

#include "plist/Value.h"

#include <QString>
#include <QStringList>

#include <cmath>
#include <deque>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace runtime {

// Numbers from files and ports can be anything (NaN, 1e300): conversions
// to integers saturate instead of overflowing.
inline int saturatedInt(double v)
{
    if (std::isnan(v)) return 0;
    if (v >= double(std::numeric_limits<int>::max())) return std::numeric_limits<int>::max();
    if (v <= double(std::numeric_limits<int>::min())) return std::numeric_limits<int>::min();
    return int(v);
}
inline std::int64_t saturatedInt64(double v)
{
    if (std::isnan(v)) return 0;
    if (v >= 9.2e18) return std::int64_t(9.2e18);
    if (v <= -9.2e18) return -std::int64_t(9.2e18);
    return std::int64_t(v);
}

class ExecutionContext;
class MacroPatch;
class CompositionResources;

enum class ExecutionMode : std::uint8_t {
    Processor,  // runs when something pulls its outputs
    Consumer,   // renders, in layer order
    Provider,   // supplies outside data (treated as a processor)
};

enum class TimeMode : std::uint8_t {
    None,      // result depends on the inputs only
    TimeBase,  // result depends on the patch time
    Idle,      // runs on every evaluation
};

enum class Timebase : std::uint8_t { Parent, Local, External };

// What an editor may show for an input beyond its type.
struct InputHints {
    std::optional<double> minimum;
    std::optional<double> maximum;
    QStringList menuItems;
};

// What a patch constructor gets: the node as stored in the file.
struct PatchSetup {
    QString className;
    QString identifier;
    QString key;
    QString path;        // "Patch_1/Sprite_2", for reports that name the node where it sits
    plist::Value state;  // the node's "state" dictionary
    const CompositionResources* resources = nullptr;
    QStringList* problems = nullptr;  // where a patch reports trouble with its state

    void report(const QString& message) const;
};

class Patch {
public:
    explicit Patch(const PatchSetup& setup);
    virtual ~Patch();
    Patch(const Patch&) = delete;
    Patch& operator=(const Patch&) = delete;

    const QString& key() const { return key_; }
    void setKey(QString key) { key_ = std::move(key); }
    const QString& className() const { return className_; }
    const QString& identifier() const { return identifier_; }
    MacroPatch* parent() const { return parent_; }
    void setParent(MacroPatch* parent) { parent_ = parent; }
    // "Patch_1/Sprite_2": keys from the root's child down to this patch.
    QString path() const;

    virtual ExecutionMode executionMode() const { return ExecutionMode::Processor; }
    virtual TimeMode timeMode() const { return TimeMode::None; }
    // An Idle patch whose result follows from the size of the image being
    // drawn alone, so a Render In Image of a fixed size may keep its picture.
    virtual bool readsOnlyTheDestinationSize() const { return false; }
    // Runs one evaluation. Inputs have been pulled; `time` is the patch time.
    virtual void execute(ExecutionContext& context, double time) = 0;
    virtual MacroPatch* asMacro() { return nullptr; }
    // Inert patches stand for classes the runtime does not implement.
    virtual bool isInert() const { return false; }
    // Forget internal state (counters, held values), as on a reload.
    virtual void reset() {}
    // A patch that delivers its values one evaluation late (the recursor):
    // a loop closed through its inputs is feedback, not a cycle to drop.
    virtual bool takesFeedback() const { return false; }
    // Runs after the frame's evaluation for a patch that asked for it with
    // ExecutionContext::runAtFrameEnd.
    virtual void frameEnded(ExecutionContext&) {}
    virtual InputHints inputHints(const InputPort&) const { return {}; }
    // A patch that reads only some inputs (a multiplexer) pulls them itself
    // in execute(); the evaluator then pulls only "_enable" and "_time", and
    // runs it on every evaluation.
    virtual bool pullsInputsItself() const { return false; }

    const std::vector<InputPort*>& inputs() const { return inputs_; }
    const std::vector<OutputPort*>& outputs() const { return outputs_; }
    InputPort* input(QStringView key) const;
    OutputPort* output(QStringView key) const;
    // Inert patches make ports on demand for what the file connects.
    virtual InputPort* inputForConnection(QStringView key) { return input(key); }
    virtual OutputPort* outputForConnection(QStringView key) { return output(key); }

    InputPort& enableInput() const { return *enable_; }
    Timebase timebase() const { return timebase_; }
    void setTimebase(Timebase timebase);  // External adds the "_time" input
    bool inputsChanged() const;
    void clearInputChanges();

    // Readers of the node's stored state.
    static double stateNumber(const PatchSetup& setup, const char* key, double fallback);
    static bool stateBool(const PatchSetup& setup, const char* key, bool fallback);
    static QString stateString(const PatchSetup& setup, const char* key, const QString& fallback = {});

    // Evaluator bookkeeping.
    struct Evaluation {
        std::uint64_t evaluatedPass = 0;
        std::uint64_t timePass = 0;
        double time = 0;
        std::uint64_t lastUsedFrame = 0;
        double localStart = 0;
        bool executedOnce = false;
        double lastExecutedTime = std::numeric_limits<double>::quiet_NaN();
    } evaluation;

protected:
    InputPort& addInput(const QString& key, PortType type, Value initial = {});
    OutputPort& addOutput(const QString& key, PortType type);
    void setOutput(OutputPort& port, Value value) { port.assign(std::move(value)); }

    static double number(const InputPort* port) { return port ? port->value.toNumber() : 0.0; }
    static int index(const InputPort* port) { return port ? saturatedInt(port->value.toNumber()) : 0; }
    static bool boolean(const InputPort* port) { return port && port->value.toBool(); }
    static QString string(const InputPort* port) { return port ? port->value.toString() : QString(); }


private:
    QString className_;
    QString identifier_;
    QString key_;
    MacroPatch* parent_ = nullptr;
    Timebase timebase_ = Timebase::Parent;
    // Ports live in deques (stable addresses, few allocations); the vectors
    // keep their order for iteration.
    std::deque<InputPort> inputStorage_;
    std::deque<OutputPort> outputStorage_;
    std::vector<InputPort*> inputs_;
    std::vector<OutputPort*> outputs_;
    InputPort* enable_ = nullptr;
};

// Reads the "timebase" state entry ("parent", "local", "external").
Timebase timebaseFromState(const plist::Value& state);

}  // namespace runtime
