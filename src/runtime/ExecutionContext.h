#pragma once
// One renderer's evaluation state and the pull-based evaluation itself:
// consumers run in layer order and pull their inputs; a processor runs at
// most once per pass, and only when its inputs changed or its time moved.

#include "runtime/Backend.h"
#include "runtime/Patch.h"

#include <QMatrix4x4>
#include <QVariantMap>

#include <cstdint>
#include <vector>

namespace runtime {

class MacroPatch;
class RendererServices;
struct Lighting;

class ExecutionContext {
public:
    ExecutionContext(Backend& backend, RendererServices& services);

    // A frame is one render call; a pass is one evaluation of the graph
    // (an iterator makes several passes inside one frame).
    void beginFrame(double time, RenderTarget* target, const QVariantMap* arguments);
    std::uint64_t frame() const { return frame_; }
    std::uint64_t pass() const { return pass_; }
    void newPass() { ++pass_; }
    double rootTime() const { return rootTime_; }

    Backend& backend() { return backend_; }
    RendererServices& services() { return services_; }
    RenderTarget* target() const { return target_; }
    // Returns the previous target so that the caller can restore it.
    RenderTarget* setTarget(RenderTarget* target);
    QMatrix4x4& modelView() { return modelView_; }
    // The lighting of the innermost Lighting patch around the draw, or null.
    const Lighting* lighting() const { return lighting_; }
    // Returns the previous lighting so that the caller can restore it.
    const Lighting* setLighting(const Lighting* lighting)
    {
        const Lighting* previous = lighting_;
        lighting_ = lighting;
        return previous;
    }
    const QVariantMap& arguments() const;

    // Iterator variables, innermost last.
    struct Iteration {
        int index = 0;
        int count = 0;
    };
    std::vector<Iteration>& iterations() { return iterations_; }

    // Evaluation.
    void pull(InputPort& port);
    void pullInputs(Patch& patch);
    void ensure(OutputPort& port);
    void evaluate(Patch& processor);
    bool isEnabled(Patch& patch);
    double timeOf(Patch& patch);
    void renderConsumers(MacroPatch& macro);
    void renderConsumer(Patch& consumer);

    // Asks for patch.frameEnded() once the frame's evaluation is over (a
    // recursor keeps what its loop reached); asking twice in a frame is one.
    void runAtFrameEnd(Patch& patch);
    // Called by the renderer after the frame; forgets the requests.
    void endFrame();

private:
    void markUsed(Patch& patch);
    // Deep chains are followed up to this depth, so a pathological file
    // cannot exhaust the stack.
    static constexpr int kMaxDepth = 4000;

    Backend& backend_;
    RendererServices& services_;
    RenderTarget* target_ = nullptr;
    QMatrix4x4 modelView_;
    const Lighting* lighting_ = nullptr;
    const QVariantMap* arguments_ = nullptr;
    std::vector<Iteration> iterations_;
    std::vector<Patch*> atFrameEnd_;
    std::uint64_t frame_ = 0;
    std::uint64_t pass_ = 0;
    double rootTime_ = 0;
    int depth_ = 0;
};

}  // namespace runtime
