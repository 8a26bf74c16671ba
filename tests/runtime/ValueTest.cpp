// Port values and their conversions at connections.

#include "runtime/Value.h"

#include "plist/Value.h"

#include <QColor>
#include <QImage>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using runtime::Color;
using runtime::PortType;
using runtime::Value;

namespace {

TEST(RuntimeValue, IndexPortsRoundAndStayAtOrAboveZero)
{
    EXPECT_EQ(Value(2.5).convertedTo(PortType::Index).toNumber(), 3.0);
    EXPECT_EQ(Value(-3.0).convertedTo(PortType::Index).toNumber(), 0.0);
    EXPECT_EQ(Value(std::nan("")).convertedTo(PortType::Index).toNumber(), 0.0);
    EXPECT_EQ(Value(1e20).convertedTo(PortType::Index).toNumber(), 4294967295.0);
    EXPECT_EQ(Value(true).convertedTo(PortType::Index).toNumber(), 1.0);
}

TEST(RuntimeValue, TextAndNumbersConvertBothWays)
{
    EXPECT_EQ(Value("12.5px").toNumber(), 12.5);  // leading numeric text counts
    EXPECT_EQ(Value("  -3e2 ").toNumber(), -300.0);
    EXPECT_EQ(Value("abc").toNumber(), 0.0);
    EXPECT_EQ(Value(0.1).toString(), "0.1");
    EXPECT_EQ(Value(3.0).toString(), "3");
    EXPECT_EQ(Value(true).convertedTo(PortType::String).toString(), "1");
    EXPECT_TRUE(Value("Yes").toBool());
    EXPECT_TRUE(Value("2").toBool());
    EXPECT_FALSE(Value("0").toBool());
    EXPECT_FALSE(Value("").toBool());
}

TEST(RuntimeValue, ColoursImagesAndStructuresAtTypedPorts)
{
    EXPECT_EQ(Value(0.25).convertedTo(PortType::Color).toColor(), (Color{0.25, 0.25, 0.25, 1}));
    EXPECT_TRUE(Value(Color{1, 0, 0, 1}).convertedTo(PortType::Image).isNull());  // only images are images
    const Value single = Value(4.0).convertedTo(PortType::Structure);
    ASSERT_TRUE(single.toStructure());
    EXPECT_EQ(single.toStructure()->count(), 1u);
    EXPECT_TRUE(Value().convertedTo(PortType::Structure).isNull());
    // Virtual ports keep anything.
    EXPECT_EQ(Value("x").convertedTo(PortType::Virtual), Value("x"));
}

TEST(RuntimeValue, ImagesCompareByIdentity)
{
    QImage pixels(2, 2, QImage::Format_ARGB32);
    pixels.fill(Qt::red);
    const Value a(runtime::Image::fromRaster(pixels));
    const Value b(runtime::Image::fromRaster(pixels));
    EXPECT_EQ(a, a);
    EXPECT_NE(a, b);  // same pixels, another image
    EXPECT_EQ(Value(std::nan("")), Value(std::nan("")));  // so NaN outputs do not look changed every frame
}

TEST(RuntimeValue, FromStoredPlistValues)
{
    plist::Dictionary color{{"red", 1.0}, {"green", 0.5}, {"blue", 0.0}, {"alpha", 0.25}};
    EXPECT_EQ(Value::fromPlist(plist::Value(color)).toColor(), (Color{1, 0.5, 0, 0.25}));
    plist::Dictionary rgbOnly{{"red", 1.0}, {"green", 0.0}, {"blue", 0.0}};
    EXPECT_EQ(Value::fromPlist(plist::Value(rgbOnly)).toColor().alpha, 1.0);
    // Other dictionaries are keyed structures, arrays unkeyed ones.
    plist::Dictionary other{{"red", 1.0}, {"name", "x"}};
    const auto keyed = Value::fromPlist(plist::Value(other)).toStructure();
    ASSERT_TRUE(keyed);
    EXPECT_EQ(keyed->member("name")->toString(), "x");
    const auto list = Value::fromPlist(plist::Value(plist::Array{plist::Value(1), plist::Value("two")})).toStructure();
    ASSERT_TRUE(list);
    EXPECT_EQ(list->memberAt(1)->toString(), "two");
    EXPECT_EQ(list->memberAt(2), nullptr);
    EXPECT_TRUE(Value::fromPlist(plist::Value::data("not an image")).isNull());
}

TEST(RuntimeValue, DeeplyNestedStructuresStopAtALimit)
{
    plist::Value nested = plist::Value(1);
    for (int i = 0; i < 10000; ++i) nested = plist::Value(plist::Array{nested});
    const Value v = Value::fromPlist(nested);  // must not exhaust the stack
    int depth = 0;
    for (auto s = v.toStructure(); s && s->count(); s = s->memberAt(0)->toStructure()) ++depth;
    EXPECT_LE(depth, 70);
}

TEST(RuntimeValue, VariantRoundTrip)
{
    EXPECT_EQ(Value::fromVariant(QColor(255, 0, 0, 128)).toVariant().value<QColor>().alpha(), 128);
    QVariantMap map{{"a", 1.0}, {"b", QVariantList{true, "x"}}};
    EXPECT_EQ(Value::fromVariant(map).toVariant().toMap(), map);
    EXPECT_FALSE(Value().toVariant().isValid());
    EXPECT_EQ(Value::fromVariant(7).toNumber(), 7.0);
}

}  // namespace
