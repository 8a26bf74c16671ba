#pragma once
// Attribute values as the document commands write and read them in JSON:
// numbers, strings, booleans, colours "#RRGGBB" or "#RRGGBBAA", fonts
// {"family", "size"}, images {"image": PATH} (dumped as {"image": null,
// "width", "height"}), rich fonts as the object of their member ports.

#include <QColor>
#include <QJsonValue>
#include <QVariant>

#include <optional>

namespace cli {

// A value for an attribute of the given type code; nothing, with the
// reason, when the JSON is of the wrong kind. `current` is the value that a
// partial one (a rich font's ports) completes.
std::optional<QVariant> attributeValueFromJson(const QJsonValue& json, int attributeType, QString* error,
                                               const QVariant& current = {});

// A value for a composition's published input of the given Quartz Composer
// port type name ("QCPortTypeColor", ...).
std::optional<QVariant> inputValueFromJson(const QJsonValue& json, const QString& portTypeName, QString* error);

QJsonValue jsonFromValue(const QVariant& value);
// An attribute's value in the form of its type.
QJsonValue jsonFromAttributeValue(const QVariant& value, int attributeType);

std::optional<QColor> colourFromJson(const QJsonValue& json, QString* error);

}  // namespace cli
