#pragma once
// An object read from or written to a legacy (NSArchiver, "typedstream")
// archive: nil, NSString, NSNumber, NSValue, NSArray, NSDictionary, NSColor,
// NSData, or an image kept as its raw field groups.
//
// Objects have value semantics with shared payloads, like plist::Value:
// copies share one payload until the first write. Sharing is also what an
// archive records as a reference: two places holding the same payload are
// written as one object and a back-reference, the way the archiver writes one
// Objective-C object reached twice. A decoded archive therefore re-encodes
// byte for byte, and editing one place never changes another.

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace plist::legacy {

struct ArchivedClass {
    std::string name;
    std::int32_t version = 0;
    bool operator==(const ArchivedClass&) const = default;
};

enum class ObjectKind : std::uint8_t { Nil, String, Number, Value, Array, Dictionary, Color, Data, Opaque };

// NSColor's archived colour spaces.
enum class ColorKind : std::uint8_t {
    CalibratedRgba = 1,   // r g b a
    DeviceRgba = 2,       // r g b a
    CalibratedWhite = 3,  // white alpha
    DeviceWhite = 4,      // white alpha
    DeviceCmyka = 5,      // c m y k a
    Named = 6,            // catalog name, colour name, fallback colour
};

enum class Mutability : std::uint8_t { Immutable, Mutable };

struct Point {
    double x = 0, y = 0;
    bool operator==(const Point&) const = default;
};
struct Size {
    double width = 0, height = 0;
    bool operator==(const Size&) const = default;
};
struct Rect {
    double x = 0, y = 0, width = 0, height = 0;
    bool operator==(const Rect&) const = default;
};

class Object;
using Entry = std::pair<Object, Object>;
struct FieldGroup;

namespace detail {
struct Node;
}

class Object {
public:
    Object() = default;  // nil

    // Constructors for new data, in the shapes Quartz Composer 4 writes:
    // NSString, NSMutableArray, NSMutableDictionary, NSNumber, {CG...=dd}.
    static Object string(std::string_view utf8, Mutability mutability = Mutability::Immutable);
    static Object boolean(bool value);  // NSNumber of type 'c'
    // Integers become NSNumber 'q' (or 'd' beyond 32 bits, which the stream
    // cannot hold as an integer); float becomes 'f', double 'd'.
    template <class T>
        requires(std::integral<T> || std::floating_point<T>)
    static Object number(T value);
    // An NSNumber of an explicit Objective-C type (c C s S i I l L q Q f d B);
    // the value is clamped to the type's range. Nil for any other type.
    static Object number(char objcType, double value);
    static Object point(double x, double y);
    static Object size(double width, double height);
    static Object rect(double x, double y, double width, double height);
    // Any NSValue of numbers, e.g. "{_NSPoint=ff}" or "{_NSRange=II}", with
    // its scalars in encoding order. Nil when the encoding is not one of
    // numbers only or the count does not match.
    static Object structValue(std::string_view encoding, std::vector<double> components);
    static Object array(std::vector<Object> elements, Mutability mutability = Mutability::Mutable);
    // String keys in the given order.
    static Object dictionary(std::initializer_list<std::pair<std::string_view, Object>> entries,
                             Mutability mutability = Mutability::Mutable);
    static Object dictionary(std::vector<Entry> entries, Mutability mutability = Mutability::Mutable);
    static Object color(double red, double green, double blue, double alpha = 1.0);  // calibrated RGBA
    // Kinds 1 to 5 with their components (4, 4, 2, 2 or 5 of them); nil otherwise.
    static Object color(ColorKind kind, std::vector<double> components);
    static Object namedColor(std::string_view catalog, std::string_view name, Object fallback = {});
    static Object data(std::string bytes, Mutability mutability = Mutability::Immutable);

    ObjectKind kind() const;
    bool isNil() const { return !node_; }
    bool isString() const { return kind() == ObjectKind::String; }
    bool isNumber() const { return kind() == ObjectKind::Number; }
    bool isValue() const { return kind() == ObjectKind::Value; }
    bool isArray() const { return kind() == ObjectKind::Array; }
    bool isDictionary() const { return kind() == ObjectKind::Dictionary; }
    bool isColor() const { return kind() == ObjectKind::Color; }
    bool isData() const { return kind() == ObjectKind::Data; }
    bool isOpaque() const { return kind() == ObjectKind::Opaque; }
    bool isPoint() const;  // NSValue of CGPoint, NSPoint or _NSPoint
    bool isSize() const;
    bool isRect() const;

    // The class and its superclasses as archived, most derived first;
    // empty for nil.
    const std::vector<ArchivedClass>& classChain() const;
    std::string_view className() const;
    bool isMutable() const;  // an NSMutable... class

    // Readers give a neutral value ("", 0, {}) for other kinds.
    const std::string& toString() const;  // UTF-8 as archived
    double toDouble() const;              // NSNumber
    std::int64_t toInt() const;
    bool toBool() const;
    char numberType() const;  // NSNumber's Objective-C type, 0 otherwise
    Point toPoint() const;
    Size toSize() const;
    Rect toRect() const;
    const std::string& encoding() const;  // NSNumber and NSValue type encoding
    // NSNumber/NSValue scalars in encoding order; NSColor components.
    const std::vector<double>& components() const;

    // Arrays.
    const std::vector<Object>& elements() const;
    // Turns anything that is not an array into an empty NSMutableArray first.
    void append(Object element);

    // Dictionaries, in archive order. Keys are usually strings; find, value,
    // set and remove look at string keys only.
    const std::vector<Entry>& entries() const;
    const Object* find(std::string_view key) const;
    Object value(std::string_view key) const;  // nil when absent
    // Replaces the value in place or appends a new NSString key. Anything
    // that is not a dictionary becomes an empty NSMutableDictionary first.
    void set(std::string_view key, Object value);
    bool remove(std::string_view key);

    std::size_t size() const;  // elements, entries or data bytes

    // Colours.
    ColorKind colorKind() const;  // CalibratedRgba for non-colours
    const std::string& colorCatalog() const;
    const std::string& colorName() const;
    Object namedColorFallback() const;

    const std::string& dataBytes() const;

    // Objects of classes kept as written (NSImage and its representations).
    const std::vector<FieldGroup>& fieldGroups() const;

    // Deep equality of content and classes; sharing does not take part.
    bool operator==(const Object& other) const;
    bool operator!=(const Object& other) const { return !(*this == other); }
    // Same payload: what an archive writes once and then refers back to.
    bool isSameObject(const Object& other) const { return node_ == other.node_; }

    // A short readable rendering, for messages and tests.
    std::string describe() const;

    // For the reader and writer.
    explicit Object(std::shared_ptr<detail::Node> node) : node_(std::move(node)) {}
    const detail::Node* node() const { return node_.get(); }

private:
    static Object integer(std::int64_t value);
    static Object real(double value, char objcType);
    detail::Node& detached();

    std::shared_ptr<detail::Node> node_;
};

// One value inside an opaque object's field group.
struct Field {
    enum class Kind : std::uint8_t { Number, Object, Text };
    Kind kind = Kind::Number;
    double number = 0;
    Object object;
    // C string, shared string or raw byte array; null for a nil string.
    std::shared_ptr<const std::string> text;
    bool operator==(const Field& other) const;
};

// A run of values written with one type encoding.
struct FieldGroup {
    std::shared_ptr<const std::string> encoding;
    std::vector<Field> values;
    bool operator==(const FieldGroup& other) const;
};

template <class T>
    requires(std::integral<T> || std::floating_point<T>)
Object Object::number(T value)
{
    if constexpr (std::same_as<T, bool>) {
        return boolean(value);
    } else if constexpr (std::same_as<T, float>) {
        return real(value, 'f');
    } else if constexpr (std::floating_point<T>) {
        return real(static_cast<double>(value), 'd');
    } else if constexpr (std::is_unsigned_v<T> && sizeof(T) >= sizeof(std::int64_t)) {
        return value > static_cast<T>(INT64_MAX) ? real(static_cast<double>(value), 'd')
                                                 : integer(static_cast<std::int64_t>(value));
    } else {
        return integer(static_cast<std::int64_t>(value));
    }
}

}  // namespace plist::legacy
