// Damaged and hostile typedstreams: every one must give an error naming the
// byte offset, never a crash, a hang or a huge allocation.

#include "LegacyArchiveTestSupport.h"

namespace plist::legacy {
namespace {

using test::decodeError;
using test::decodeOk;
using test::wireBytes;

// A little-endian header (16 bytes) followed by the given bytes.
std::string archiveWith(std::string_view body)
{
    return wireBytes("04 0B \"streamtyped\" 81 E8 03") + wireBytes(body);
}

const char* const kArrayClasses = R"(84 84 0E "NSMutableArray" 00 84 84 07 "NSArray" 00 84 84 08 "NSObject" 00 85)";

Object nestedArrays(int depth)
{
    Object inner = Object::array({});
    for (int i = 1; i < depth; ++i) inner = Object::array({inner});
    return inner;
}

TEST(LegacyArchiveErrors, RejectsBadHeaders)
{
    EXPECT_EQ(decodeError(""), "not a typedstream archive (bad header) at offset 0");
    EXPECT_EQ(decodeError("bplist00........"), "not a typedstream archive (bad header) at offset 0");
    EXPECT_EQ(decodeError(wireBytes(R"(04 0B "typedstreaX" 81 03 E8)")),
              "not a typedstream archive (bad header) at offset 0");
    EXPECT_EQ(decodeError(wireBytes(R"(05 0B "typedstream" 81 03 E8)")), "unsupported typedstream version 5 at offset 0");
    EXPECT_EQ(decodeError(wireBytes(R"(04 0B "streamtyped" 81 E8)")), "unexpected end of data at offset 14");
    EXPECT_EQ(decodeError(archiveWith("")), "archive without a root object at offset 16");
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "i" 05)")), "unsupported top-level group \"i\" at offset 16");
    EXPECT_FALSE(isArchive("bplist00"));
    EXPECT_TRUE(isArchive(archiveWith("")));
}

TEST(LegacyArchiveErrors, RejectsClassesItDoesNotKnow)
{
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "@" 84 84 84 03 "Foo" 00 85 86)")),
              "unsupported archived class \"Foo\" at offset 21");
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "@" 84 84 84 08 "NSObject" 00 85 86)")),
              "unsupported archived class \"NSObject\" at offset 21");
    // Known classes must come with their own superclasses.
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "@" 84 84 84 08 "NSString" 01 84 84 07 "NSArray" 00 85 86)")),
              "unexpected superclass \"NSArray\" of NSString at offset 33");
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "@" 84 84 84 08 "NSString" 01 85 86)")),
              "class chain of NSString ends before NSObject at offset 32");
}

TEST(LegacyArchiveErrors, RejectsReferencesOutsideTheTables)
{
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "@" 95)")), "reference 3 past the 0 objects read so far at offset 19");
    EXPECT_EQ(decodeError(archiveWith("99")), "shared string reference 7 past the 0 strings read so far at offset 16");
    const std::string array = std::string(R"(84 01 "@" 84 )") + kArrayClasses + R"( 84 01 "i" 01 92 )";
    // An array holding itself.
    EXPECT_EQ(decodeError(archiveWith(array + "92 86")),
              "reference to object 0, which is still being read at offset 67");
    // Object 1 is the class NSMutableArray.
    EXPECT_EQ(decodeError(archiveWith(array + "93 86")), "reference 1 is not an object at offset 67");
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "@" 84 84 84 08 "NSNumber" 00 84 84 07 "NSValue" 00 84 84 08 "NSObject" 00 85
                                       84 01 "*" 93 97 02 86)")),
              "reference 1 is not a C string at offset 59");
}

TEST(LegacyArchiveErrors, RejectsCountsTheDataCannotHold)
{
    const std::string array = std::string(R"(84 01 "@" 84 )") + kArrayClasses + R"( 84 01 "i" )";
    EXPECT_EQ(decodeError(archiveWith(array + "82 FF FF FF 7F 92 85 86")),
              "element count 2147483647 does not fit the remaining 3 bytes at offset 65");
    EXPECT_EQ(decodeError(archiveWith(array + "FF 86")), "element count -1 does not fit the remaining 1 bytes at offset 65");
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "@" 84 84 84 08 "NSString" 01 84 84 08 "NSObject" 00 85
                                       84 01 "+" 82 00 00 00 40 "abc" 86)")),
              "string length 1073741824 does not fit the remaining 4 bytes at offset 48");
    // Values of an encoding far longer than the data.
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "@" 84 84 84 07 "NSValue" 00 84 84 08 "NSObject" 00 85
                                       84 01 "*" 84 84 0D "[1000000000d]" 96 00 86)")),
              "encoding \"[1000000000d]\" needs more values than the data holds at offset 63");
    // An empty struct would repeat without reading a byte.
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "@" 84 84 84 07 "NSImage" 00 84 84 08 "NSObject" 00 85
                                       84 10 "[4000000000{x=}]" 86)")),
              "struct without members in type encoding \"[4000000000{x=}]\" at offset 44");
}

TEST(LegacyArchiveErrors, RejectsFieldsThatDoNotFitTheClass)
{
    const std::string string = R"(84 01 "@" 84 84 84 08 "NSString" 01 84 84 08 "NSObject" 00 85 )";
    EXPECT_EQ(decodeError(archiveWith(string + R"(84 01 "i" 01 86)")),
              "expected a \"+\" group in NSString, found \"i\" at offset 45");
    EXPECT_EQ(decodeError(archiveWith(string + R"(84 01 "+" 01 "x" 97 01 "y" 86)")),
              "expected the end of NSString at offset 50");
    const std::string number = R"(84 01 "@" 84 84 84 08 "NSNumber" 00 84 84 07 "NSValue" 00 84 84 08 "NSObject" 00 85 84 01 "*" )";
    EXPECT_EQ(decodeError(archiveWith(number + R"(84 84 0C "{CGPoint=dd}" 97 01 02 86)")),
              "unsupported NSNumber encoding \"{CGPoint=dd}\" at offset 74");
    EXPECT_EQ(decodeError(archiveWith(number + R"(84 84 01 "i" 84 01 "f" 01 86)")),
              "NSNumber values labelled \"f\" for encoding \"i\" at offset 63");
    EXPECT_EQ(decodeError(archiveWith(number + R"(84 84 05 "{x=@}" 97 85 86)")),
              "unsupported NSNumber encoding \"{x=@}\" at offset 67");
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "@" 84 84 84 07 "NSColor" 00 84 84 08 "NSObject" 00 85 84 01 "c" 09 86)")),
              "unsupported NSColor kind 9 at offset 47");
    EXPECT_EQ(decodeError(archiveWith(R"(84 01 "@" 84 84 84 07 "NSColor" 00 84 84 08 "NSObject" 00 85 84 01 "c" 03
                                       84 04 "ffff" 00 00 00 00 86)")),
              "expected a \"ff\" group in NSColor, found \"ffff\" at offset 48");
    EXPECT_EQ(decodeError(encodeNew(Object::string("x")) + "\x86"),
              "unexpected data after the root object at offset 51");
}

TEST(LegacyArchiveErrors, LimitsNesting)
{
    EXPECT_TRUE(decode(encodeNew(nestedArrays(kMaxArchiveNesting))).has_value());
    const std::string error = decodeError(encodeNew(nestedArrays(kMaxArchiveNesting + 1)));
    EXPECT_NE(error.find("objects nested deeper than 512 at offset"), std::string::npos) << error;
}

std::string sampleArchive()
{
    Object note = Object::dictionary({{"color", Object::color(1, 1, 0.5)}, {"string", Object::string("Über")}});
    return encodeNew(Object::dictionary({
        {"name", Object::string("Sprite")},
        {"position", Object::point(-300.5, 70000)},
        {"zoomFactor", Object::number(0.75f)},
        {"noteList", Object::array({note, note, Object::structValue("{_NSRect={_NSPoint=ff}{_NSSize=ff}}", {1, 2, 3, 4})})},
        {"data", Object::data("abc")},
        {"named", Object::namedColor("System", "red")},
    }));
}

TEST(LegacyArchiveErrors, RejectsEveryTruncation)
{
    const std::string worked = wireBytes(R"(
        04 0B "typedstream" 81 03 E8 84 01 "@" 84
        84 84 13 "NSMutableDictionary" 00 84 84 0C "NSDictionary" 00 84 84 08 "NSObject" 00 85 84 01 "i" 01
        92 84 84 84 08 "NSString" 01 95 84 01 "+" 08 "position" 86
        92 84 84 84 07 "NSValue" 00 95 84 01 "*" 84 84 0D "{_NSPoint=ff}" 9B 81 02 83 81 03 64 86 86)");
    for (const std::string& whole : {worked, sampleArchive()}) {
        ASSERT_TRUE(decode(whole).has_value());
        for (std::size_t length = 0; length < whole.size(); ++length) {
            std::string error;
            EXPECT_FALSE(decode(std::string_view(whole).substr(0, length), &error).has_value()) << length;
            EXPECT_NE(error.find(" at offset "), std::string::npos) << length << ": " << error;
        }
    }
}

TEST(LegacyArchiveErrors, SurvivesEverySingleByteCorruption)
{
    // Tag bytes, reference bytes and extremes in every position: each result
    // is an error or an archive that survives its own round trip.
    const std::string whole = sampleArchive();
    const unsigned char replacements[] = {0x00, 0x7F, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x92, 0xFF};
    int accepted = 0;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (unsigned char replacement : replacements) {
            std::string damaged = whole;
            damaged[i] = static_cast<char>(replacement);
            std::string error;
            const auto archive = decode(damaged, &error);
            if (!archive) {
                EXPECT_NE(error.find(" at offset "), std::string::npos) << error;
                continue;
            }
            ++accepted;
            const auto again = decode(encode(*archive), &error);
            ASSERT_TRUE(again.has_value()) << "byte " << i << ": " << error;
            EXPECT_EQ(again->root, archive->root) << "byte " << i;
        }
    }
    EXPECT_GT(accepted, 0);  // some changes only alter a value
}

}  // namespace
}  // namespace plist::legacy
