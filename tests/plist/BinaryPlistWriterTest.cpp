// The binary writer: exact encodings, uniquing, widths, and what it refuses.

#include "plist/PropertyList.h"

#include <gtest/gtest.h>

#include <cmath>

namespace plist {
namespace {

std::string hexBytes(std::string_view bytes)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : bytes) {
        if (!out.empty()) out += ' ';
        out += digits[c >> 4];
        out += digits[c & 15];
    }
    return out;
}

std::string written(const Value& value)
{
    std::string error;
    auto bytes = writeBinary(value, &error);
    EXPECT_TRUE(bytes.has_value()) << error;
    return bytes.value_or("");
}

struct Trailer {
    unsigned offsetSize, refSize;
    std::uint64_t objectCount, topObject, tableOffset;
};

Trailer trailerOf(const std::string& bytes)
{
    auto be = [&](std::size_t at) {
        std::uint64_t v = 0;
        for (int i = 0; i < 8; ++i) v = (v << 8) | static_cast<unsigned char>(bytes[at + i]);
        return v;
    };
    const std::size_t t = bytes.size() - 32;
    return {static_cast<unsigned char>(bytes[t + 6]), static_cast<unsigned char>(bytes[t + 7]), be(t + 8), be(t + 16), be(t + 24)};
}

// The encoding of a value written as the only object of a file.
std::string objectBytes(const Value& value)
{
    const std::string bytes = written(value);
    return hexBytes(std::string_view(bytes).substr(8, trailerOf(bytes).tableOffset - 8));
}

Value roundTrip(const Value& value)
{
    std::string error;
    auto bytes = writeBinary(value, &error);
    EXPECT_TRUE(bytes.has_value()) << error;
    auto back = readBinary(bytes.value_or(""), &error);
    EXPECT_TRUE(back.has_value()) << error;
    return back.value_or(Value());
}

TEST(BinaryPlistWriter, WritesTheExactLayout)
{
    const std::string bytes = written(Value(Array{Value(1), Value("a")}));
    EXPECT_EQ(hexBytes(bytes),
              "62 70 6C 69 73 74 30 30 "  // bplist00
              "A2 01 02 10 01 51 61 "     // root first, then its items in order
              "08 0B 0D "                 // offset table
              "00 00 00 00 00 00 01 01 00 00 00 00 00 00 00 03 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 0F");
}

TEST(BinaryPlistWriter, EncodesScalarsInTheirSmallestForm)
{
    EXPECT_EQ(objectBytes(Value(0)), "10 00");
    EXPECT_EQ(objectBytes(Value(255)), "10 FF");
    EXPECT_EQ(objectBytes(Value(256)), "11 01 00");
    EXPECT_EQ(objectBytes(Value(65536)), "12 00 01 00 00");
    EXPECT_EQ(objectBytes(Value(4294967296ll)), "13 00 00 00 01 00 00 00 00");
    EXPECT_EQ(objectBytes(Value(-1)), "13 FF FF FF FF FF FF FF FF");
    EXPECT_EQ(objectBytes(Value(UINT64_MAX)), "14 00 00 00 00 00 00 00 00 FF FF FF FF FF FF FF FF");
    EXPECT_EQ(objectBytes(Value::singleReal(1.5f)), "22 3F C0 00 00");
    EXPECT_EQ(objectBytes(Value(1.5)), "23 3F F8 00 00 00 00 00 00");
    EXPECT_EQ(objectBytes(Value::date(1.0)), "33 3F F0 00 00 00 00 00 00");
    EXPECT_EQ(objectBytes(Value::uid(5)), "80 05");
    EXPECT_EQ(objectBytes(Value::uid(300)), "81 01 2C");
    EXPECT_EQ(objectBytes(Value::uid(70000)), "83 00 01 11 70");
    EXPECT_EQ(objectBytes(Value(true)), "09");
    EXPECT_EQ(objectBytes(Value::data("\x01\x02")), "42 01 02");
    EXPECT_EQ(objectBytes(Value("\xC3\xA9")), "61 00 E9");
    EXPECT_EQ(objectBytes(Value("a\xF0\x9F\x98\x80")), "63 00 61 D8 3D DE 00");
    std::string fifteen = "5F 10 0F";  // a count of 15 follows the marker
    for (int i = 0; i < 15; ++i) fifteen += " 78";
    EXPECT_EQ(objectBytes(Value(std::string(15, 'x'))), fifteen);
}

TEST(BinaryPlistWriter, WritesEqualScalarsOnceButNotEqualContainers)
{
    // "a" (key and value), 1, 1.0, -0.0, 0.0, data, date: each once.
    Dictionary entry{{"a", Value("a")}};
    const Value scalars(Array{Value("a"), Value("a"), Value(1), Value(1), Value(1.0), Value(1.0), Value(-0.0), Value(0.0),
                              Value::data("x"), Value::data("x"), Value::date(5), Value::date(5), Value(entry)});
    EXPECT_EQ(trailerOf(written(scalars)).objectCount, 1u + 1 + 1 + 1 + 1 + 1 + 1 + 1 + 1);

    // Booleans and small counts take a short cut past the table; they must
    // still be merged, and kept apart from equal numbers of other kinds.
    const Value small(Array{Value(true), Value(true), Value(false), Value(0), Value(0), Value(255), Value(255), Value(256),
                            Value(256), Value(-1), Value(-1), Value(1), Value(1.0), Value(1u << 31)});
    EXPECT_EQ(trailerOf(written(small)).objectCount, 1u + 2 + 1 + 2 + 1 + 3);
    EXPECT_EQ(roundTrip(small), small);

    const Value equalArrays(Array{Value(Array{Value(1)}), Value(Array{Value(1)})});
    EXPECT_EQ(trailerOf(written(equalArrays)).objectCount, 4u) << "equal containers stay separate";

    const Value shared(Array{Value(1)});
    const Value sameArray(Array{shared, shared});
    EXPECT_EQ(trailerOf(written(sameArray)).objectCount, 3u) << "one shared payload is one object";
    const Value back = roundTrip(sameArray);
    EXPECT_EQ(back, sameArray);
    EXPECT_EQ(back.array()[0].payloadIdentity(), back.array()[1].payloadIdentity());

    const Value sharedDictionary(Dictionary{{"k", Value(2)}});
    const Value twice(Dictionary{{"a", sharedDictionary}, {"b", sharedDictionary}, {"c", Value(Dictionary{{"k", Value(2)}})}});
    // Root, keys a b c k, the shared dictionary once, its equal copy, 2.
    EXPECT_EQ(trailerOf(written(twice)).objectCount, 1u + 4 + 1 + 1 + 1);
}

TEST(BinaryPlistWriter, KeepsEmptyContainersOfEachKindApart)
{
    // Empty containers own no payload; an empty array and an empty
    // dictionary must still not become one object.
    const Value empties(Array{Value::emptyArray(), Value::emptyDictionary(), Value::emptyArray(), Value(std::string()),
                              Value::data("")});
    const Value back = roundTrip(empties);
    EXPECT_EQ(back, empties);
    EXPECT_EQ(trailerOf(written(empties)).objectCount, 5u);
}

TEST(BinaryPlistWriter, ChoosesTheSmallestReferenceAndOffsetWidths)
{
    Array small, large;
    for (int i = 0; i < 254; ++i) small.push_back(Value(i));
    for (int i = 0; i < 300; ++i) large.push_back(Value(i));
    const Trailer s = trailerOf(written(Value(small)));
    EXPECT_EQ(s.objectCount, 255u);
    EXPECT_EQ(s.refSize, 1u);
    EXPECT_EQ(s.offsetSize, 2u);
    const Trailer l = trailerOf(written(Value(large)));
    EXPECT_EQ(l.refSize, 2u);
    EXPECT_EQ(l.topObject, 0u);

    const Trailer wide = trailerOf(written(Value(Array{Value::data(std::string(70000, 'd')), Value(1)})));
    EXPECT_EQ(wide.offsetSize, 3u);
}

TEST(BinaryPlistWriter, RoundTripsEveryKind)
{
    Dictionary inner{{"\xC3\xA9t\xC3\xA9", Value::singleReal(0.25f)}, {"zero", Value(-0.0)}};
    const Value original(Dictionary{
        {"array", Value(Array{Value(true), Value(false), Value(Array{}), Value(Dictionary{})})},
        {"data", Value::data(std::string("\0\xFF", 2))},
        {"date", Value::date(-335376000.0)},
        {"dict", Value(inner)},
        {"ints", Value(Array{Value(INT64_MIN), Value(INT64_MAX), Value(UINT64_MAX), Value(0)})},
        {"long", Value(std::string(1000, 'q'))},
        {"text", Value("\xE6\x97\xA5 \xF0\x9F\x9A\x80 <&>")},
        {"uid", Value::uid(UINT64_MAX)},
    });
    const Value back = roundTrip(original);
    EXPECT_EQ(back, original);
    EXPECT_TRUE(back.find("dict")->find("\xC3\xA9t\xC3\xA9")->isSinglePrecision());
    EXPECT_FALSE(back.find("dict")->find("zero")->isSinglePrecision());
    EXPECT_TRUE(back.find("ints")->array()[2].isUnsignedInteger());
    EXPECT_TRUE(std::signbit(back.find("dict")->find("zero")->toDouble()));
}

TEST(BinaryPlistWriter, RefusesWhatTheFormatCannotHold)
{
    std::string error;
    EXPECT_FALSE(writeBinary(Value(), &error));
    EXPECT_NE(error.find("null"), std::string::npos) << error;
    EXPECT_FALSE(writeBinary(Value(Array{Value(1), Value()}), &error));
    EXPECT_NE(error.find("null"), std::string::npos) << error;
    EXPECT_FALSE(writeBinary(Value("bad \xC0\xAF utf-8"), &error));
    EXPECT_NE(error.find("not valid UTF-8"), std::string::npos) << error;
    EXPECT_FALSE(writeBinary(Value(Dictionary{{"\xED\xA0\x80", Value(1)}}), &error)) << "a surrogate in a key";
}

TEST(BinaryPlistWriter, LimitsNestingAndRefusesCycles)
{
    Value nested = Value::emptyArray();
    for (int level = 1; level < kMaxNestingDepth; ++level) nested = Value(Array{nested});
    EXPECT_EQ(roundTrip(nested), nested);
    std::string error;
    EXPECT_FALSE(writeBinary(Value(Array{nested}), &error));
    EXPECT_NE(error.find("nested deeper than 512"), std::string::npos) << error;

    // The same deep payload under a shallow and a deep parent: sharing must
    // not hide the depth.
    Value half = Value::emptyArray();
    for (int level = 1; level < 300; ++level) half = Value(Array{half});
    Value deepParent = half;
    for (int level = 0; level < 300; ++level) deepParent = Value(Array{deepParent});
    EXPECT_FALSE(writeBinary(Value(Array{half, deepParent}), &error));
    EXPECT_NE(error.find("nested deeper than 512"), std::string::npos) << error;

    Value loop = Value::emptyArray();
    Array& items = loop.mutableArray();
    items.push_back(loop);  // the array now holds itself
    EXPECT_FALSE(writeBinary(loop, &error));
    EXPECT_NE(error.find("contains itself"), std::string::npos) << error;
    items.clear();  // break the cycle so nothing leaks
}

}  // namespace
}  // namespace plist
