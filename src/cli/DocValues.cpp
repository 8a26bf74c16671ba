#include "cli/DocValues.h"

#include "model/Attribute.h"
#include "model/RichFontValue.h"

#include <QColor>
#include <QFont>
#include <QImage>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>

namespace cli {

namespace {

QString kindOf(const QJsonValue& json)
{
    switch (json.type()) {
    case QJsonValue::Bool: return QStringLiteral("a boolean");
    case QJsonValue::Double: return QStringLiteral("a number");
    case QJsonValue::String: return QStringLiteral("a string");
    case QJsonValue::Array: return QStringLiteral("an array");
    case QJsonValue::Object: return QStringLiteral("an object");
    default: return QStringLiteral("null");
    }
}

std::nullopt_t wrongKind(const QJsonValue& json, const QString& wanted, QString* error)
{
    if (error) *error = QStringLiteral("expected %1, got %2").arg(wanted, kindOf(json));
    return std::nullopt;
}

std::optional<QVariant> number(const QJsonValue& json, QString* error)
{
    if (!json.isDouble()) return wrongKind(json, QStringLiteral("a number"), error);
    return QVariant(float(json.toDouble()));
}

std::optional<QVariant> boolean(const QJsonValue& json, QString* error)
{
    if (!json.isBool()) return wrongKind(json, QStringLiteral("a boolean"), error);
    return QVariant(json.toBool());
}

std::optional<QVariant> text(const QJsonValue& json, QString* error)
{
    if (!json.isString()) return wrongKind(json, QStringLiteral("a string"), error);
    return QVariant(json.toString());
}

std::optional<QVariant> image(const QJsonValue& json, QString* error)
{
    const QString path = json.toObject().value(QLatin1String("image")).toString();
    if (!json.isObject() || path.isEmpty()) return wrongKind(json, QStringLiteral("{\"image\": PATH}"), error);
    QImageReader reader(path);
    const QImage picture = reader.read();
    if (picture.isNull()) {
        if (error) *error = QStringLiteral("cannot read the image %1: %2").arg(path, reader.errorString());
        return std::nullopt;
    }
    return QVariant(picture);
}

std::optional<QVariant> font(const QJsonValue& json, QString* error)
{
    const QJsonObject o = json.toObject();
    if (!json.isObject() || !o.value(QLatin1String("family")).isString() || !o.value(QLatin1String("size")).isDouble())
        return wrongKind(json, QStringLiteral("{\"family\", \"size\"}"), error);
    QFont f(o.value(QLatin1String("family")).toString());
    f.setPointSizeF(o.value(QLatin1String("size")).toDouble());
    return QVariant(f);
}

}  // namespace

std::optional<QColor> colourFromJson(const QJsonValue& json, QString* error)
{
    static const QRegularExpression form(QStringLiteral("^#([0-9a-fA-F]{6})([0-9a-fA-F]{2})?$"));
    const auto match = form.match(json.toString());
    if (!json.isString() || !match.hasMatch()) {
        wrongKind(json, QStringLiteral("a colour \"#RRGGBB\" or \"#RRGGBBAA\""), error);
        return std::nullopt;
    }
    QColor c(QLatin1Char('#') + match.captured(1));
    if (match.capturedLength(2)) c.setAlpha(match.captured(2).toInt(nullptr, 16));
    return c;
}

std::optional<QVariant> attributeValueFromJson(const QJsonValue& json, int type, QString* error,
                                               const QVariant& current)
{
    switch (type) {
    case model::kTypeNumber:
    case model::kTypeIndex:
    case model::kTypeIndexMenu: return number(json, error);
    case model::kTypeBoolean: return boolean(json, error);
    case model::kTypeColor: {
        const auto c = colourFromJson(json, error);
        return c ? std::optional<QVariant>(*c) : std::nullopt;
    }
    case model::kTypeImage:
    case model::kTypeVideoInput: return image(json, error);
    case model::kTypeFont: return font(json, error);
    case model::kTypeRichFont: {
        // Only the ports named change; the others keep their values.
        if (!json.isObject()) return wrongKind(json, QStringLiteral("an object of rich font ports"), error);
        const model::RichFontValue old = current.value<model::RichFontValue>();
        QVariantMap ports = old.attributes();
        const QJsonObject given = json.toObject();
        for (auto it = given.begin(); it != given.end(); ++it) {
            QVariant v = it.value().toVariant();
            if (const auto c = colourFromJson(it.value(), nullptr)) v = *c;
            ports.insert(it.key(), v);
        }
        return QVariant::fromValue(model::RichFontValue::fromMap(
            {{QStringLiteral("attributes"), ports}, {QStringLiteral("keyPattern"), old.keyPattern()}}));
    }
    default: return text(json, error);  // strings, styled text (RTF), file paths
    }
}

std::optional<QVariant> inputValueFromJson(const QJsonValue& json, const QString& portType, QString* error)
{
    if (portType == QLatin1String("QCPortTypeNumber") || portType == QLatin1String("QCPortTypeIndex"))
        return attributeValueFromJson(json, model::kTypeNumber, error);
    if (portType == QLatin1String("QCPortTypeBoolean")) return attributeValueFromJson(json, model::kTypeBoolean, error);
    if (portType == QLatin1String("QCPortTypeColor")) return attributeValueFromJson(json, model::kTypeColor, error);
    if (portType == QLatin1String("QCPortTypeImage")) return attributeValueFromJson(json, model::kTypeImage, error);
    if (portType == QLatin1String("QCPortTypeString")) return attributeValueFromJson(json, model::kTypeString, error);
    return json.toVariant();  // structures and untyped ports take what they are given
}

QJsonValue jsonFromValue(const QVariant& value)
{
    switch (value.metaType().id()) {
    case QMetaType::Bool: return value.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double: return value.toDouble();
    case QMetaType::QString: return value.toString();
    case QMetaType::QColor: {
        const QColor c = value.value<QColor>();
        return c.alpha() == 255 ? c.name(QColor::HexRgb) : c.name(QColor::HexRgb) + QString::asprintf("%02x", c.alpha());
    }
    case QMetaType::QFont: {
        const QFont f = value.value<QFont>();
        return QJsonObject{{QStringLiteral("family"), f.family()}, {QStringLiteral("size"), f.pointSizeF()}};
    }
    case QMetaType::QImage: {
        const QImage i = value.value<QImage>();
        return QJsonObject{{QStringLiteral("image"), QJsonValue()},
                           {QStringLiteral("width"), i.width()},
                           {QStringLiteral("height"), i.height()}};
    }
    case QMetaType::QVariantList: {
        QJsonArray list;
        for (const QVariant& v : value.toList()) list.append(jsonFromValue(v));
        return list;
    }
    case QMetaType::QVariantMap: {
        QJsonObject map;
        const QVariantMap m = value.toMap();
        for (auto it = m.begin(); it != m.end(); ++it) map.insert(it.key(), jsonFromValue(it.value()));
        return map;
    }
    default: break;
    }
    if (value.canConvert<model::RichFontValue>() && value.metaType() == QMetaType::fromType<model::RichFontValue>())
        return jsonFromValue(value.value<model::RichFontValue>().attributes());
    if (!value.isValid()) return QJsonValue();
    return value.toString();
}

}  // namespace cli
