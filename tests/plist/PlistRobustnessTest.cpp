// Damaged property lists: every truncation and a few thousand seeded byte
// edits of each fixture go through plist::read. Each must give a value or a
// non-empty error, never a crash (the sanitizer build runs this), and a value
// that comes back must survive a binary round trip.

#include "plist/PropertyList.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace plist {
namespace {

const char* const kFixtures[] = {"all_types.bplist", "all_types.xml", "unsorted.bplist", "unsorted.xml",
                                 "many.bplist",      "many.xml",      "keyed_archive.bplist", "shared.bplist"};
constexpr int kEditsPerFixture = 500;

std::string fixtureBytes(const std::string& name)
{
    std::ifstream in(std::string(VELLORAN_SOURCE_DIR) + "/tests/fixtures/plist/" + name, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

// A tiny fixed generator, so every platform and library runs the same cases.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15ull + 1) {}
    std::uint64_t next()
    {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return state_;
    }
    std::size_t below(std::size_t n) { return n == 0 ? 0 : next() % n; }

private:
    std::uint64_t state_;
};

bool containsNull(const Value& value)
{
    if (value.isNull()) return true;
    for (const Value& item : value.array())
        if (containsNull(item)) return true;
    for (const auto& entry : value.dictionary())
        if (containsNull(entry.second)) return true;
    return false;
}

// Reads the bytes; returns a description of what went wrong, or "".
std::string checkRead(std::string_view bytes, bool* parsed = nullptr)
{
    std::string error;
    const auto value = read(bytes, &error);
    if (parsed) *parsed = value.has_value();
    if (!value) return error.empty() ? "failed without an error message" : "";
    auto binary = writeBinary(*value, &error);
    if (!binary) return containsNull(*value) ? "" : "a value read back could not be written: " + error;
    const auto back = readBinary(*binary, &error);
    if (!back) return "a written value could not be read: " + error;
    if (*back != *value) return "the binary round trip changed the value";
    return "";
}

// Bytes that often mean something to a parser: markers, counts, delimiters.
unsigned char interestingByte(Random& random)
{
    static const unsigned char bytes[] = {0x00, 0x01, 0x08, 0x0F, 0x10, 0x13, 0x14, 0x1F, 0x33, 0x5F, 0x6F, 0x7F,
                                          0x80, 0xAF, 0xDF, 0xFF, '<',  '>',  '/',  '&',  ';',  '"'};
    return bytes[random.below(sizeof bytes)];
}

std::string mutate(std::string bytes, Random& random)
{
    const int edits = 1 + static_cast<int>(random.below(4));
    for (int i = 0; i < edits && !bytes.empty(); ++i) {
        const std::size_t at = random.below(bytes.size());
        switch (random.below(5)) {
        case 0: bytes[at] = static_cast<char>(bytes[at] ^ (1u << random.below(8))); break;
        case 1: bytes[at] = static_cast<char>(random.next()); break;
        case 2: bytes[at] = static_cast<char>(interestingByte(random)); break;
        case 3: bytes.insert(bytes.begin() + at, static_cast<char>(interestingByte(random))); break;
        default: bytes.erase(at, 1 + random.below(8)); break;
        }
    }
    return bytes;
}

TEST(PlistRobustness, EveryTruncationFailsCleanly)
{
    for (const char* name : kFixtures) {
        // Its 260 elements are alike and all_types.xml has every XML
        // construct; cutting it 7000 ways would double the test's time.
        if (std::string_view(name) == "many.xml") continue;
        const std::string bytes = fixtureBytes(name);
        ASSERT_FALSE(bytes.empty()) << name;
        ASSERT_EQ(checkRead(bytes), "") << name;
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            const std::string problem = checkRead(std::string_view(bytes).substr(0, length));
            ASSERT_EQ(problem, "") << name << " cut to " << length << " bytes";
        }
    }
}

TEST(PlistRobustness, SeededByteEditsFailCleanlyOrRoundTrip)
{
    int readBack = 0;
    std::uint64_t seed = 1;
    for (const char* name : kFixtures) {
        const std::string bytes = fixtureBytes(name);
        ASSERT_FALSE(bytes.empty()) << name;
        Random random(seed++);
        for (int i = 0; i < kEditsPerFixture; ++i) {
            const std::string damaged = mutate(bytes, random);
            bool parsed = false;
            const std::string problem = checkRead(damaged, &parsed);
            ASSERT_EQ(problem, "") << name << " edit " << i;
            readBack += parsed;
        }
    }
    // Some edits (inside a string, say) leave a readable file; if none did,
    // the edits would only be testing the header check.
    EXPECT_GT(readBack, 100);
}

}  // namespace
}  // namespace plist
