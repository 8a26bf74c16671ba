#include "cli/DocValues.h"

#include "model/AttributeJson.h"
#include "model/AttributeTypes.h"

namespace cli {

std::optional<QColor> colourFromJson(const QJsonValue& json, QString* error) { return model::json::colourFrom(json, error); }

std::optional<QVariant> attributeValueFromJson(const QJsonValue& json, int type, QString* error, const QVariant& current)
{
    return model::attributeType(type).fromJson(json, error, current);
}

std::optional<QVariant> inputValueFromJson(const QJsonValue& json, const QString& portType, QString* error)
{
    if (const model::AttributeTypeInfo* type = model::attributeTypeForPortType(portType, false))
        return type->fromJson(json, error, {});
    return json.toVariant();  // structures and untyped ports take what they are given
}

QJsonValue jsonFromValue(const QVariant& value) { return model::json::fromValue(value); }

QJsonValue jsonFromAttributeValue(const QVariant& value, int type) { return model::attributeType(type).toJson(value); }

}  // namespace cli
