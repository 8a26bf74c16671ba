#include "model/AttributeJson.h"

#include "model/RichFontValue.h"

#include <QFont>
#include <QImage>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>

namespace model::json {

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

}  // namespace

std::optional<QColor> colourFrom(const QJsonValue& json, QString* error)
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

QJsonValue fromColour(const QColor& colour)
{
    const QString rgb = colour.name(QColor::HexRgb);
    return colour.alpha() == 255 ? rgb : rgb + QString::asprintf("%02x", colour.alpha());
}

std::optional<QVariant> numberFrom(const QJsonValue& json, QString* error, const QVariant&)
{
    if (!json.isDouble()) return wrongKind(json, QStringLiteral("a number"), error);
    return QVariant(float(json.toDouble()));
}

std::optional<QVariant> booleanFrom(const QJsonValue& json, QString* error, const QVariant&)
{
    if (!json.isBool()) return wrongKind(json, QStringLiteral("a boolean"), error);
    return QVariant(json.toBool());
}

std::optional<QVariant> textFrom(const QJsonValue& json, QString* error, const QVariant&)
{
    if (!json.isString()) return wrongKind(json, QStringLiteral("a string"), error);
    return QVariant(json.toString());
}

std::optional<QVariant> colourValueFrom(const QJsonValue& json, QString* error, const QVariant&)
{
    const auto c = colourFrom(json, error);
    return c ? std::optional<QVariant>(*c) : std::nullopt;
}

std::optional<QVariant> imageFrom(const QJsonValue& json, QString* error, const QVariant&)
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

std::optional<QVariant> fontFrom(const QJsonValue& json, QString* error, const QVariant&)
{
    const QJsonObject o = json.toObject();
    if (!json.isObject() || !o.value(QLatin1String("family")).isString() || !o.value(QLatin1String("size")).isDouble())
        return wrongKind(json, QStringLiteral("{\"family\", \"size\"}"), error);
    QFont f(o.value(QLatin1String("family")).toString());
    f.setPointSizeF(o.value(QLatin1String("size")).toDouble());
    return QVariant(f);
}

std::optional<QVariant> richFontFrom(const QJsonValue& json, QString* error, const QVariant& current)
{
    if (!json.isObject()) return wrongKind(json, QStringLiteral("an object of rich font ports"), error);
    const RichFontValue old = current.value<RichFontValue>();
    QVariantMap ports = old.attributes();
    const QJsonObject given = json.toObject();
    for (auto it = given.begin(); it != given.end(); ++it) {
        QVariant v = it.value().toVariant();
        if (const auto c = colourFrom(it.value(), nullptr)) v = *c;
        ports.insert(it.key(), v);
    }
    return QVariant::fromValue(
        RichFontValue::fromMap({{QStringLiteral("attributes"), ports}, {QStringLiteral("keyPattern"), old.keyPattern()}}));
}

QJsonValue fromValue(const QVariant& value)
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
    case QMetaType::QColor: return fromColour(value.value<QColor>());
    case QMetaType::QFont: {
        const QFont f = value.value<QFont>();
        return QJsonObject{{QStringLiteral("family"), f.family()}, {QStringLiteral("size"), f.pointSizeF()}};
    }
    case QMetaType::QImage: {
        const QImage i = value.value<QImage>();
        return QJsonObject{{QStringLiteral("image"), QJsonValue()}, {QStringLiteral("width"), i.width()}, {QStringLiteral("height"), i.height()}};
    }
    case QMetaType::QVariantList: {
        QJsonArray list;
        for (const QVariant& v : value.toList()) list.append(fromValue(v));
        return list;
    }
    case QMetaType::QVariantMap: {
        QJsonObject map;
        const QVariantMap m = value.toMap();
        for (auto it = m.begin(); it != m.end(); ++it) map.insert(it.key(), fromValue(it.value()));
        return map;
    }
    default: break;
    }
    if (value.metaType() == QMetaType::fromType<RichFontValue>()) return fromValue(value.value<RichFontValue>().attributes());
    if (!value.isValid()) return QJsonValue();
    return value.toString();
}

}  // namespace model::json
