#include "runtime/InertPatch.h"

namespace runtime {

InputPort* InertPatch::inputForConnection(QStringView key)
{
    if (InputPort* port = input(key)) return port;
    return &addInput(key.toString(), PortType::Virtual);
}

OutputPort* InertPatch::outputForConnection(QStringView key)
{
    if (OutputPort* port = output(key)) return port;
    return &addOutput(key.toString(), PortType::Virtual);
}

InputPort* InertMacroPatch::inputForConnection(QStringView key)
{
    if (InputPort* port = input(key)) return port;
    return &addInput(key.toString(), PortType::Virtual);
}

// Files written by the quartz module give every node a "nodes" list, so an
// unknown leaf class can arrive here; its connected outputs must exist.
OutputPort* InertMacroPatch::outputForConnection(QStringView key)
{
    if (OutputPort* port = output(key)) return port;
    return &addOutput(key.toString(), PortType::Virtual);
}

}  // namespace runtime
