// The typedstream codec against the byte examples of the format notes, and
// round trips of new data in the shapes Quartz Composer 4 writes.

#include "LegacyArchiveTestSupport.h"

#include <algorithm>
#include <bit>

namespace plist::legacy {
namespace {

using test::decodeOk;
using test::wireBytes;

// { "position": NSValue(NSPoint 643, 868) }, big-endian.
const std::string kWorkedExample = wireBytes(R"(
    04 0B "typedstream" 81 03 E8
    84 01 "@" 84
      84 84 13 "NSMutableDictionary" 00 84 84 0C "NSDictionary" 00 84 84 08 "NSObject" 00 85
      84 01 "i" 01
      92 84 84 84 08 "NSString" 01 95 84 01 "+" 08 "position" 86
      92 84 84 84 07 "NSValue" 00 95 84 01 "*" 84 84 0D "{_NSPoint=ff}" 9B 81 02 83 81 03 64 86
    86)");

// A timeline track colour: calibrated RGBA (0, 0.498, 0, 1), little-endian.
const std::string kTrackColor = wireBytes(R"(
    04 0B "streamtyped" 81 E8 03 84 01 "@" 84
    84 84 07 "NSColor" 00 84 84 08 "NSObject" 00 85
    84 01 "c" 01 84 04 "ffff" 00 83 FF FE FE 3E 00 01 86)");

// The value bytes of an NSNumber written by encodeNew: what follows its
// type encoding (a new C string) and the label referring back to it (97).
std::string numberTail(const Object& number)
{
    const std::string bytes = encodeNew(number);
    const std::string label = std::string("\x84\x84\x01") + number.numberType() + "\x97";
    const std::size_t at = bytes.find(label);
    return at == std::string::npos ? std::string() : bytes.substr(at + label.size());
}

TEST(LegacyArchive, DecodesTheWorkedExample)
{
    const Archive archive = decodeOk(kWorkedExample);
    EXPECT_EQ(archive.order, ByteOrder::BigEndian);
    EXPECT_EQ(archive.systemVersion, 1000);
    EXPECT_EQ(archive.root.describe(), R"({"position": (643, 868)})");
    EXPECT_EQ(archive.root.className(), "NSMutableDictionary");
    EXPECT_TRUE(archive.root.isMutable());

    const Object* position = archive.root.find("position");
    ASSERT_NE(position, nullptr);
    EXPECT_TRUE(position->isPoint());
    EXPECT_EQ(position->encoding(), "{_NSPoint=ff}");
    EXPECT_EQ(position->toPoint(), (Point{643, 868}));
    EXPECT_EQ(position->classChain(), (std::vector<ArchivedClass>{{"NSValue", 0}, {"NSObject", 0}}));
    EXPECT_EQ(archive.root.entries().front().first.classChain(),
              (std::vector<ArchivedClass>{{"NSString", 1}, {"NSObject", 0}}));

    EXPECT_EQ(encode(archive), kWorkedExample);
}

TEST(LegacyArchive, WritesAKnownClassAndFieldLabelAsReferences)
{
    // The second string refers back to class NSString (97) and label "+" (98).
    const std::string expected = wireBytes(R"(
        04 0B "typedstream" 81 03 E8
        84 01 "@" 84
          84 84 13 "NSMutableDictionary" 00 84 84 0C "NSDictionary" 00 84 84 08 "NSObject" 00 85
          84 01 "i" 01
          92 84 84 84 08 "NSString" 01 95 84 01 "+" 04 "name" 86
          92 84 97 98 06 "Enable" 86
        86)");
    const Archive archive{ByteOrder::BigEndian, 1000, Object::dictionary({{"name", Object::string("Enable")}})};
    EXPECT_EQ(encode(archive), expected);
    EXPECT_EQ(decodeOk(expected).root.value("name").toString(), "Enable");
}

TEST(LegacyArchive, DecodesTheTrackColourExample)
{
    const Archive archive = decodeOk(kTrackColor);
    ASSERT_TRUE(archive.root.isColor());
    EXPECT_EQ(archive.root.colorKind(), ColorKind::CalibratedRgba);
    const double green = std::bit_cast<float>(0x3EFEFEFFu);
    EXPECT_EQ(archive.root.components(), (std::vector<double>{0, green, 0, 1}));
    EXPECT_EQ(encodeColor(0, green, 0, 1), kTrackColor);
    EXPECT_EQ(encodeColor(0, 127.0 / 255.0, 0), kTrackColor);
}

TEST(LegacyArchive, WritesANewNumberInFull)
{
    EXPECT_EQ(encodeNew(Object::number(2.0)), wireBytes(R"(
        04 0B "streamtyped" 81 E8 03 84 01 "@" 84
        84 84 08 "NSNumber" 00 84 84 07 "NSValue" 00 84 84 08 "NSObject" 00 85
        84 01 "*" 84 84 01 "d" 97 02 86)"));
}

TEST(LegacyArchive, WritesNumbersInTheShortestForm)
{
    struct Case {
        Object number;
        const char* tail;
    };
    const Case cases[] = {
        {Object::number(0), "00 86"},
        {Object::number(127), "7F 86"},
        {Object::number(-110), "92 86"},
        {Object::number(-111), "81 91 FF 86"},
        {Object::number(128), "81 80 00 86"},
        {Object::number(-32768), "81 00 80 86"},
        {Object::number(32768), "82 00 80 00 00 86"},
        {Object::number(-100000), "82 60 79 FE FF 86"},
        {Object::number(2.0), "02 86"},           // integral reals as integers
        {Object::number(-3.0f), "FD 86"},
        {Object::number(0.5), "83 00 00 00 00 00 00 E0 3F 86"},
        {Object::number(0.5f), "83 00 00 00 3F 86"},
        {Object::number(-0.0), "83 00 00 00 00 00 00 00 80 86"},  // keeps its sign
        {Object::number(5e9), "83 00 00 00 20 5F A0 F2 41 86"},   // beyond 32 bits
        {Object::boolean(true), "01 86"},         // chars are raw bytes
        {Object::number('c', -1), "FF 86"},
        {Object::number('S', 40000), "81 40 9C 86"},
        {Object::number('I', 4294967295.0), "FF 86"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.number.describe() + " of type " + c.number.numberType());
        EXPECT_EQ(numberTail(c.number), wireBytes(c.tail));
        const Archive back = decodeOk(encodeNew(c.number));
        EXPECT_EQ(back.root, c.number);
    }
}

TEST(LegacyArchive, PicksNumberTypesLikeCocoa)
{
    EXPECT_EQ(Object::number(5).numberType(), 'q');
    EXPECT_EQ(Object::number(std::int64_t{5'000'000'000}).numberType(), 'd');
    EXPECT_EQ(Object::number(5'000'000'000ull).toDouble(), 5e9);
    EXPECT_EQ(Object::number(1.5f).numberType(), 'f');
    EXPECT_EQ(Object::number(1.5).numberType(), 'd');
    EXPECT_EQ(Object::boolean(true).numberType(), 'c');
    EXPECT_EQ(Object::number('C', 300).toInt(), 255);
    EXPECT_EQ(Object::number('s', -1e6).toInt(), -32768);
    EXPECT_EQ(Object::number('i', 2.9).toInt(), 2);
    EXPECT_TRUE(Object::number('v', 1).isNil());
}

Object sampleUserInfo()
{
    Object note = Object::dictionary({
        {"color", Object::color(ColorKind::DeviceRgba, {1, 1, 0.5, 1})},
        {"string", Object::string("Größe → 日本語 ✓", Mutability::Mutable)},
        {"bounds", Object::rect(-12.5, 40, 200, 100.25)},
    });
    return Object::dictionary({
        {"name", Object::string("Ümlaut patch")},
        {"position", Object::point(643, -868.75)},
        {"scrolling", Object::structValue("{_NSPoint=ff}", {-1.5, 70000})},
        {"zoomFactor", Object::number(1.25f)},
        {"integralFloat", Object::number(2.0f)},
        {"small", Object::number(-5)},
        {"twoBytes", Object::number(-300)},
        {"fourBytes", Object::number(70000)},
        {"description", Object::string("")},
        {"noteList", Object::array({note, note})},
        {"nested", Object::array({Object::array({Object::array({}), Object::number(1)}, Mutability::Immutable)})},
        {"menu", Object::array({Object::string("Top Left"), Object::string("-"), Object::string("Center")})},
        {"blob", Object::data(std::string("\0\x01\xFFtiff", 7))},
        {"named", Object::namedColor("System", "controlColor", Object::color(ColorKind::DeviceWhite, {0.5, 1}))},
        {"size", Object::size(320, 240)},
        {"nothing", Object()},
    }, Mutability::Immutable);
}

TEST(LegacyArchive, RoundTripsNewDataInBothByteOrders)
{
    const Object original = sampleUserInfo();
    for (ByteOrder order : {ByteOrder::LittleEndian, ByteOrder::BigEndian}) {
        const std::string bytes = encode(Archive{order, 1000, original});
        const Archive back = decodeOk(bytes);
        EXPECT_EQ(back.order, order);
        EXPECT_EQ(back.root, original) << back.root.describe();
        EXPECT_EQ(encode(back), bytes);
    }
    const Archive back = decodeOk(encodeNew(original));
    EXPECT_EQ(back.root.value("name").toString(), "Ümlaut patch");
    EXPECT_EQ(back.root.value("position").toPoint(), (Point{643, -868.75}));
    EXPECT_EQ(back.root.value("scrolling").toPoint(), (Point{-1.5, 70000}));
    EXPECT_EQ(back.root.value("zoomFactor").toDouble(), 1.25);
    EXPECT_EQ(back.root.value("fourBytes").toInt(), 70000);
    EXPECT_EQ(back.root.value("size").toSize(), (Size{320, 240}));
    EXPECT_EQ(back.root.value("blob").dataBytes(), std::string("\0\x01\xFFtiff", 7));
    EXPECT_EQ(back.root.value("named").colorName(), "controlColor");
    EXPECT_EQ(back.root.value("named").namedColorFallback().components(), (std::vector<double>{0.5, 1}));
    const Object note = back.root.value("noteList").elements().at(0);
    EXPECT_EQ(note.value("string").toString(), "Größe → 日本語 ✓");
    EXPECT_TRUE(note.value("string").isMutable());
    EXPECT_EQ(note.value("bounds").toRect(), (Rect{-12.5, 40, 200, 100.25}));
    EXPECT_FALSE(back.root.isMutable());
    EXPECT_TRUE(back.root.find("nothing") && back.root.find("nothing")->isNil());
}

TEST(LegacyArchive, WritesAnObjectReachedTwiceOnceAndKeepsItShared)
{
    const Object separator = Object::string("-");
    const Object menu = Object::array({Object::string("Z"), separator, Object::string("Z"), separator});
    const std::string bytes = encodeNew(menu);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '-'), 1);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 'Z'), 2);  // equal but distinct objects

    Archive back = decodeOk(bytes);
    const auto& elements = back.root.elements();
    EXPECT_TRUE(elements[1].isSameObject(elements[3]));
    EXPECT_FALSE(elements[0].isSameObject(elements[2]));

    // Writing to a copy leaves the decoded tree alone.
    Object copy = back.root;
    copy.append(Object::string("B"));
    EXPECT_EQ(back.root.size(), 4u);
    EXPECT_EQ(copy.size(), 5u);
    EXPECT_EQ(encode(back), bytes);
}

TEST(LegacyArchiveObject, SetReplacesInPlaceOrAppends)
{
    Object info = Object::dictionary({{"name", Object::string("a")}, {"position", Object::point(1, 2)}});
    const Object before = info;
    info.set("name", Object::string("b"));
    info.set("zoomFactor", Object::number(2.0f));
    ASSERT_EQ(info.size(), 3u);
    EXPECT_EQ(info.entries()[0].first.toString(), "name");
    EXPECT_EQ(info.entries()[0].second.toString(), "b");
    EXPECT_EQ(info.entries()[2].first.toString(), "zoomFactor");
    EXPECT_EQ(before.value("name").toString(), "a");  // copies do not see the write

    EXPECT_TRUE(info.remove("position"));
    EXPECT_FALSE(info.remove("position"));
    EXPECT_EQ(info.find("position"), nullptr);
    EXPECT_TRUE(info.value("position").isNil());

    Object fresh;
    fresh.set("name", Object::string("x"));
    EXPECT_EQ(fresh.className(), "NSMutableDictionary");
    Object list = Object::string("not a list");
    list.append(Object::number(1));
    EXPECT_EQ(list.className(), "NSMutableArray");
}

TEST(LegacyArchiveObject, ReadersGiveNeutralValuesForOtherKinds)
{
    EXPECT_EQ(Object::string("3").toDouble(), 0);
    EXPECT_EQ(Object::number(3).toString(), "");
    EXPECT_EQ(Object::number(3).toPoint(), Point{});
    EXPECT_TRUE(Object::number(3).entries().empty());
    EXPECT_TRUE(Object().elements().empty());
    EXPECT_TRUE(Object().classChain().empty());
    const Object range = Object::structValue("{_NSRange=II}", {1, 2});
    EXPECT_TRUE(range.isValue());
    EXPECT_FALSE(range.isPoint());
    EXPECT_EQ(range.toPoint(), Point{});
    EXPECT_TRUE(Object::structValue("{_NSPoint=ff}", {0.1, 2}).isPoint());
    EXPECT_EQ(Object::structValue("{_NSPoint=ff}", {0.1, 2}).toPoint().x, static_cast<double>(0.1f));
    EXPECT_TRUE(Object::structValue("{NSPoint=dd}", {1, 2}).isPoint());
    EXPECT_TRUE(Object::structValue("{x=@}", {1}).isNil());
    EXPECT_TRUE(Object::structValue("{CGPoint=dd}", {1}).isNil());
    EXPECT_TRUE(Object::color(ColorKind::DeviceWhite, {1, 2, 3}).isNil());
    EXPECT_TRUE(Object::color(ColorKind::Named, {}).isNil());
}

TEST(LegacyArchiveObject, ComparesContentAndClasses)
{
    EXPECT_EQ(Object::string("a"), Object::string("a"));
    EXPECT_NE(Object::string("a"), Object::string("a", Mutability::Mutable));
    EXPECT_NE(Object::number(1.0f), Object::number(1.0));
    EXPECT_NE(Object::point(1, 2), Object::structValue("{_NSPoint=ff}", {1, 2}));
    EXPECT_EQ(sampleUserInfo(), sampleUserInfo());
    EXPECT_NE(Object(), Object::string(""));
}

}  // namespace
}  // namespace plist::legacy
