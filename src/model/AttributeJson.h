#pragma once
// Attribute values as JSON, the forms `velloran-cli doc apply` takes and
// `doc dump` prints: numbers, strings, booleans, colours "#RRGGBB" or
// "#RRGGBBAA", fonts {"family", "size"}, images {"image": PATH} (printed as
// {"image": null, "width", "height"}), rich fonts as the object of their
// member ports. The attribute type table hands them out per type.

#include <QColor>
#include <QJsonValue>
#include <QVariant>

#include <optional>

namespace model::json {

std::optional<QColor> colourFrom(const QJsonValue& json, QString* error);
QJsonValue fromColour(const QColor& colour);

std::optional<QVariant> numberFrom(const QJsonValue& json, QString* error, const QVariant& current);
std::optional<QVariant> booleanFrom(const QJsonValue& json, QString* error, const QVariant& current);
std::optional<QVariant> textFrom(const QJsonValue& json, QString* error, const QVariant& current);
std::optional<QVariant> colourValueFrom(const QJsonValue& json, QString* error, const QVariant& current);
std::optional<QVariant> imageFrom(const QJsonValue& json, QString* error, const QVariant& current);
std::optional<QVariant> fontFrom(const QJsonValue& json, QString* error, const QVariant& current);
// Only the member ports named change; the others keep their values.
std::optional<QVariant> richFontFrom(const QJsonValue& json, QString* error, const QVariant& current);

// Any value by its own kind: what the per-type forms fall back to, and the
// form of dictionaries that are not attribute values (composition info).
QJsonValue fromValue(const QVariant& value);

}  // namespace model::json
