#include "plist/LegacyArchiveObject.h"

#include "plist/LegacyArchiveClasses.h"
#include "plist/LegacyArchiveNode.h"
#include "plist/LegacyArchiveTypeEncoding.h"

#include <cmath>
#include <limits>

namespace plist::legacy {

using detail::Node;

namespace {

const std::string kEmptyString;
const std::vector<double> kNoComponents;
const std::vector<Object> kNoElements;
const std::vector<Entry> kNoEntries;
const std::vector<FieldGroup> kNoGroups;
const std::vector<ArchivedClass> kNoClasses;

std::shared_ptr<Node> makeNode(ObjectKind kind, std::string_view className)
{
    auto node = std::make_shared<Node>();
    node->kind = kind;
    node->chain = detail::standardChain(className);
    return node;
}

std::string_view structName(const std::string& encoding)
{
    if (encoding.empty() || encoding.front() != '{') return {};
    const auto equals = encoding.find('=');
    return equals == std::string::npos ? std::string_view() : std::string_view(encoding).substr(1, equals - 1);
}

bool isGeometry(const Object& object, std::string_view cgName, std::string_view nsName, std::size_t count)
{
    if (!object.isValue() || object.components().size() != count) return false;
    const std::string_view name = structName(object.encoding());
    return name == cgName || name == nsName || (name.size() > 1 && name.front() == '_' && name.substr(1) == nsName);
}

bool sameNumber(double a, double b)
{
    return a == b ? std::signbit(a) == std::signbit(b) : (std::isnan(a) && std::isnan(b));
}

bool sameNumbers(const std::vector<double>& a, const std::vector<double>& b)
{
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (!sameNumber(a[i], b[i])) return false;
    return true;
}

bool sameText(const std::shared_ptr<const std::string>& a, const std::shared_ptr<const std::string>& b)
{
    if (a == b) return true;
    return a && b && *a == *b;
}

bool sameNodes(const Node& a, const Node& b)
{
    if (a.kind != b.kind) return false;
    if (a.chain != b.chain && (!a.chain || !b.chain || *a.chain != *b.chain)) return false;
    return a.text == b.text && sameText(a.encoding, b.encoding) && sameNumbers(a.components, b.components) &&
           a.colorKind == b.colorKind && a.elements == b.elements && a.entries == b.entries && a.groups == b.groups;
}

}  // namespace

Object Object::string(std::string_view utf8, Mutability mutability)
{
    auto node = makeNode(ObjectKind::String, mutability == Mutability::Mutable ? "NSMutableString" : "NSString");
    node->text = std::string(utf8);
    return Object(std::move(node));
}

Object Object::boolean(bool value)
{
    return number('c', value ? 1.0 : 0.0);
}

Object Object::integer(std::int64_t value)
{
    if (value < std::numeric_limits<std::int32_t>::min() || value > std::numeric_limits<std::int32_t>::max())
        return number('d', static_cast<double>(value));
    return number('q', static_cast<double>(value));
}

Object Object::real(double value, char objcType)
{
    return number(objcType, value);
}

Object Object::number(char objcType, double value)
{
    const auto kind = detail::numberKindFor(objcType);
    if (!kind) return {};
    auto node = makeNode(ObjectKind::Number, "NSNumber");
    node->encoding = std::make_shared<const std::string>(1, objcType);
    node->components = {detail::normalizeNumber(*kind, value)};
    return Object(std::move(node));
}

Object Object::point(double x, double y)
{
    return structValue("{CGPoint=dd}", {x, y});
}

Object Object::size(double width, double height)
{
    return structValue("{CGSize=dd}", {width, height});
}

Object Object::rect(double x, double y, double width, double height)
{
    return structValue("{CGRect={CGPoint=dd}{CGSize=dd}}", {x, y, width, height});
}

Object Object::structValue(std::string_view encoding, std::vector<double> components)
{
    const auto parsed = detail::parseTypeEncoding(encoding, nullptr);
    if (!parsed || !parsed->numbersOnly || parsed->numberCount != components.size()) return {};
    std::size_t index = 0;
    auto normalize = [&](const detail::TypeNode& leaf) {
        const std::uint32_t repeat = leaf.kind == detail::TypeKind::ByteArray ? leaf.count : 1;
        const detail::TypeKind kind = leaf.kind == detail::TypeKind::ByteArray ? leaf.members.front().kind : leaf.kind;
        for (std::uint32_t i = 0; i < repeat; ++i, ++index)
            components[index] = detail::normalizeNumber(kind, components[index]);
        return true;
    };
    detail::forEachLeaf(*parsed, normalize);
    auto node = makeNode(ObjectKind::Value, "NSValue");
    node->encoding = std::make_shared<const std::string>(encoding);
    node->components = std::move(components);
    return Object(std::move(node));
}

Object Object::array(std::vector<Object> elements, Mutability mutability)
{
    auto node = makeNode(ObjectKind::Array, mutability == Mutability::Mutable ? "NSMutableArray" : "NSArray");
    node->elements = std::move(elements);
    return Object(std::move(node));
}

Object Object::dictionary(std::initializer_list<std::pair<std::string_view, Object>> entries, Mutability mutability)
{
    std::vector<Entry> list;
    list.reserve(entries.size());
    for (const auto& [key, value] : entries) list.emplace_back(string(key), value);
    return dictionary(std::move(list), mutability);
}

Object Object::dictionary(std::vector<Entry> entries, Mutability mutability)
{
    auto node = makeNode(ObjectKind::Dictionary,
                         mutability == Mutability::Mutable ? "NSMutableDictionary" : "NSDictionary");
    node->entries = std::move(entries);
    return Object(std::move(node));
}

Object Object::color(double red, double green, double blue, double alpha)
{
    return color(ColorKind::CalibratedRgba, {red, green, blue, alpha});
}

Object Object::color(ColorKind kind, std::vector<double> components)
{
    static constexpr std::size_t kComponentCounts[] = {0, 4, 4, 2, 2, 5};
    const auto index = static_cast<std::size_t>(kind);
    if (index < 1 || index > 5 || components.size() != kComponentCounts[index]) return {};
    auto node = makeNode(ObjectKind::Color, "NSColor");
    node->colorKind = kind;
    for (double& c : components) c = detail::normalizeNumber(detail::TypeKind::Float, c);
    node->components = std::move(components);
    return Object(std::move(node));
}

Object Object::namedColor(std::string_view catalog, std::string_view name, Object fallback)
{
    auto node = makeNode(ObjectKind::Color, "NSColor");
    node->colorKind = ColorKind::Named;
    node->elements = {string(catalog), string(name), std::move(fallback)};
    return Object(std::move(node));
}

Object Object::data(std::string bytes, Mutability mutability)
{
    auto node = makeNode(ObjectKind::Data, mutability == Mutability::Mutable ? "NSMutableData" : "NSData");
    node->text = std::move(bytes);
    return Object(std::move(node));
}

ObjectKind Object::kind() const
{
    return node_ ? node_->kind : ObjectKind::Nil;
}

bool Object::isPoint() const
{
    return isGeometry(*this, "CGPoint", "NSPoint", 2);
}

bool Object::isSize() const
{
    return isGeometry(*this, "CGSize", "NSSize", 2);
}

bool Object::isRect() const
{
    return isGeometry(*this, "CGRect", "NSRect", 4);
}

const std::vector<ArchivedClass>& Object::classChain() const
{
    return node_ && node_->chain ? *node_->chain : kNoClasses;
}

std::string_view Object::className() const
{
    const auto& chain = classChain();
    return chain.empty() ? std::string_view() : std::string_view(chain.front().name);
}

bool Object::isMutable() const
{
    const auto* known = detail::findKnownClass(className());
    return known && known->isMutable;
}

const std::string& Object::toString() const
{
    return isString() ? node_->text : kEmptyString;
}

double Object::toDouble() const
{
    return isNumber() && !node_->components.empty() ? node_->components.front() : 0.0;
}

std::int64_t Object::toInt() const
{
    const double d = toDouble();
    if (std::isnan(d)) return 0;
    if (d >= 9.2233720368547758e18) return std::numeric_limits<std::int64_t>::max();
    if (d <= -9.2233720368547758e18) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(d);
}

bool Object::toBool() const
{
    return toDouble() != 0.0;
}

char Object::numberType() const
{
    return isNumber() && node_->encoding && node_->encoding->size() == 1 ? node_->encoding->front() : '\0';
}

Point Object::toPoint() const
{
    if (!isPoint()) return {};
    return {node_->components[0], node_->components[1]};
}

Size Object::toSize() const
{
    if (!isSize()) return {};
    return {node_->components[0], node_->components[1]};
}

Rect Object::toRect() const
{
    if (!isRect()) return {};
    const auto& c = node_->components;
    return {c[0], c[1], c[2], c[3]};
}

const std::string& Object::encoding() const
{
    return (isNumber() || isValue()) && node_->encoding ? *node_->encoding : kEmptyString;
}

const std::vector<double>& Object::components() const
{
    return isNumber() || isValue() || isColor() ? node_->components : kNoComponents;
}

const std::vector<Object>& Object::elements() const
{
    return isArray() ? node_->elements : kNoElements;
}

void Object::append(Object element)
{
    if (!isArray()) *this = array({});
    detached().elements.push_back(std::move(element));
}

const std::vector<Entry>& Object::entries() const
{
    return isDictionary() ? node_->entries : kNoEntries;
}

const Object* Object::find(std::string_view key) const
{
    for (const Entry& entry : entries())
        if (entry.first.isString() && entry.first.toString() == key) return &entry.second;
    return nullptr;
}

Object Object::value(std::string_view key) const
{
    const Object* found = find(key);
    return found ? *found : Object();
}

void Object::set(std::string_view key, Object value)
{
    if (!isDictionary()) *this = dictionary(std::vector<Entry>{});
    for (Entry& entry : detached().entries) {
        if (entry.first.isString() && entry.first.toString() == key) {
            entry.second = std::move(value);
            return;
        }
    }
    node_->entries.emplace_back(string(key), std::move(value));
}

bool Object::remove(std::string_view key)
{
    if (!find(key)) return false;
    auto& list = detached().entries;
    for (auto it = list.begin(); it != list.end(); ++it) {
        if (it->first.isString() && it->first.toString() == key) {
            list.erase(it);
            return true;
        }
    }
    return false;
}

std::size_t Object::size() const
{
    switch (kind()) {
    case ObjectKind::Array: return node_->elements.size();
    case ObjectKind::Dictionary: return node_->entries.size();
    case ObjectKind::Data: return node_->text.size();
    default: return 0;
    }
}

ColorKind Object::colorKind() const
{
    return isColor() ? node_->colorKind : ColorKind::CalibratedRgba;
}

const std::string& Object::colorCatalog() const
{
    return colorKind() == ColorKind::Named && !node_->elements.empty() ? node_->elements[0].toString()
                                                                       : kEmptyString;
}

const std::string& Object::colorName() const
{
    return colorKind() == ColorKind::Named && node_->elements.size() > 1 ? node_->elements[1].toString()
                                                                         : kEmptyString;
}

Object Object::namedColorFallback() const
{
    return colorKind() == ColorKind::Named && node_->elements.size() > 2 ? node_->elements[2] : Object();
}

const std::string& Object::dataBytes() const
{
    return isData() ? node_->text : kEmptyString;
}

const std::vector<FieldGroup>& Object::fieldGroups() const
{
    return isOpaque() ? node_->groups : kNoGroups;
}

bool Object::operator==(const Object& other) const
{
    if (node_ == other.node_) return true;
    if (!node_ || !other.node_) return false;
    return sameNodes(*node_, *other.node_);
}

Node& Object::detached()
{
    if (node_.use_count() > 1) node_ = std::make_shared<Node>(*node_);
    return *node_;
}

bool Field::operator==(const Field& other) const
{
    return kind == other.kind && sameNumber(number, other.number) && object == other.object &&
           sameText(text, other.text);
}

bool FieldGroup::operator==(const FieldGroup& other) const
{
    return sameText(encoding, other.encoding) && values == other.values;
}

}  // namespace plist::legacy
