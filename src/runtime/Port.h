#pragma once
// Input and output ports of a running patch. Every change of a port's value
// bumps its version; a downstream port copies a value only when the version
// it last copied is stale, which is how "inputs changed" is detected without
// comparing images.

#include "runtime/Value.h"

#include <QString>
#include <cstdint>

namespace runtime {

class Patch;

struct Port {
    QString key;
    PortType type = PortType::Virtual;
    Value value;
    std::uint64_t version = 1;
    Patch* owner = nullptr;

    // Stores `v` converted to the port's type; true when the value changed.
    bool assign(Value v)
    {
        v = v.convertedTo(type);
        if (v == value) return false;
        value = std::move(v);
        ++version;
        return true;
    }
};

struct OutputPort : Port {
    // For a macro's published output: the child port whose value it shows.
    OutputPort* forward = nullptr;
    std::uint64_t pulledPass = 0;
};

struct InputPort : Port {
    // At most one source: an output of a sibling patch, or the parent
    // macro's published input.
    OutputPort* connection = nullptr;
    InputPort* published = nullptr;
    std::uint64_t sourceVersion = 0;  // version of the source last copied
    std::uint64_t pulledPass = 0;
    bool changed = true;  // since the owner last executed

    bool hasSource() const { return connection || published; }
    void setValue(Value v)
    {
        if (assign(std::move(v))) changed = true;
    }
};

}  // namespace runtime
