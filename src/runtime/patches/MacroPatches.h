#pragma once

#include "runtime/Backend.h"
#include "runtime/MacroPatch.h"

#include <memory>
#include <optional>

namespace runtime {

// Renders its consumer children into an offscreen image of inputWidth ×
// inputHeight pixels (0: the destination's size), cleared to transparent.
class RenderInImagePatch : public MacroPatch {
public:
    explicit RenderInImagePatch(const PatchSetup& setup);
    // It renders when its image is pulled, like any processor.
    ExecutionMode executionMode() const override { return ExecutionMode::Processor; }
    TimeMode timeMode() const override { return TimeMode::Idle; }
    void execute(ExecutionContext& context, double time) override;

private:
    InputPort* width_;
    InputPort* height_;
    InputPort* render_;
    OutputPort* image_;
    std::unique_ptr<RenderTarget> target_;

    bool contentIsStatic();
    void contentsChanged() override
    {
        contentIsStatic_.reset();
        redraw_ = true;
    }
    std::optional<bool> contentIsStatic_;  // worked out on first use
    bool redraw_ = true;  // whatever the inputs say
};

// Renders its children inputCount times; Iterator Variables inside read
// which pass is running.
class IteratorPatch : public MacroPatch {
public:
    explicit IteratorPatch(const PatchSetup& setup);
    void execute(ExecutionContext& context, double time) override;

private:
    InputPort* count_;
};

class IteratorVariablesPatch : public Patch {
public:
    explicit IteratorVariablesPatch(const PatchSetup& setup);
    TimeMode timeMode() const override { return TimeMode::Idle; }
    void execute(ExecutionContext& context, double time) override;

private:
    OutputPort* index_;
    OutputPort* count_;
    OutputPort* position_;
};

// A 3-D transform (degrees) applied to everything its children draw.
class CameraPatch : public MacroPatch {
public:
    explicit CameraPatch(const PatchSetup& setup);
    void execute(ExecutionContext& context, double time) override;

private:
    std::vector<InputPort*> origin_, rotate_, translate_, scale_;
};

}  // namespace runtime
