// The flat dictionary: order and lookup whatever order entries arrive in,
// copy on write, and keys shared rather than copied.

#include "plist/DictionaryBuilder.h"

#include "../support/PlistPrinting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>

using namespace plist;

namespace {

std::vector<std::string> keysOf(const Dictionary& d)
{
    std::vector<std::string> keys;
    for (const auto& [key, value] : d) keys.push_back(key);
    return keys;
}

}  // namespace

TEST(Dictionary, BuiltUnsortedIsSortedWithTheLastOfARepeatedKey)
{
    const Dictionary d{{"b", Value(1)}, {"\xC3\xA9", Value(2)}, {"a", Value(3)}, {"b", Value(4)}, {"B", Value(5)}};
    EXPECT_EQ(keysOf(d), (std::vector<std::string>{"B", "a", "b", "\xC3\xA9"})) << "byte order: upper case first, UTF-8 last";
    EXPECT_EQ(d.find("b")->second, Value(4));
    EXPECT_EQ(d.find("\xC3\xA9")->second, Value(2));
    for (const char* missing : {"", "A", "aa", "c", "\xC3"}) EXPECT_EQ(d.find(missing), d.end()) << missing;
}

TEST(Dictionary, BuilderFindsEveryKeyOfAShuffledInputWithDuplicates)
{
    std::vector<std::pair<std::string, int>> input;
    for (int i = 0; i < 300; ++i) input.emplace_back("key" + std::to_string(i % 200), i);
    std::mt19937 random(7);
    std::shuffle(input.begin(), input.end(), random);

    DictionaryBuilder builder(input.size());
    for (const auto& [key, n] : input) builder.append(Key(key), Value(n));
    const Dictionary d = builder.finish();

    ASSERT_EQ(d.size(), 200u);
    EXPECT_TRUE(std::is_sorted(d.begin(), d.end(), [](const auto& a, const auto& b) { return a.first < b.first; }));
    for (int k = 0; k < 200; ++k) {
        // The last of the shuffled entries with this key.
        int last = -1;
        for (const auto& [key, n] : input)
            if (key == "key" + std::to_string(k)) last = n;
        const auto found = d.find("key" + std::to_string(k));
        ASSERT_NE(found, d.end()) << k;
        EXPECT_EQ(found->second.toInt(), last) << k;
    }
}

TEST(Dictionary, EditsKeepTheOrder)
{
    Dictionary d;
    for (const char* key : {"m", "c", "x", "a", "p"}) d[key] = Value(key);
    EXPECT_EQ(keysOf(d), (std::vector<std::string>{"a", "c", "m", "p", "x"}));

    EXPECT_FALSE(d.emplace("c", Value(1)).second) << "emplace leaves a present key alone";
    EXPECT_EQ(d.find("c")->second, Value("c"));
    EXPECT_FALSE(d.insert_or_assign("c", Value(2)).second);
    EXPECT_EQ(d.find("c")->second, Value(2));
    EXPECT_TRUE(d.emplace("b", Value(3)).second);

    EXPECT_EQ(d.erase("m"), 1u);
    EXPECT_EQ(d.erase("m"), 0u);
    d.erase(std::as_const(d).find("a"));
    EXPECT_EQ(keysOf(d), (std::vector<std::string>{"b", "c", "p", "x"}));
    EXPECT_TRUE(d.contains("x"));
    EXPECT_FALSE(d.contains("a"));
}

TEST(Dictionary, CopiesDetachOnTheFirstWrite)
{
    const Dictionary original{{"a", Value(1)}, {"b", Value(2)}};

    Dictionary viaIndex = original;
    viaIndex["a"] = Value(10);
    Dictionary viaIteration = original;
    for (auto& [key, value] : viaIteration) value = Value(0);
    Dictionary viaErase = original;
    viaErase.erase("b");

    EXPECT_EQ(original, (Dictionary{{"a", Value(1)}, {"b", Value(2)}}));
    EXPECT_EQ(viaIndex.find("a")->second, Value(10));
    EXPECT_EQ(viaIteration.find("b")->second, Value(0));
    EXPECT_EQ(viaErase.size(), 1u);
}

TEST(Dictionary, AReferenceFromMutableDictionaryWritesOnlyItsOwnValue)
{
    Value v(Dictionary{{"a", Value(1)}});
    Dictionary& d = v.mutableDictionary();
    const Value copy = v;  // shares the entries again
    d["b"] = Value(2);
    EXPECT_EQ(v.size(), 2u);
    EXPECT_EQ(copy.size(), 1u) << "the copy taken before the write must not see it";
}

TEST(Dictionary, KeysAreSharedNotCopied)
{
    const Key key("inputPortStates");
    const Dictionary a{{key, Value(1)}};
    const Dictionary b{{key, Value(2)}};
    EXPECT_EQ(a.begin()->first.data(), b.begin()->first.data());
    EXPECT_EQ(Value(key).string().data(), key.data()) << "a string value made from a key shares its text";

    const Value tree(Dictionary{{"inner", Value(a)}});
    const Value copy = tree.deepCopy();
    EXPECT_NE(copy.value("inner").payloadIdentity(), tree.value("inner").payloadIdentity());
    EXPECT_EQ(copy.value("inner").dictionary().begin()->first.data(), key.data()) << "immutable keys stay shared";

    EXPECT_EQ(key, "inputPortStates");
    EXPECT_EQ(key, std::string("inputPortStates"));
    EXPECT_LT(Key("a"), Key("b"));
    EXPECT_LT(Key("Z"), "a");
    EXPECT_TRUE(Key().empty());
    EXPECT_EQ(Key(""), Key());
}

TEST(Dictionary, EveryCopyOfAValueLendsOutTheSameDictionary)
{
    // So a loop over value(key).dictionary(), whose Value is a temporary
    // copy, walks a dictionary that the tree itself keeps alive.
    const Value tree = Dictionary{{"inner", Dictionary{{"a", Value(1)}, {"b", Value(2)}}}};
    const Dictionary& kept = tree.dictionary().find("inner")->second.dictionary();
    const Dictionary& lent = tree.value("inner").dictionary();
    EXPECT_EQ(&lent, &kept);
    std::vector<std::string> keys;
    for (const auto& [key, value] : tree.value("inner").dictionary()) keys.push_back(key);
    EXPECT_EQ(keys, (std::vector<std::string>{"a", "b"}));

    Value edited = tree;
    edited.mutableDictionary()["inner"].mutableDictionary()["c"] = 3;
    EXPECT_EQ(tree.value("inner").size(), 2u) << "the lent dictionary is not a way to write";
    EXPECT_EQ(edited.value("inner").size(), 3u);
}
