#include "document/UnattendedTrigger.h"

#include "document/CompositionExport.h"
#include "runtime/Renderer.h"

namespace document {

UnattendedTrigger::UnattendedTrigger(runtime::Renderer& renderer)
    : renderer_(renderer), waits_(renderer.outputKeys().contains(CompositionExport::waitingForTriggerKey()))
{
}

bool UnattendedTrigger::afterStep()
{
    if (pulsed_) {
        renderer_.setInputValue(CompositionExport::triggerKey(), false);
        pulsed_ = false;
        return false;
    }
    if (waits_ && renderer_.outputValue(CompositionExport::waitingForTriggerKey()).toBool()) {
        renderer_.setInputValue(CompositionExport::triggerKey(), true);
        pulsed_ = true;
    }
    return pulsed_;
}

}  // namespace document
