#include "runtime/Value.h"

#include "runtime/Mesh.h"

#include "plist/Value.h"

#include <QColor>
#include <QImage>

#include <cmath>

namespace runtime {

Value::Value(Image image)
{
    if (!image.isNull()) data_ = std::move(image);
}

Value::Value(StructurePtr structure)
{
    if (structure) data_ = std::move(structure);
}

Value::Value(MeshPtr mesh)
{
    if (mesh) data_ = std::move(mesh);
}

bool Value::toBool() const
{
    switch (kind()) {
    case Kind::Null: return false;
    case Kind::Boolean: return std::get<bool>(data_);
    case Kind::Number: return std::get<double>(data_) != 0.0;
    case Kind::String: {
        const QString s = std::get<QString>(data_).trimmed();
        if (s.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 ||
            s.compare(QLatin1String("yes"), Qt::CaseInsensitive) == 0)
            return true;
        return s.toDouble() != 0.0;
    }
    case Kind::Color: return std::get<Color>(data_).alpha > 0.0;
    case Kind::Image: return true;
    case Kind::Structure: return std::get<StructurePtr>(data_)->count() > 0;
    case Kind::Mesh: return !std::get<MeshPtr>(data_)->isEmpty();
    }
    return false;
}

double Value::toNumber() const
{
    switch (kind()) {
    case Kind::Boolean: return std::get<bool>(data_) ? 1.0 : 0.0;
    case Kind::Number: return std::get<double>(data_);
    case Kind::String: {
        // Leading numeric text counts ("12px" is 12), as NSString's doubleValue reads it.
        const QString s = std::get<QString>(data_).trimmed();
        int end = 0;
        while (end < s.size() && (s[end].isDigit() || s[end] == QLatin1Char('.') || s[end] == QLatin1Char('-') ||
                                  s[end] == QLatin1Char('+') || s[end] == QLatin1Char('e') || s[end] == QLatin1Char('E')))
            ++end;
        for (int n = end; n > 0; --n) {
            bool ok = false;
            const double d = s.left(n).toDouble(&ok);
            if (ok) return d;
        }
        return 0.0;
    }
    case Kind::Color: {
        const Color& c = std::get<Color>(data_);
        return (c.red + c.green + c.blue) / 3.0;
    }
    case Kind::Structure: return double(std::get<StructurePtr>(data_)->count());
    default: return 0.0;
    }
}

QString Value::toString() const
{
    switch (kind()) {
    case Kind::Boolean: return std::get<bool>(data_) ? QStringLiteral("1") : QStringLiteral("0");
    case Kind::Number: {
        const double d = std::get<double>(data_);
        if (std::isnan(d)) return QStringLiteral("nan");
        return QString::number(d, 'g', 15);
    }
    case Kind::String: return std::get<QString>(data_);
    case Kind::Color: {
        const Color& c = std::get<Color>(data_);
        return QStringLiteral("%1 %2 %3 %4").arg(c.red).arg(c.green).arg(c.blue).arg(c.alpha);
    }
    default: return {};
    }
}

Color Value::toColor() const
{
    switch (kind()) {
    case Kind::Color: return std::get<Color>(data_);
    case Kind::Boolean:
    case Kind::Number: {
        // A number becomes an opaque grey level.
        const double v = toNumber();
        return {v, v, v, 1.0};
    }
    default: return Color::transparentBlack();
    }
}

Image Value::toImage() const
{
    return kind() == Kind::Image ? std::get<Image>(data_) : Image();
}

StructurePtr Value::toStructure() const
{
    return kind() == Kind::Structure ? std::get<StructurePtr>(data_) : nullptr;
}

MeshPtr Value::toMesh() const
{
    return kind() == Kind::Mesh ? std::get<MeshPtr>(data_) : nullptr;
}

Value Value::convertedTo(PortType type) const
{
    switch (type) {
    case PortType::Boolean: return kind() == Kind::Boolean ? *this : Value(toBool());
    case PortType::Index: {
        const double d = toNumber();
        if (!(d > 0.0)) return Value(0.0);  // negatives and NaN
        return Value(std::min(std::round(d), 4294967295.0));
    }
    case PortType::Number: return kind() == Kind::Number ? *this : Value(toNumber());
    case PortType::String: return kind() == Kind::String ? *this : Value(toString());
    case PortType::Color: return kind() == Kind::Color ? *this : Value(toColor());
    case PortType::Image: return kind() == Kind::Image ? *this : Value();
    case PortType::Structure:
        if (kind() == Kind::Structure || kind() == Kind::Null) return *this;
        // A single value becomes a one-member structure.
        return Value(std::make_shared<const Structure>(std::vector<Structure::Member>{{QString(), *this}}));
    case PortType::Mesh: return kind() == Kind::Mesh ? *this : Value();
    case PortType::Virtual:
    case PortType::Interaction: return *this;
    }
    return *this;
}

bool Value::operator==(const Value& other) const
{
    if (data_.index() != other.data_.index()) return false;
    switch (kind()) {
    case Kind::Null: return true;
    case Kind::Boolean: return std::get<bool>(data_) == std::get<bool>(other.data_);
    case Kind::Number: {
        const double a = std::get<double>(data_), b = std::get<double>(other.data_);
        return a == b || (std::isnan(a) && std::isnan(b));
    }
    case Kind::String: return std::get<QString>(data_) == std::get<QString>(other.data_);
    case Kind::Color: return std::get<Color>(data_) == std::get<Color>(other.data_);
    case Kind::Image: return std::get<Image>(data_) == std::get<Image>(other.data_);
    case Kind::Structure: return std::get<StructurePtr>(data_) == std::get<StructurePtr>(other.data_);
    case Kind::Mesh: return std::get<MeshPtr>(data_) == std::get<MeshPtr>(other.data_);
    }
    return false;
}

namespace {

bool isColorDictionary(const plist::Value& v)
{
    if (!v.isDictionary() || v.size() < 3 || v.size() > 4) return false;
    for (const char* key : {"red", "green", "blue"})
        if (!v.find(key) || !v.find(key)->isNumber()) return false;
    return v.size() == 3 || (v.find("alpha") && v.find("alpha")->isNumber());
}

Value fromPlistAtDepth(const plist::Value& v, int depth)
{
    switch (v.type()) {
    case plist::Type::Boolean: return Value(v.toBool());
    case plist::Type::Integer:
    case plist::Type::Real:
    case plist::Type::Date: return Value(v.toDouble());
    case plist::Type::String: return Value(QString::fromStdString(v.string()));
    case plist::Type::Data: {
        const std::string& bytes = v.dataBytes();
        return Value(Image::fromEncodedData(QByteArray(bytes.data(), qsizetype(bytes.size()))));
    }
    case plist::Type::Array: {
        if (depth > 64) return {};
        std::vector<Structure::Member> members;
        members.reserve(v.array().size());
        for (const plist::Value& item : v.array()) members.push_back({QString(), fromPlistAtDepth(item, depth + 1)});
        return Value(std::make_shared<const Structure>(std::move(members)));
    }
    case plist::Type::Dictionary: {
        if (isColorDictionary(v)) {
            const plist::Value* alpha = v.find("alpha");
            return Value(Color{v.value("red").toDouble(), v.value("green").toDouble(), v.value("blue").toDouble(),
                               alpha ? alpha->toDouble() : 1.0});
        }
        if (depth > 64) return {};
        std::vector<Structure::Member> members;
        for (const auto& [key, item] : v.dictionary())
            members.push_back({QString::fromStdString(key), fromPlistAtDepth(item, depth + 1)});
        return Value(std::make_shared<const Structure>(std::move(members)));
    }
    default: return {};
    }
}

Value fromVariantAtDepth(const QVariant& v, int depth)
{
    if (!v.isValid() || v.isNull()) return {};
    switch (v.typeId()) {
    case QMetaType::Bool: return Value(v.toBool());
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double: return Value(v.toDouble());
    case QMetaType::QString: return Value(v.toString());
    case QMetaType::QColor: {
        const QColor c = v.value<QColor>().toRgb();
        return Value(Color{c.redF(), c.greenF(), c.blueF(), c.alphaF()});
    }
    case QMetaType::QImage: return Value(Image::fromRaster(v.value<QImage>()));
    case QMetaType::QByteArray: return Value(Image::fromEncodedData(v.toByteArray()));
    case QMetaType::QVariantList: {
        if (depth > 64) return {};
        std::vector<Structure::Member> members;
        for (const QVariant& item : v.toList()) members.push_back({QString(), fromVariantAtDepth(item, depth + 1)});
        return Value(std::make_shared<const Structure>(std::move(members)));
    }
    case QMetaType::QVariantMap: {
        if (depth > 64) return {};
        std::vector<Structure::Member> members;
        const QVariantMap map = v.toMap();
        for (auto it = map.begin(); it != map.end(); ++it)
            members.push_back({it.key(), fromVariantAtDepth(it.value(), depth + 1)});
        return Value(std::make_shared<const Structure>(std::move(members)));
    }
    default:
        if (v.userType() == qMetaTypeId<MeshPtr>()) return Value(v.value<MeshPtr>());
        if (v.canConvert<double>()) return Value(v.toDouble());
        return Value(v.toString());
    }
}

}  // namespace

Value Value::fromPlist(const plist::Value& value)
{
    return fromPlistAtDepth(value, 0);
}

Value Value::fromVariant(const QVariant& value)
{
    return fromVariantAtDepth(value, 0);
}

QVariant Value::toVariant() const
{
    switch (kind()) {
    case Kind::Null: return {};
    case Kind::Boolean: return std::get<bool>(data_);
    case Kind::Number: return std::get<double>(data_);
    case Kind::String: return std::get<QString>(data_);
    case Kind::Color: {
        const Color& c = std::get<Color>(data_);
        return QColor::fromRgbF(float(std::clamp(c.red, 0.0, 1.0)), float(std::clamp(c.green, 0.0, 1.0)),
                                float(std::clamp(c.blue, 0.0, 1.0)), float(std::clamp(c.alpha, 0.0, 1.0)));
    }
    case Kind::Image: {
        const Image& image = std::get<Image>(data_);
        if (image.isInfinite()) return {};
        return image.raster();
    }
    case Kind::Structure: {
        const Structure& s = *std::get<StructurePtr>(data_);
        if (s.isKeyed()) {
            QVariantMap map;
            for (const auto& m : s.members()) map.insert(m.key, m.value.toVariant());
            return map;
        }
        QVariantList list;
        for (const auto& m : s.members()) list.append(m.value.toVariant());
        return list;
    }
    case Kind::Mesh: return QVariant::fromValue(std::get<MeshPtr>(data_));
    }
    return {};
}

const Value* Structure::memberAt(std::size_t index) const
{
    return index < members_.size() ? &members_[index].value : nullptr;
}

const Value* Structure::member(const QString& key) const
{
    for (const auto& m : members_)
        if (m.key == key) return &m.value;
    return nullptr;
}

bool Structure::isKeyed() const
{
    for (const auto& m : members_)
        if (!m.key.isEmpty()) return true;
    return false;
}

}  // namespace runtime
