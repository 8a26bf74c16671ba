#pragma once
// The value types a Quartz Composer port can carry, and the names the
// framework's port attributes use for them.

#include <QString>
#include <cstdint>
#include <optional>
#include <string_view>

namespace runtime {

enum class PortType : std::uint8_t {
    Virtual,  // passes any value unchanged
    Boolean,
    Index,
    Number,
    String,
    Color,
    Image,
    Structure,
    Mesh,         // 3-D meshes (runtime/Mesh.h)
    Interaction,  // mouse interaction links: carried, never used
};

// "QCPortTypeNumber" and so on; Virtual, Mesh and Interaction have no public
// framework constant, so they get names of the same pattern.
QString portTypeName(PortType type);
std::optional<PortType> portTypeFromName(std::string_view name);

// The port class names stored in files ("QCNumberPort", "QCGLImagePort",
// "QCOpenGLPort_Blending", ...).
std::optional<PortType> portTypeFromPortClass(std::string_view portClass);

}  // namespace runtime
