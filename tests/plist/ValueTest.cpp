#include "plist/Value.h"

#include "../support/PlistPrinting.h"

#include <gtest/gtest.h>

using namespace plist;

TEST(Value, CopiesShareUntilWrittenThenDetach)
{
    Value a(Dictionary{{"inner", Value(Array{Value(1), Value(2)})}});
    Value b = a;
    EXPECT_EQ(a.payloadIdentity(), b.payloadIdentity());

    b.mutableDictionary()["inner"].mutableArray().push_back(Value(3));
    EXPECT_EQ(a.value("inner").size(), 2u) << "writing a copy must not change the original";
    EXPECT_EQ(b.value("inner").size(), 3u);
    EXPECT_NE(a, b);
}

TEST(Value, DeepCopySharesNothing)
{
    Value shared(Array{Value(std::string("s"))});
    Value root(Dictionary{{"a", shared}, {"b", shared}});
    Value copy = root.deepCopy();
    EXPECT_EQ(copy, root);
    EXPECT_NE(copy.value("a").payloadIdentity(), root.value("a").payloadIdentity());
    EXPECT_NE(copy.value("a").payloadIdentity(), copy.value("b").payloadIdentity());
}

TEST(Value, EqualityIsDeepAndTyped)
{
    EXPECT_EQ(Value(Dictionary{{"k", Value(Array{Value(1.5)})}}), Value(Dictionary{{"k", Value(Array{Value(1.5)})}}));
    EXPECT_NE(Value(1), Value(1.0)) << "an integer is not a real";
    EXPECT_NE(Value(std::string("ab")), Value::data("ab"));
    EXPECT_NE(Value(Dictionary{{"k", Value(1)}}), Value(Dictionary{{"k", Value(2)}}));
    EXPECT_EQ(Value::singleReal(0.5f), Value(0.5)) << "width does not take part in equality";
    EXPECT_NE(Value(static_cast<unsigned long long>(-1)), Value(static_cast<long long>(-1)));
    EXPECT_EQ(Value(), Value());
    EXPECT_EQ(Value::uid(4), Value::uid(4));
    EXPECT_NE(Value::uid(4), Value(4));
}

TEST(Value, WrongTypeReadsGiveNeutralValues)
{
    const Value s(std::string("text"));
    EXPECT_EQ(s.toInt(), 0);
    EXPECT_FALSE(s.toBool());
    EXPECT_TRUE(s.array().empty());
    EXPECT_TRUE(s.dictionary().empty());
    EXPECT_EQ(Value(3).string(), "");
    EXPECT_EQ(Value(2.9).toInt(), 2);
    EXPECT_EQ(Value(1e300).toInt(), std::numeric_limits<std::int64_t>::max());
    EXPECT_DOUBLE_EQ(Value(7).toDouble(), 7.0);
}

TEST(Value, DictionaryHelpers)
{
    Value v;
    v.set("b", Value(2));
    v.set("a", Value(1));
    v.set("b", Value(3));
    EXPECT_TRUE(v.isDictionary());
    EXPECT_EQ(v.size(), 2u);
    EXPECT_EQ(v.dictionary().begin()->first, "a") << "keys are kept sorted";
    EXPECT_EQ(v.value("b").toInt(), 3);
    EXPECT_TRUE(v.remove("a"));
    EXPECT_FALSE(v.remove("a"));
    EXPECT_EQ(v.find("a"), nullptr);
    EXPECT_TRUE(v.value("missing").isNull());
}

TEST(Value, DeepCopyDetachesEveryLevelSoWritesStayApart)
{
    const Value leaf(Dictionary{{"n", Value(1)}});
    const Value original(Array{Value(Dictionary{{"x", leaf}, {"y", leaf}}), Value(Array{leaf})});
    Value copy = original.deepCopy();
    copy.mutableArray()[0].mutableDictionary()["x"].set("n", Value(2));
    copy.mutableArray()[1].mutableArray()[0].set("m", Value(3));
    EXPECT_EQ(original.array()[0].value("x").value("n"), Value(1));
    EXPECT_EQ(original.array()[0].value("y"), leaf);
    EXPECT_EQ(original.array()[1].array()[0], leaf);
    EXPECT_EQ(copy.array()[0].value("y").value("n"), Value(1)) << "the copy's two uses of the leaf are separate too";
}

TEST(Value, EmptyPayloadsHaveOneIdentityPerType)
{
    const Value types[] = {Value(std::string()), Value::data(""), Value::emptyArray(), Value::emptyDictionary()};
    for (const Value& a : types) {
        EXPECT_NE(a.payloadIdentity(), nullptr) << typeName(a.type());
        for (const Value& b : types) {
            if (&a == &b) continue;
            EXPECT_NE(a.payloadIdentity(), b.payloadIdentity()) << typeName(a.type()) << " " << typeName(b.type());
        }
    }
    EXPECT_EQ(Value::emptyArray().payloadIdentity(), Value(Array{}).payloadIdentity());
    EXPECT_EQ(Value(1).payloadIdentity(), nullptr);
    EXPECT_EQ(Value::emptyDictionary(), Value(Dictionary{}));
    EXPECT_NE(Value::emptyDictionary(), Value::emptyArray());
}

TEST(Value, AssigningAPartOfItselfKeepsThePart)
{
    Value v(Array{Value(Dictionary{{"k", Value(std::string("a string long enough to be on the heap"))}})});
    v = v.array()[0];
    EXPECT_EQ(v.value("k").string(), "a string long enough to be on the heap");
    v = std::move(v.mutableDictionary().find("k")->second);
    EXPECT_EQ(v.string(), "a string long enough to be on the heap");
}
