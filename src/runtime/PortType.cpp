#include "runtime/PortType.h"

#include <array>
#include <utility>

namespace runtime {

namespace {
constexpr std::array<std::pair<PortType, const char*>, 10> kNames = {{
    {PortType::Virtual, "QCPortTypeVirtual"},
    {PortType::Boolean, "QCPortTypeBoolean"},
    {PortType::Index, "QCPortTypeIndex"},
    {PortType::Number, "QCPortTypeNumber"},
    {PortType::String, "QCPortTypeString"},
    {PortType::Color, "QCPortTypeColor"},
    {PortType::Image, "QCPortTypeImage"},
    {PortType::Structure, "QCPortTypeStructure"},
    {PortType::Mesh, "QCPortTypeMesh"},
    {PortType::Interaction, "QCPortTypeInteraction"},
}};

constexpr std::array<std::pair<std::string_view, PortType>, 17> kPortClasses = {{
    {"QCNumberPort", PortType::Number},
    {"QCIndexPort", PortType::Index},
    {"QCOpenGLPort_Blending", PortType::Index},
    {"QCOpenGLPort_ZBuffer", PortType::Index},
    {"QCOpenGLPort_Culling", PortType::Index},
    {"QCInterpolationPort", PortType::Index},
    {"QCBooleanPort", PortType::Boolean},
    {"QCStringPort", PortType::String},
    {"QCColorPort", PortType::Color},
    {"QCOpenGLPort_Color", PortType::Color},
    {"QCImagePort", PortType::Image},
    {"QCGLImagePort", PortType::Image},
    {"QCOpenGLPort_Image", PortType::Image},
    {"QCStructurePort", PortType::Structure},
    {"QCVirtualPort", PortType::Virtual},
    {"QCMeshPort", PortType::Mesh},
    {"QCInteractionPort", PortType::Interaction},
}};
}  // namespace

QString portTypeName(PortType type)
{
    for (const auto& [t, name] : kNames)
        if (t == type) return QString::fromLatin1(name);
    return QStringLiteral("QCPortTypeVirtual");
}

std::optional<PortType> portTypeFromName(std::string_view name)
{
    for (const auto& [t, n] : kNames)
        if (name == n) return t;
    return std::nullopt;
}

std::optional<PortType> portTypeFromPortClass(std::string_view portClass)
{
    for (const auto& [name, t] : kPortClasses)
        if (portClass == name) return t;
    return std::nullopt;
}

}  // namespace runtime
