#include "runtime/RendererServices.h"

#include "runtime/patches/ScriptEngine.h"

Q_LOGGING_CATEGORY(lcRuntime, "velloran.runtime")

namespace runtime {

RendererServices::RendererServices() = default;
RendererServices::~RendererServices() = default;

ScriptEngine& RendererServices::scriptEngine()
{
    if (!scriptEngine_) scriptEngine_ = std::make_unique<ScriptEngine>();
    return *scriptEngine_;
}

void RendererServices::logOnce(const QString& message)
{
    if (logged_.contains(message)) return;
    logged_.insert(message);
    qCInfo(lcRuntime).noquote() << message;
}

}  // namespace runtime
