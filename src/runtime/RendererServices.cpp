#include "runtime/RendererServices.h"

Q_LOGGING_CATEGORY(lcRuntime, "velloran.runtime")

namespace runtime {

void RendererServices::logOnce(const QString& message)
{
    if (logged_.contains(message)) return;
    logged_.insert(message);
    qCInfo(lcRuntime).noquote() << message;
}

}  // namespace runtime
