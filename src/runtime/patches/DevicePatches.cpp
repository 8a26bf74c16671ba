// Mouse and Keyboard. Rendering here has no pointer and no keyboard: the
// mouse rests at the centre (or where the render arguments' "mouseLocation"
// puts it, in units) with its buttons up, and no key is down. Compositions
// that wait for input therefore show their resting state.

#include "runtime/ExecutionContext.h"
#include "runtime/patches/PatchFamilies.h"

#include <QPointF>

#include <tuple>
#include <vector>

namespace runtime {

namespace {

class MousePatch : public Patch {
public:
    explicit MousePatch(const PatchSetup& setup) : Patch(setup)
    {
        addInput(QStringLiteral("inputResetScroll"), PortType::Boolean, false);
        addInput(QStringLiteral("inputScrollFactor"), PortType::Number, 0.01);
        x_ = &addOutput(QStringLiteral("outputX"), PortType::Number);
        y_ = &addOutput(QStringLiteral("outputY"), PortType::Number);
        for (const char* key : {"outputButton1", "outputButton2", "outputButton3"}) addOutput(QString::fromLatin1(key), PortType::Boolean);
        addOutput(QStringLiteral("outputScrollX"), PortType::Number);
        addOutput(QStringLiteral("outputScrollY"), PortType::Number);
    }
    TimeMode timeMode() const override { return TimeMode::Idle; }
    void execute(ExecutionContext& context, double) override
    {
        const QPointF at = context.arguments().value(QStringLiteral("mouseLocation")).toPointF();
        setOutput(*x_, at.x());
        setOutput(*y_, at.y());
    }

private:
    OutputPort* x_;
    OutputPort* y_;
};

// One Boolean output per key the patch watches ("key_0020" for the space
// bar); the keys are stored as UTF-16 (big-endian) characters.
class KeyboardPatch : public Patch {
public:
    explicit KeyboardPatch(const PatchSetup& setup) : Patch(setup)
    {
        const std::string& keys = setup.state.value("keys").dataBytes();
        for (std::size_t i = 0; i + 1 < keys.size() && i < 512; i += 2) {
            const unsigned code = (unsigned(static_cast<unsigned char>(keys[i])) << 8) | static_cast<unsigned char>(keys[i + 1]);
            addOutput(QStringLiteral("key_%1").arg(code, 4, 16, QLatin1Char('0')), PortType::Boolean);
        }
    }
    void execute(ExecutionContext&, double) override {}
};

// Mouse Interaction: links a renderer to the pointer (its interaction
// output feeds a sprite's "_inputInteraction"). Without a pointer nothing
// is pressed, dragged, pinched or turned: the outputs hold the initial
// values the file gives.
class MouseInteractionPatch : public Patch {
public:
    explicit MouseInteractionPatch(const PatchSetup& setup) : Patch(setup)
    {
        addOutput(QStringLiteral("outputInteraction"), PortType::Interaction);
        for (const char* key : {"outputMouseDown", "outputMouseOver", "outputDoubleClick"})
            addOutput(QString::fromLatin1(key), PortType::Boolean);
        for (const auto& [input, output, initial] : {std::tuple{"inputInitialXDrag", "outputXDrag", 0.0},
                                                      std::tuple{"inputInitialYDrag", "outputYDrag", 0.0},
                                                      std::tuple{"inputInitialMagnifyValue", "outputMagnifyValue", 1.0},
                                                      std::tuple{"inputInitialRotateValue", "outputRotateValue", 0.0}})
            held_.push_back({&addInput(QString::fromLatin1(input), PortType::Number, initial),
                             &addOutput(QString::fromLatin1(output), PortType::Number)});
    }
    void execute(ExecutionContext&, double) override
    {
        for (const auto& [input, output] : held_) setOutput(*output, number(input));
    }

private:
    std::vector<std::pair<InputPort*, OutputPort*>> held_;
};

}  // namespace

void registerDevicePatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCMouseInteraction"), factoryOf<MouseInteractionPatch>());
    registry.add(QStringLiteral("QCMouse"), factoryOf<MousePatch>());
    registry.add(QStringLiteral("QCKeyboard"), factoryOf<KeyboardPatch>());
}

}  // namespace runtime
