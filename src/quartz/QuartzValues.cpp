#include "quartz/QuartzValues.h"

#include "quartz/QuartzComposition.h"

#include "quartz/TiffCodec.h"

#include <QColor>
#include <QDateTime>
#include <QImage>

namespace quartz {

using plist::Value;

QByteArray tiffRepresentation(const QImage& image)
{
    return tiff::encode(image);
}

Value fileValueForVariant(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<plist::Value>()) return value.value<plist::Value>();
    switch (value.metaType().id()) {
    case QMetaType::UnknownType: return Value();
    case QMetaType::QColor: {
        const QColor rgb = value.value<QColor>().toRgb();
        Value colour = Value::emptyDictionary();
        colour.set("alpha", Value::singleReal(1.0f));
        colour.set("blue", Value::singleReal(float(rgb.blueF())));
        colour.set("green", Value::singleReal(float(rgb.greenF())));
        colour.set("red", Value::singleReal(float(rgb.redF())));
        return colour;
    }
    case QMetaType::QImage: {
        const QByteArray tiff = tiffRepresentation(value.value<QImage>());
        return Value::data(std::string(tiff.constData(), std::size_t(tiff.size())));
    }
    case QMetaType::Bool: return Value(value.toBool());
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::Long:
    case QMetaType::LongLong: return Value(static_cast<long long>(value.toLongLong()));
    case QMetaType::UInt:
    case QMetaType::UShort:
    case QMetaType::ULong:
    case QMetaType::ULongLong: return Value(static_cast<unsigned long long>(value.toULongLong()));
    case QMetaType::Float: return Value::singleReal(value.toFloat());
    case QMetaType::Double: return Value(value.toDouble());
    case QMetaType::QString: return Value(value.toString().toStdString());
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return Value::data(std::string(bytes.constData(), std::size_t(bytes.size())));
    }
    case QMetaType::QDateTime:
        return Value::date(double(value.toDateTime().toMSecsSinceEpoch()) / 1000.0 - 978307200.0);
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        plist::Array array;
        for (const QVariant& element : value.toList()) array.push_back(fileValueForVariant(element));
        return Value(std::move(array));
    }
    case QMetaType::QVariantMap: {
        plist::Dictionary dictionary;
        const QVariantMap map = value.toMap();
        for (auto it = map.begin(); it != map.end(); ++it) dictionary.emplace(it.key().toStdString(), fileValueForVariant(it.value()));
        return Value(std::move(dictionary));
    }
    default:
        if (value.canConvert<QString>()) return Value(value.toString().toStdString());
        return Value();
    }
}

}  // namespace quartz
