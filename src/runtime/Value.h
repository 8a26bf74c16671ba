#pragma once
// The value a port holds while a composition runs. A port's type decides
// how values convert when they cross a connection (convertedTo).

#include "runtime/Image.h"
#include "runtime/PortType.h"

#include <QString>
#include <QVariant>

#include <memory>
#include <variant>
#include <vector>

namespace plist {
class Value;
}

namespace runtime {

// Straight (not premultiplied) RGBA, components nominally 0…1.
struct Color {
    double red = 0, green = 0, blue = 0, alpha = 0;
    bool operator==(const Color&) const = default;
    static Color white() { return {1, 1, 1, 1}; }
    static Color transparentBlack() { return {0, 0, 0, 0}; }
};

class Structure;
using StructurePtr = std::shared_ptr<const Structure>;
class Mesh;  // runtime/Mesh.h
using MeshPtr = std::shared_ptr<const Mesh>;

class Value {
public:
    enum class Kind : std::uint8_t { Null, Boolean, Number, String, Color, Image, Structure, Mesh };

    Value() = default;
    Value(bool b) : data_(b) {}
    Value(double d) : data_(d) {}
    Value(int i) : data_(double(i)) {}
    Value(QString s) : data_(std::move(s)) {}
    Value(const char* s) : data_(QString::fromUtf8(s)) {}
    Value(Color c) : data_(c) {}
    Value(Image image);
    Value(StructurePtr structure);
    Value(MeshPtr mesh);

    Kind kind() const { return static_cast<Kind>(data_.index()); }
    bool isNull() const { return kind() == Kind::Null; }

    // Conversions as Quartz Composer ports apply them.
    bool toBool() const;
    double toNumber() const;
    QString toString() const;
    Color toColor() const;
    Image toImage() const;
    StructurePtr toStructure() const;
    MeshPtr toMesh() const;  // null unless the value is a mesh

    // The value as a port of `type` holds it (Index rounds and stays at or
    // above zero; Virtual keeps anything).
    Value convertedTo(PortType type) const;

    // Images, structures and meshes compare by identity.
    bool operator==(const Value& other) const;
    bool operator!=(const Value& other) const { return !(*this == other); }

    // Values of stored port states and input parameters: colour dictionaries
    // become colours, data becomes an image, arrays and dictionaries become
    // structures.
    static Value fromPlist(const plist::Value& value);
    // QColor, QImage, QString, numbers, bool, QVariantList/QVariantMap.
    static Value fromVariant(const QVariant& value);
    QVariant toVariant() const;

private:
    std::variant<std::monostate, bool, double, QString, Color, Image, StructurePtr, MeshPtr> data_;
};

// An ordered list of members, optionally keyed (Quartz Composer structures
// stand for both NSArray and NSDictionary).
class Structure {
public:
    struct Member {
        QString key;  // empty for an unkeyed member
        Value value;
    };
    Structure() = default;
    explicit Structure(std::vector<Member> members) : members_(std::move(members)) {}

    const std::vector<Member>& members() const { return members_; }
    std::size_t count() const { return members_.size(); }
    const Value* memberAt(std::size_t index) const;
    const Value* member(const QString& key) const;
    bool isKeyed() const;

private:
    std::vector<Member> members_;
};

}  // namespace runtime
