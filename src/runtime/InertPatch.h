#pragma once
// Stand-ins for classes the runtime does not implement. They keep the ports
// the file stores or connects (untyped), never change their outputs, and
// never draw; an unknown class that holds child patches still renders its
// children, which is closer to the author's picture than dropping them.

#include "runtime/MacroPatch.h"

namespace runtime {

class InertPatch : public Patch {
public:
    using Patch::Patch;
    void execute(ExecutionContext&, double) override {}
    bool isInert() const override { return true; }
    InputPort* inputForConnection(QStringView key) override;
    OutputPort* outputForConnection(QStringView key) override;
};

class InertMacroPatch : public MacroPatch {
public:
    using MacroPatch::MacroPatch;
    bool isInert() const override { return true; }
    InputPort* inputForConnection(QStringView key) override;
    OutputPort* outputForConnection(QStringView key) override;
};

}  // namespace runtime
