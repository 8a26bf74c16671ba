#pragma once
// The attribute value types, one table entry per type code: what every part
// of the program that treats types differently (creation from a port,
// animation and interpolation, the renderer and the export, JSON for the
// command line, the inspector's control) reads, instead of switching on the
// code. A new type is one new entry.

#include <QJsonValue>
#include <QString>
#include <QVariant>

#include <array>
#include <optional>

namespace model {

// Attribute type codes, as stored in documents.
enum AttributeType : int {
    kTypeString = 0, kTypeIndex = 1, kTypeNumber = 2, kTypeBoolean = 3, kTypeIndexMenu = 4, kTypeColor = 5,
    kTypeImage = 6, kTypeFont = 7, kTypeStyledText = 8, kTypeFilePath = 9, kTypeOtherFilePath = 10,
    kTypeVideoInput = 11, kTypeRichFont = 12,
};

// The value between two keyframes.
enum class Interpolation { Hold, Linear, LinearPerChannel };

// How the export turns the keyframes into timeline curves: smooth curves on
// the value (one per colour channel), a stepped curve on the value itself,
// or a stepped curve of indices into a multiplexer of the keyframe values.
enum class ExportCurve { Smooth, SmoothPerChannel, SteppedValues, SteppedIndices };

// How the value reaches the renderer's and the exported file's ports: as
// itself under the attribute's key, as a font's name and size, or as the
// member ports of a rich font.
enum class PortForm { Value, FontNameAndSize, RichFontMembers };

// The control the inspector edits the value with.
enum class EditorKind { Text, Integer, Number, Checkbox, Menu, Colour, Image, Font, StyledText, FilePath, VideoPoster, RichFont };

struct AttributeTypeInfo {
    int code;
    const char* name;
    // The port type, or the creation rules' marker, that gives this type
    // (null when none does); an index port gives the menu type when it has
    // menu items.
    const char* portTypeName;
    bool animates;
    Interpolation interpolation;
    ExportCurve curve;
    PortForm portForm;
    bool filePath;  // a path to a resource the document collects and embeds
    // Published in the export even when the operator may not change it: a
    // live input is always fed by the playout.
    bool alwaysPublished;
    EditorKind editor;
    // The value in the form the store keeps for this type (numbers as
    // single precision, colours as colours, ...); an invalid value when the
    // given one cannot be that type.
    QVariant (*normalized)(const QVariant& value);
    // JSON as `velloran-cli doc apply` takes it; nothing, with the reason,
    // when it is of the wrong kind. `current` completes a partial value.
    std::optional<QVariant> (*fromJson)(const QJsonValue& json, QString* error, const QVariant& current);
    // JSON as `velloran-cli doc dump` shows it.
    QJsonValue (*toJson)(const QVariant& value);
};

// Every type, in code order.
const std::array<AttributeTypeInfo, 13>& attributeTypes();
// The entry of a code; codes outside the table read as strings.
const AttributeTypeInfo& attributeType(int code);
// The type a published port of this type name becomes, or null for a type
// name no entry claims (the attribute then keeps the store's default).
const AttributeTypeInfo* attributeTypeForPortType(const QString& typeName, bool hasMenuItems);

}  // namespace model
