#include "model/AttributeTypes.h"

#include "model/AttributeJson.h"
#include "model/RichFontValue.h"

#include <QColor>
#include <QFont>
#include <QImage>

namespace model {

namespace {

QVariant asText(const QVariant& v) { return v.canConvert<QString>() ? QVariant(v.toString()) : QVariant(); }

QVariant asNumber(const QVariant& v)
{
    bool ok = false;
    const double d = v.toDouble(&ok);
    return ok ? QVariant(float(d)) : QVariant();
}

QVariant asBoolean(const QVariant& v) { return v.isValid() ? QVariant(v.toBool()) : QVariant(); }

template <class T> QVariant asKind(const QVariant& v) { return v.canConvert<T>() ? QVariant::fromValue(v.value<T>()) : QVariant(); }

QJsonValue anyToJson(const QVariant& v) { return json::fromValue(v); }

using E = EditorKind;
using I = Interpolation;
using C = ExportCurve;
using P = PortForm;

// clang-format off
const std::array<AttributeTypeInfo, 13> kTypes{{
    // code, name, port type, animates, interpolation, export curve, port form, file path, always published, editor, normalised, from JSON, to JSON
    {kTypeString, "string", "QCPortTypeString", true, I::Hold, C::SteppedIndices, P::Value, false, false, E::Text, asText, json::textFrom, anyToJson},
    {kTypeIndex, "index", "QCPortTypeIndex", true, I::Hold, C::SteppedValues, P::Value, false, false, E::Integer, asNumber, json::numberFrom, anyToJson},
    {kTypeNumber, "number", "QCPortTypeNumber", true, I::Linear, C::Smooth, P::Value, false, false, E::Number, asNumber, json::numberFrom, anyToJson},
    {kTypeBoolean, "boolean", "QCPortTypeBoolean", true, I::Hold, C::SteppedIndices, P::Value, false, false, E::Checkbox, asBoolean, json::booleanFrom, anyToJson},
    {kTypeIndexMenu, "menu", "QCPortTypeIndex", true, I::Hold, C::SteppedValues, P::Value, false, false, E::Menu, asNumber, json::numberFrom, anyToJson},
    {kTypeColor, "colour", "QCPortTypeColor", true, I::LinearPerChannel, C::SmoothPerChannel, P::Value, false, false, E::Colour, asKind<QColor>, json::colourValueFrom, anyToJson},
    {kTypeImage, "image", "QCPortTypeImage", false, I::Hold, C::SteppedIndices, P::Value, false, false, E::Image, asKind<QImage>, json::imageFrom, anyToJson},
    {kTypeFont, "font", "__FONT__", false, I::Hold, C::SteppedIndices, P::FontNameAndSize, false, false, E::Font, asKind<QFont>, json::fontFrom, anyToJson},
    {kTypeStyledText, "styled text", "__RTF__", false, I::Hold, C::SteppedIndices, P::Value, false, false, E::StyledText, asText, json::textFrom, anyToJson},
    {kTypeFilePath, "file path", "__FILE__", false, I::Hold, C::SteppedIndices, P::Value, true, false, E::FilePath, asText, json::textFrom, anyToJson},
    {kTypeOtherFilePath, "other file path", nullptr, false, I::Hold, C::SteppedIndices, P::Value, true, false, E::FilePath, asText, json::textFrom, anyToJson},
    {kTypeVideoInput, "video input", nullptr, false, I::Hold, C::SteppedIndices, P::Value, false, true, E::VideoPoster, asKind<QImage>, json::imageFrom, anyToJson},
    {kTypeRichFont, "rich font", "__RICHFONT__", false, I::Hold, C::SteppedIndices, P::RichFontMembers, false, false, E::RichFont, asKind<RichFontValue>, json::richFontFrom, anyToJson},
}};
// clang-format on

}  // namespace

const std::array<AttributeTypeInfo, 13>& attributeTypes() { return kTypes; }

const AttributeTypeInfo& attributeType(int code)
{
    return code >= 0 && code < int(kTypes.size()) ? kTypes[std::size_t(code)] : kTypes[kTypeString];
}

const AttributeTypeInfo* attributeTypeForPortType(const QString& typeName, bool hasMenuItems)
{
    for (const AttributeTypeInfo& type : kTypes) {
        if (!type.portTypeName || typeName != QLatin1String(type.portTypeName)) continue;
        // One port type, two attribute types: an index with menu items is a menu.
        if (type.code == kTypeIndex && hasMenuItems) continue;
        if (type.code == kTypeIndexMenu && !hasMenuItems) continue;
        return &type;
    }
    return nullptr;
}

}  // namespace model
