#pragma once
// Plays an exported template through its stop frames with nobody at the
// trigger: after each rendered step, a trigger set by the step before is
// released; otherwise a template that now waits gets the trigger for the
// next step. Every pulse thus lasts exactly one step and every stop frame
// holds for one. The thumbnail and the player's file rendering step alike.

namespace runtime {
class Renderer;
}

namespace document {

class UnattendedTrigger {
public:
    explicit UnattendedTrigger(runtime::Renderer& renderer);

    // Call after every render. Answers whether it set the trigger.
    bool afterStep();
    // Forgets a pulse in flight (the template starts over).
    void reset() { pulsed_ = false; }

private:
    runtime::Renderer& renderer_;
    bool waits_;  // the template publishes "waitingForTrigger"
    bool pulsed_ = false;
};

}  // namespace document
