// The binary reader on hand-made files: every object kind, and every kind of
// damage, which must give an error naming the byte offset.

#include "BinaryPlistBuilder.h"
#include "plist/PropertyList.h"

#include <gtest/gtest.h>

#include <cstring>

namespace plist {
namespace {

using test::BinaryPlistBuilder;

std::string raw(std::initializer_list<int> bytes)
{
    std::string out;
    for (int b : bytes) out += static_cast<char>(b);
    return out;
}

template <class T> std::string bitsOf(T value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof value);
    return BinaryPlistBuilder::bigEndian(bits, sizeof value);
}

Value readOk(const std::string& bytes)
{
    std::string error;
    auto value = readBinary(bytes, &error);
    EXPECT_TRUE(value.has_value()) << error;
    return value.value_or(Value());
}

void expectError(const std::string& bytes, std::uint64_t offset, const std::string& phrase)
{
    std::string error;
    EXPECT_FALSE(readBinary(bytes, &error).has_value());
    const std::string prefix = "offset " + std::to_string(offset) + ": ";
    EXPECT_EQ(error.rfind(prefix, 0), 0u) << "error: " << error << "\nexpected prefix: " << prefix;
    EXPECT_NE(error.find(phrase), std::string::npos) << "error: " << error << "\nexpected phrase: " << phrase;
}

std::uint64_t trailer(const std::string& bytes) { return bytes.size() - 32; }

TEST(BinaryPlistReader, ReadsEveryScalarKind)
{
    BinaryPlistBuilder b;
    std::vector<std::uint64_t> items = {
        b.add(raw({0x00})),
        b.add(raw({0x08})),
        b.add(raw({0x09})),
        b.add(raw({0x0F})),
        b.add(raw({0x10, 0xFF})),
        b.add(raw({0x11, 0x12, 0x34})),
        b.add(raw({0x12, 0xFF, 0xFF, 0xFF, 0xFF})),
        b.add(raw({0x13}) + BinaryPlistBuilder::bigEndian(static_cast<std::uint64_t>(-2), 8)),
        b.add(raw({0x14}) + std::string(8, '\0') + std::string(8, '\xFF')),
        b.add(raw({0x14}) + std::string(8, '\xFF') + raw({0x80}) + std::string(7, '\0')),
        b.add(raw({0x22}) + bitsOf(1.5f)),
        b.add(raw({0x23}) + bitsOf(0.1)),
        b.add(raw({0x33}) + bitsOf(730902896.0)),
        b.add(raw({0x43}) + "abc"),
        b.add(raw({0x80, 0x07})),
        b.add(raw({0x87}) + BinaryPlistBuilder::bigEndian(1ull << 40, 8)),
    };
    b.topObject = b.add(b.array(items));  // the root need not be object 0
    const Value root = readOk(b.build());
    const Array& a = root.array();
    ASSERT_EQ(a.size(), items.size());
    EXPECT_TRUE(a[0].isNull());
    EXPECT_EQ(a[1], Value(false));
    EXPECT_EQ(a[2], Value(true));
    EXPECT_TRUE(a[3].isNull()) << "fill reads as null";
    EXPECT_EQ(a[4].toInt(), 255);
    EXPECT_EQ(a[5].toInt(), 0x1234);
    EXPECT_EQ(a[6].toInt(), 4294967295ll) << "4-byte integers are unsigned";
    EXPECT_EQ(a[7].toInt(), -2) << "8-byte integers are signed";
    EXPECT_TRUE(a[8].isUnsignedInteger());
    EXPECT_EQ(a[8].toUnsigned(), UINT64_MAX);
    EXPECT_FALSE(a[9].isUnsignedInteger());
    EXPECT_EQ(a[9].toInt(), INT64_MIN) << "16 bytes hold a signed 128-bit number";
    EXPECT_TRUE(a[10].isSinglePrecision());
    EXPECT_EQ(a[10].toDouble(), 1.5);
    EXPECT_FALSE(a[11].isSinglePrecision());
    EXPECT_EQ(a[11].toDouble(), 0.1);
    EXPECT_TRUE(a[12].isDate());
    EXPECT_EQ(a[12].dateValue(), 730902896.0);
    EXPECT_EQ(a[13], Value::data("abc"));
    EXPECT_EQ(a[14], Value::uid(7));
    EXPECT_EQ(a[15], Value::uid(1ull << 40));
}

TEST(BinaryPlistReader, DecodesAsciiLatin1AndUtf16Strings)
{
    BinaryPlistBuilder b;
    const std::string forty(40, 'x');
    std::vector<std::uint64_t> items = {
        b.add(BinaryPlistBuilder::ascii("hello")),
        b.add(BinaryPlistBuilder::ascii(forty)),  // count after the marker
        b.add(raw({0x50})),
        b.add(raw({0x60})),
        b.add(BinaryPlistBuilder::utf16(u"caf\u00e9")),
        b.add(BinaryPlistBuilder::utf16(u"\u65e5\u672c")),
        b.add(BinaryPlistBuilder::utf16(u"a\U0001F600b")),  // a surrogate pair
        b.add(raw({0x54, 'c', 'a', 'f', 0xE9})),           // Latin-1 byte in an ASCII string
    };
    b.topObject = b.add(b.array(items));
    const Value root = readOk(b.build());
    const Array& a = root.array();
    ASSERT_EQ(a.size(), items.size());
    EXPECT_EQ(a[0].string(), "hello");
    EXPECT_EQ(a[1].string(), forty);
    EXPECT_TRUE(a[2].isString() && a[2].string().empty());
    EXPECT_TRUE(a[3].isString() && a[3].string().empty());
    EXPECT_EQ(a[4].string(), "caf\xC3\xA9");
    EXPECT_EQ(a[5].string(), "\xE6\x97\xA5\xE6\x9C\xAC");
    EXPECT_EQ(a[6].string(), "a\xF0\x9F\x98\x80" "b");
    EXPECT_EQ(a[7].string(), "caf\xC3\xA9");
}

TEST(BinaryPlistReader, ReadsSetsAsArraysAndUnsortedOrDuplicateKeys)
{
    BinaryPlistBuilder b;
    const auto one = b.add(raw({0x10, 1}));
    const auto two = b.add(raw({0x10, 2}));
    const auto three = b.add(raw({0x10, 3}));
    const auto keyB = b.add(BinaryPlistBuilder::ascii("b"));
    const auto keyA = b.add(BinaryPlistBuilder::ascii("a"));
    const auto keyE = b.add(BinaryPlistBuilder::utf16(u"\u00e9"));
    const auto dict = b.add(b.dictionary({keyB, keyA, keyE, keyA}, {one, two, three, three}));
    const auto set = b.add(BinaryPlistBuilder::marker(0xC, 2) + b.refs({one, two}));
    const auto orderedSet = b.add(BinaryPlistBuilder::marker(0xB, 1) + b.refs({three}));
    b.topObject = b.add(b.array({dict, set, orderedSet}));
    const Value root = readOk(b.build());
    const Array& a = root.array();
    ASSERT_EQ(a.size(), 3u);
    Dictionary expected{{"a", Value(3)}, {"b", Value(1)}, {"\xC3\xA9", Value(3)}};
    EXPECT_EQ(a[0], Value(expected)) << "keys are sorted on read; a later duplicate wins";
    EXPECT_EQ(a[1], Value(Array{Value(1), Value(2)}));
    EXPECT_EQ(a[2], Value(Array{Value(3)}));
}

TEST(BinaryPlistReader, SharesObjectsReferencedTwice)
{
    BinaryPlistBuilder b;
    const auto key = b.add(BinaryPlistBuilder::ascii("k"));
    const auto text = b.add(BinaryPlistBuilder::ascii("shared text"));
    const auto dict = b.add(b.dictionary({key}, {text}));
    b.topObject = b.add(b.array({dict, dict, text}));
    const Value root = readOk(b.build());
    const Array& a = root.array();
    ASSERT_EQ(a.size(), 3u);
    EXPECT_EQ(a[0].payloadIdentity(), a[1].payloadIdentity());
    EXPECT_EQ(a[0].find("k")->payloadIdentity(), a[2].payloadIdentity());
}

TEST(BinaryPlistReader, AcceptsThreeByteReferencesAndOffsets)
{
    BinaryPlistBuilder b(3, 3);
    const auto text = b.add(BinaryPlistBuilder::ascii("x"));
    b.topObject = b.add(b.array({text, text}));
    EXPECT_EQ(readOk(b.build()), Value(Array{Value("x"), Value("x")}));
}

TEST(BinaryPlistReader, RejectsBadHeadersAndTrailers)
{
    expectError("<?xml", 0, "not a binary property list");
    expectError("bplist15" + std::string(40, '\0'), 6, "unsupported binary property list version \"15\"");
    expectError("bplist00" + std::string(10, '\0'), 18, "truncated");

    auto valid = [] {
        BinaryPlistBuilder b;
        b.add(raw({0x09}));
        return b;
    };
    {
        auto b = valid();
        b.trailerOffsetSize = 0;
        const std::string bytes = b.build();
        expectError(bytes, trailer(bytes) + 6, "offset table entry size 0");
    }
    {
        auto b = valid();
        b.trailerRefSize = 9;
        const std::string bytes = b.build();
        expectError(bytes, trailer(bytes) + 7, "object reference size 9");
    }
    {
        auto b = valid();
        b.objectCount = 0;
        const std::string bytes = b.build();
        expectError(bytes, trailer(bytes) + 8, "object count is 0");
    }
    {
        auto b = valid();
        b.topObject = 1;
        const std::string bytes = b.build();
        expectError(bytes, trailer(bytes) + 16, "top object 1 is past the object count 1");
    }
    {
        auto b = valid();
        b.tableOffset = 1u << 20;
        const std::string bytes = b.build();
        expectError(bytes, trailer(bytes) + 24, "offset table offset 1048576");
    }
    {
        auto b = valid();
        b.objectCount = 1ull << 60;  // would be an 8-exabyte offset table
        const std::string bytes = b.build();
        expectError(bytes, trailer(bytes) + 8, "needs an offset table larger");
    }
    {
        auto b = valid();
        b.offsetOverride = {{0, 100}};
        const std::string bytes = b.build();
        expectError(bytes, trailer(bytes) - 1, "object 0 starts at offset 100, outside the object area");
    }
}

TEST(BinaryPlistReader, RejectsEveryTruncation)
{
    BinaryPlistBuilder b;
    const auto text = b.add(BinaryPlistBuilder::utf16(u"truncate me"));
    b.topObject = b.add(b.array({text, text}));
    const std::string bytes = b.build();
    ASSERT_TRUE(readBinary(bytes));
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        std::string error;
        EXPECT_FALSE(readBinary(std::string_view(bytes).substr(0, length), &error)) << "length " << length;
        EXPECT_EQ(error.rfind("offset ", 0), 0u) << error;
    }
}

TEST(BinaryPlistReader, RejectsBadReferencesAndCycles)
{
    {
        BinaryPlistBuilder b;
        b.add(raw({0x09}));
        b.topObject = b.add(b.array({5}));
        const std::string bytes = b.build();
        expectError(bytes, b.offsetOf(1) + 1, "object reference 5 is past the object count 2");
    }
    {
        BinaryPlistBuilder b;
        b.add(b.array({1, 0}));  // contains itself
        b.add(raw({0x09}));
        const std::string bytes = b.build();
        expectError(bytes, b.offsetOf(0) + 2, "reference cycle: object 0 contains itself");
    }
    {
        BinaryPlistBuilder b;  // 0 -> 1 -> 2 -> 1 through a dictionary
        const auto key = 3;
        b.add(b.array({1}));
        b.add(b.array({2}));
        b.add(b.dictionary({key}, {1}));
        b.add(BinaryPlistBuilder::ascii("k"));
        const std::string bytes = b.build();
        expectError(bytes, b.offsetOf(2) + 2, "reference cycle: object 1");
    }
    {
        BinaryPlistBuilder b;
        const auto number = b.add(raw({0x10, 1}));
        b.topObject = b.add(b.dictionary({number}, {number}));
        const std::string bytes = b.build();
        expectError(bytes, b.offsetOf(number), "dictionary key must be a string, found integer");
    }
}

TEST(BinaryPlistReader, RejectsCountsLargerThanTheFile)
{
    {
        BinaryPlistBuilder b;
        b.add(raw({0xAF, 0x13}) + BinaryPlistBuilder::bigEndian(1ull << 40, 8));
        const std::string bytes = b.build();
        expectError(bytes, 8, "array count 1099511627776 needs more than the 0 bytes left");
    }
    {
        BinaryPlistBuilder b;
        b.add(raw({0x4F, 0x11, 0x10, 0x00}) + "abc");
        const std::string bytes = b.build();
        expectError(bytes, 8, "data count 4096 needs more than the 3 bytes left");
    }
    {
        BinaryPlistBuilder b;
        b.add(raw({0x6F, 0x10, 0x04}) + "abcdef");  // 4 UTF-16 units need 8 bytes
        const std::string bytes = b.build();
        expectError(bytes, 8, "string count 4 needs more than the 6 bytes left");
    }
    {
        BinaryPlistBuilder b;
        b.add(raw({0x5F, 0x22, 0, 0, 0, 0}));
        const std::string bytes = b.build();
        expectError(bytes, 9, "count of string is not an integer");
    }
}

TEST(BinaryPlistReader, RejectsUnknownMarkersAndBadWidths)
{
    auto single = [](const std::string& object) {
        BinaryPlistBuilder b;
        b.add(object);
        return b.build();
    };
    expectError(single(raw({0x70})), 8, "unknown object marker 0x70");
    expectError(single(raw({0x05})), 8, "unknown object marker 0x05");
    expectError(single(raw({0x15}) + std::string(32, '\0')), 8, "integer of 32 bytes");
    expectError(single(raw({0x21, 0, 0})), 8, "real of 2 bytes");
    expectError(single(raw({0x32, 0, 0, 0, 0})), 8, "unknown object marker 0x32");
    expectError(single(raw({0x88}) + std::string(9, '\0')), 8, "uid of 9 bytes");
    expectError(single(raw({0x14, 0, 0, 0, 0, 0, 0, 0, 1}) + std::string(8, '\0')), 8, "does not fit in 64 bits");
    expectError(single(raw({0x13, 0, 0})), 8, "integer is truncated");
    expectError(single(raw({0x23, 0})), 8, "real is truncated");
    expectError(single(raw({0x33, 0})), 8, "date is truncated");
}

TEST(BinaryPlistReader, RejectsUnpairedSurrogates)
{
    auto single = [](const std::u16string& text) {
        BinaryPlistBuilder b;
        b.add(BinaryPlistBuilder::utf16(text));
        return b.build();
    };
    expectError(single(u"ab\xD800"), 9 + 4, "unpaired UTF-16 surrogate 0xD800");
    expectError(single(u"\xDC00z"), 9, "unpaired UTF-16 surrogate 0xDC00");
    expectError(single(u"x\xD83Dy"), 9 + 2, "unpaired UTF-16 surrogate 0xD83D");
}

// A chain of `levels` arrays, each holding the next; the innermost is empty.
std::string nestedArrays(int levels)
{
    BinaryPlistBuilder b(2, 4);
    for (int i = 0; i < levels - 1; ++i) b.add(b.array({static_cast<std::uint64_t>(i + 1)}));
    b.add(b.array({}));
    return b.build();
}

TEST(BinaryPlistReader, LimitsNesting)
{
    EXPECT_TRUE(readBinary(nestedArrays(kMaxNestingDepth)));
    const std::string tooDeep = nestedArrays(kMaxNestingDepth + 1);
    expectError(tooDeep, 8 + 3 * kMaxNestingDepth, "nested deeper than 512 levels");
}

TEST(BinaryPlistReader, LimitsNestingThroughSharedSubtrees)
{
    // The root holds a chain of 300 arrays twice: once at the top, where it
    // fits, and once under another chain of 300, where sharing must not hide
    // that the value is 601 levels deep.
    // Objects: 0 = root, 1..300 = chain A, 301..600 = chain B ending in A.
    const std::uint64_t first = 1;
    BinaryPlistBuilder c(2, 4);
    c.add(c.array({first, 301}));
    for (std::uint64_t i = 1; i < 300; ++i) c.add(c.array({i + 1}));
    c.add(c.array({}));
    for (std::uint64_t i = 301; i < 600; ++i) c.add(c.array({i + 1}));
    c.add(c.array({first}));
    const std::string bytes = c.build();
    std::string error;
    EXPECT_FALSE(readBinary(bytes, &error));
    EXPECT_NE(error.find("nested deeper than 512 levels"), std::string::npos) << error;
}

TEST(BinaryPlistReader, RejectsOverlappingObjects)
{
    // Ten table entries all point at one array of 200 references: ten
    // "different" arrays from the same bytes would read 2000 references.
    BinaryPlistBuilder b;
    const std::uint64_t item = b.add(raw({0x09}));
    const std::uint64_t big = b.add(b.array(std::vector<std::uint64_t>(200, item)));
    std::vector<std::uint64_t> aliases;
    for (int i = 0; i < 10; ++i) aliases.push_back(b.add(raw({0x09})));
    b.topObject = b.add(b.array(aliases));
    std::string bytes = b.build();
    // Point every alias's offset-table entry at the big array.
    const std::uint64_t table = bytes.size() - 32 - (aliases.size() + 3);
    for (std::uint64_t ref : aliases) bytes[table + ref] = static_cast<char>(b.offsetOf(big));
    std::string error;
    EXPECT_FALSE(readBinary(bytes, &error));
    EXPECT_NE(error.find("objects overlap: the containers' references"), std::string::npos) << error;
}

TEST(BinaryPlistReader, RejectsOverlappingData)
{
    // Ten table entries point at one 200-byte data object: ten copies of it
    // from a file that holds one would let a small file fill the memory.
    BinaryPlistBuilder b;
    const std::uint64_t blob = b.add(BinaryPlistBuilder::marker(0x4, 200) + std::string(200, 'd'));
    std::vector<std::uint64_t> aliases;
    for (int i = 0; i < 10; ++i) aliases.push_back(b.add(raw({0x09})));
    b.topObject = b.add(b.array(aliases));
    std::string bytes = b.build();
    const std::uint64_t table = bytes.size() - 32 - (aliases.size() + 2);
    for (std::uint64_t ref : aliases) bytes[table + ref] = static_cast<char>(b.offsetOf(blob));
    std::string error;
    EXPECT_FALSE(readBinary(bytes, &error));
    EXPECT_NE(error.find("objects overlap: their bytes add up"), std::string::npos) << error;
}

TEST(BinaryPlistReader, SharesALongKeyBetweenAllItsDictionaries)
{
    // A 100 KB key named by 500 dictionaries: copied, 50 MB out of a file of
    // about 100 KB; shared, its length once.
    BinaryPlistBuilder b(2, 4);
    const std::uint64_t key = b.add(BinaryPlistBuilder::ascii(std::string(100000, 'k')));
    const std::uint64_t value = b.add(raw({0x09}));
    std::vector<std::uint64_t> dicts;
    for (int i = 0; i < 500; ++i) dicts.push_back(b.add(b.dictionary({key}, {value})));
    b.topObject = b.add(b.array(dicts));
    const Value root = readOk(b.build());
    ASSERT_EQ(root.size(), 500u);
    const char* text = root.array().front().dictionary().begin()->first.data();
    for (const Value& dict : root.array()) {
        ASSERT_EQ(dict.size(), 1u);
        EXPECT_EQ(dict.dictionary().begin()->first.data(), text);
    }
}

TEST(BinaryPlistReader, RejectsKeysOverlappingOneString)
{
    // Ten table entries point at one 200-byte string, each used once as a
    // key: read apart, they would be ten copies of a string the file holds
    // once.
    BinaryPlistBuilder b;
    const std::uint64_t text = b.add(BinaryPlistBuilder::ascii(std::string(200, 'k')));
    std::vector<std::uint64_t> aliases, values;
    for (int i = 0; i < 10; ++i) aliases.push_back(b.add(raw({0x09})));
    for (int i = 0; i < 10; ++i) values.push_back(b.add(raw({0x08})));
    b.topObject = b.add(b.dictionary(aliases, values));
    std::string bytes = b.build();
    const std::uint64_t table = bytes.size() - 32 - (1 + aliases.size() + values.size() + 1);
    for (std::uint64_t ref : aliases) bytes[table + ref] = static_cast<char>(b.offsetOf(text));
    std::string error;
    EXPECT_FALSE(readBinary(bytes, &error));
    EXPECT_NE(error.find("objects overlap: the keys' bytes"), std::string::npos) << error;
}

TEST(BinaryPlistReader, ReadsAnEmptyContainerReferencedManyTimesOnce)
{
    // Parsed again for each reference, the empty containers' bytes would add
    // up to more than the file holds and read as overlapping objects.
    BinaryPlistBuilder b;
    const std::uint64_t emptyDict = b.add(BinaryPlistBuilder::marker(0xD, 0));
    const std::uint64_t emptyArray = b.add(BinaryPlistBuilder::marker(0xA, 0));
    std::vector<std::uint64_t> items;
    for (int i = 0; i < 100; ++i) {
        items.push_back(emptyDict);
        items.push_back(emptyArray);
    }
    b.topObject = b.add(b.array(items));
    const Value root = readOk(b.build());
    ASSERT_EQ(root.size(), 200u);
    EXPECT_EQ(root.array()[198], Value::emptyDictionary());
    EXPECT_EQ(root.array()[199], Value::emptyArray());
}

}  // namespace
}  // namespace plist
