// Property lists written by another program (Python's plistlib, see
// tests/fixtures/plist/make_fixtures.py) and the real-world composition
// corpus: every value is checked, and every file round-trips.

#include "plist/PropertyList.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace plist {
namespace {

const std::string kFixtureDir = std::string(VELLORAN_SOURCE_DIR) + "/tests/fixtures/plist/";

std::string fileBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

Value readFixture(const std::string& name)
{
    std::string error;
    auto value = readFile(kFixtureDir + name, &error);
    EXPECT_TRUE(value.has_value()) << name << ": " << error;
    return value.value_or(Value());
}

std::string byteRange(int count, int step)
{
    std::string bytes;
    for (int i = 0; i < count; ++i) bytes += static_cast<char>((i * step) % 256);
    return bytes;
}

// The values make_fixtures.py writes, restated here independently.
Value expectedAllTypes()
{
    Dictionary integers{
        {"zero", Value(0)},
        {"one", Value(1)},
        {"byte_max", Value(255)},
        {"short_min", Value(256)},
        {"short_max", Value(65535)},
        {"word_min", Value(65536)},
        {"uint32_max", Value(4294967295ll)},
        {"above_uint32", Value(4294967296ll)},
        {"minus_one", Value(-1)},
        {"negative", Value(-123456789)},
        {"int64_max", Value(INT64_MAX)},
        {"near_int64_max", Value(INT64_MAX - 1)},
        {"int64_min", Value(INT64_MIN)},
        {"above_int64_max", Value(9223372036854775808ull)},
        {"uint64_max", Value(UINT64_MAX)},
    };
    Dictionary reals{
        {"pi", Value(3.141592653589793)},   {"minus_half", Value(-0.5)}, {"whole", Value(2.0)},
        {"negative_zero", Value(-0.0)},     {"tiny", Value(5e-324)},     {"small", Value(1e-300)},
        {"huge", Value(1.7976931348623157e308)},
    };
    Dictionary strings{
        {"ascii", Value("Hello, world")},
        {"empty", Value("")},
        {"accents", Value("caf\xC3\xA9 cr\xC3\xA8me br\xC3\xBBl\xC3\xA9" "e")},
        {"cjk", Value("\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x83\x86\xE3\x82\xAD\xE3\x82\xB9\xE3\x83\x88")},
        {"emoji", Value("smile \xF0\x9F\x98\x80 rocket \xF0\x9F\x9A\x80")},
        {"xml_special", Value("<tag attr=\"x\">&amp; 'quoted'</tag>")},
        {"whitespace", Value("tab\tnewline\n  two spaces")},
        {"len14", Value(std::string(14, 'a'))},
        {"len15", Value(std::string(15, 'b'))},
        {"len16", Value(std::string(16, 'c'))},
        {"long", Value([] {
             std::string s;
             for (int i = 0; i < 30; ++i) s += "0123456789";
             return s;
         }())},
    };
    // Seconds since 2001-01-01 00:00:00 UTC.
    Array dates{Value::date(0.0), Value::date(730902896.0), Value::date(-335376000.0)};
    Dictionary data{
        {"empty", Value::data("")},
        {"one", Value::data(std::string(1, '\0'))},
        {"fourteen", Value::data(byteRange(14, 1))},
        {"fifteen", Value::data(byteRange(15, 1))},
        {"three_hundred", Value::data(byteRange(300, 7))},
    };
    Dictionary nested{
        {"array_of_dicts",
         Value(Array{Value(Dictionary{{"name", Value("a")}, {"value", Value(1)}}),
                     Value(Dictionary{{"name", Value("b")},
                                      {"value", Value(Array{Value(1), Value(Array{Value(2), Value(Array{Value(3), Value::emptyArray()})})})}})})},
        {"empty_array", Value::emptyArray()},
        {"empty_dict", Value::emptyDictionary()},
        {"deep", Value(Array{Value(Array{Value(Array{Value(Array{Value(Array{Value("bottom")})})})})})},
    };
    return Value(Dictionary{
        {"booleans", Value(Array{Value(true), Value(false)})},
        {"integers", Value(integers)},
        {"reals", Value(reals)},
        {"strings", Value(strings)},
        {"dates", Value(dates)},
        {"data", Value(data)},
        {"nested", Value(nested)},
    });
}

Value expectedUnsorted()
{
    return Value(Dictionary{
        {"zebra", Value(1)},
        {"apple", Value(2)},
        {"Mango", Value(3)},
        {"\xC3\xA9" "clair", Value(4)},
        {"banana", Value(Dictionary{{"z", Value("last")}, {"a", Value("first")}, {"m", Value(Array{Value("middle")})}})},
    });
}

Value expectedMany()
{
    Array items;
    for (int i = 0; i < 150; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "item-%03d", i);
        items.push_back(Value(name));
    }
    for (int i = 1000; i < 1110; ++i) items.push_back(Value(i));
    return Value(items);
}

// Compares section by section so that a failure names the part that differs.
void expectAllTypes(const Value& actual, const std::string& source)
{
    SCOPED_TRACE(source);
    const Value expected = expectedAllTypes();
    ASSERT_TRUE(actual.isDictionary());
    EXPECT_EQ(actual.size(), expected.size());
    for (const auto& [section, want] : expected.dictionary()) {
        const Value* got = actual.find(section);
        ASSERT_NE(got, nullptr) << section;
        if (want.isDictionary()) {
            EXPECT_EQ(got->size(), want.size()) << section;
            for (const auto& [key, value] : want.dictionary()) {
                const Value* item = got->find(key);
                ASSERT_NE(item, nullptr) << section << "." << key;
                EXPECT_EQ(*item, value) << section << "." << key;
            }
        } else {
            EXPECT_EQ(*got, want) << section;
        }
    }
    // Equality does not tell these apart.
    const Value& integers = *actual.find("integers");
    EXPECT_TRUE(integers.find("above_int64_max")->isUnsignedInteger());
    EXPECT_FALSE(integers.find("int64_max")->isUnsignedInteger());
    EXPECT_TRUE(std::signbit(actual.find("reals")->find("negative_zero")->toDouble()));
    EXPECT_TRUE(actual.find("dates")->array()[1].isDate());
}

TEST(BinaryPlistFixtures, AllTypesFromBinary)
{
    expectAllTypes(readFixture("all_types.bplist"), "all_types.bplist");
}

TEST(BinaryPlistFixtures, AllTypesFromXml)
{
    expectAllTypes(readFixture("all_types.xml"), "all_types.xml");
}

TEST(BinaryPlistFixtures, UnsortedKeysReadAsTheSameDictionary)
{
    EXPECT_EQ(readFixture("unsorted.bplist"), expectedUnsorted());
    EXPECT_EQ(readFixture("unsorted.xml"), expectedUnsorted());
}

TEST(BinaryPlistFixtures, ManyObjectsNeedTwoByteReferences)
{
    const std::string bytes = fileBytes(kFixtureDir + "many.bplist");
    ASSERT_GT(bytes.size(), 32u);
    EXPECT_EQ(bytes[bytes.size() - 32 + 7], 2) << "the fixture should use 2-byte references";
    EXPECT_EQ(readFixture("many.bplist"), expectedMany());
    EXPECT_EQ(readFixture("many.xml"), expectedMany());
}

TEST(BinaryPlistFixtures, KeyedArchiveUids)
{
    const Value archive = readFixture("keyed_archive.bplist");
    EXPECT_EQ(archive.value("$archiver"), Value("NSKeyedArchiver"));
    EXPECT_EQ(archive.value("$version"), Value(100000));
    EXPECT_EQ(archive.value("$top"), Value(Dictionary{{"root", Value::uid(1)}}));
    const Array& objects = archive.value("$objects").array();
    ASSERT_EQ(objects.size(), 4u);
    EXPECT_EQ(objects[0], Value("$null"));
    EXPECT_EQ(objects[1], Value(Dictionary{{"$class", Value::uid(2)}, {"name", Value::uid(3)}}));
    EXPECT_EQ(objects[2], Value(Dictionary{{"$classname", Value("Thing")}, {"$classes", Value(Array{Value("Thing"), Value("NSObject")})}}));
    EXPECT_EQ(objects[3], Value("a name"));
    EXPECT_EQ(archive.value("wide"), Value(Array{Value::uid(0), Value::uid(255), Value::uid(256), Value::uid(70000),
                                                 Value::uid(1ull << 40)}));
}

TEST(BinaryPlistFixtures, SharedObjectIsReadOnce)
{
    const Value root = readFixture("shared.bplist");
    const Value common(Array{Value(1), Value("two"), Value(3.0)});
    ASSERT_EQ(root.value("first"), common);
    EXPECT_EQ(root.find("first")->payloadIdentity(), root.find("second")->payloadIdentity());
    EXPECT_EQ(root.find("first")->payloadIdentity(), root.find("inner")->find("again")->payloadIdentity());
}

TEST(BinaryPlistFixtures, EveryFixtureRoundTrips)
{
    for (const char* name : {"all_types.bplist", "all_types.xml", "unsorted.bplist", "unsorted.xml", "many.bplist", "many.xml",
                             "keyed_archive.bplist", "shared.bplist"}) {
        SCOPED_TRACE(name);
        const Value original = readFixture(name);
        std::string error;
        auto binary = writeBinary(original, &error);
        ASSERT_TRUE(binary) << error;
        EXPECT_EQ(readBinary(*binary, &error), original) << error;
        if (original.contains("$archiver")) continue;  // UIDs become dictionaries in XML
        auto xml = writeXml(original, &error);
        ASSERT_TRUE(xml) << error;
        EXPECT_EQ(readXml(*xml, &error), original) << error;
    }
}

TEST(BinaryPlistFixtures, BinaryAndXmlFixturesAgree)
{
    for (const char* stem : {"all_types", "unsorted", "many"}) {
        SCOPED_TRACE(stem);
        EXPECT_EQ(readFixture(std::string(stem) + ".bplist"), readFixture(std::string(stem) + ".xml"));
    }
}

TEST(BinaryPlistCorpus, EveryCompositionRoundTrips)
{
    const std::filesystem::path dir = VELLORAN_CORPUS_DIR;
    if (!std::filesystem::is_directory(dir)) GTEST_SKIP() << "no corpus at " << dir;
    int binaryFiles = 0, xmlFiles = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        if (entry.path().extension() != ".qtz") continue;
        SCOPED_TRACE(entry.path().filename().string());
        const std::string bytes = fileBytes(entry.path().string());
        std::string error;
        Format format;
        auto original = read(bytes, &error, &format);
        ASSERT_TRUE(original) << error;
        ASSERT_TRUE(original->isDictionary());
        (format == Format::Binary ? binaryFiles : xmlFiles)++;
        auto written = writeBinary(*original, &error);
        ASSERT_TRUE(written) << error;
        auto back = readBinary(*written, &error);
        ASSERT_TRUE(back) << error;
        EXPECT_EQ(*back, *original);
        if (format == Format::Binary) {
            // Written the same way (shared scalars and strings), the file
            // should not grow much.
            EXPECT_LE(written->size(), bytes.size() + bytes.size() / 10);
        }
    }
    EXPECT_EQ(binaryFiles, 53);
    EXPECT_EQ(xmlFiles, 4);
}

}  // namespace
}  // namespace plist
