#include "model/KeyframeValues.h"
#include "model/StoreValueCodec.h"

#include <QByteArray>
#include <QColor>
#include <QUrl>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

using namespace model;

namespace {

struct Reading {
    bool ok = false;
    QVariant value;
    QString error;
};

Reading readElement(const QByteArray& element)
{
    QXmlStreamReader xml(element);
    Reading reading;
    if (!xml.readNextStartElement()) return reading;
    reading.ok = storecodec::readValue(xml, reading.value, reading.error);
    return reading;
}

QVariant roundTrip(const QVariant& value)
{
    QByteArray bytes;
    QXmlStreamWriter writer(&bytes);
    storecodec::writeValue(writer, value);
    const Reading reading = readElement(bytes);
    EXPECT_TRUE(reading.ok) << bytes.toStdString() << " " << reading.error.toStdString();
    return reading.value;
}

template <class T> bool sameBits(T a, T b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

}  // namespace

TEST(StoreValueCodecNumbers, EveryKindOfNumberReadsBackExactly)
{
    using L = std::numeric_limits<double>;
    using F = std::numeric_limits<float>;
    for (qlonglong i : {qlonglong(0), qlonglong(-1), std::numeric_limits<qlonglong>::min(), std::numeric_limits<qlonglong>::max()})
        EXPECT_EQ(roundTrip(i), QVariant(i));
    for (qulonglong u : {qulonglong(0), std::numeric_limits<qulonglong>::max()}) EXPECT_EQ(roundTrip(u), QVariant(u));
    for (double d : {0.1, 1.0 / 3, -0.0, L::denorm_min(), L::min(), L::max(), -L::max(), L::infinity(), -L::infinity(), L::quiet_NaN()}) {
        const QVariant back = roundTrip(d);
        ASSERT_EQ(back.metaType().id(), QMetaType::Double);
        EXPECT_TRUE(sameBits(back.toDouble(), d)) << d;
    }
    for (float f : {0.1f, -0.0f, F::denorm_min(), F::min(), F::max(), -F::infinity(), F::quiet_NaN()}) {
        const QVariant back = roundTrip(f);
        ASSERT_EQ(back.metaType().id(), QMetaType::Float);
        EXPECT_TRUE(sameBits(back.toFloat(), f)) << f;
    }
    EXPECT_EQ(roundTrip(true), QVariant(true));
    EXPECT_EQ(roundTrip(false), QVariant(false));

    KeyframeValues table;
    table.insert(-1000000.f, F::max());
    table.insert(F::denorm_min(), -0.1f);
    table.insert(1.f / 3, F::min());
    const KeyframeValues back = roundTrip(QVariant::fromValue(table)).value<KeyframeValues>();
    ASSERT_EQ(back.keys(), table.keys());
    for (float key : table.keys()) EXPECT_TRUE(sameBits(back.value(key).toFloat(), table.value(key).toFloat())) << key;
}

TEST(StoreValueCodecNumbers, HandWrittenNumbersAreReadAsBefore)
{
    const struct {
        const char* element;
        QVariant expected;
    } accepted[] = {
        {"<v type=\"int\"> 42\n</v>", qlonglong(42)},
        {"<v type=\"double\">\t-1.5 </v>", -1.5},
        {"<v type=\"int\">&#xA0;7&#x2003;</v>", qlonglong(7)},  // Unicode spaces are trimmed too
        {"<v type=\"uint\">18446744073709551615</v>", std::numeric_limits<qulonglong>::max()},
        {"<v type=\"double\">0.000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000001</v>", 1e-96},
        {"<v type=\"color\"> 1  0.5 0\t 1 </v>", QColor::fromRgbF(1, 0.5f, 0, 1)},
        {"<v type=\"float-keyframes\">0  1.5 2 -3 </v>", QVariant::fromValue(KeyframeValues{{0.f, 1.5f}, {2.f, -3.f}})},
    };
    for (const auto& c : accepted) {
        const Reading reading = readElement(c.element);
        ASSERT_TRUE(reading.ok) << c.element << " " << reading.error.toStdString();
        if (c.expected.metaType() == QMetaType::fromType<KeyframeValues>())
            EXPECT_EQ(reading.value.value<KeyframeValues>(), c.expected.value<KeyframeValues>()) << c.element;
        else
            EXPECT_EQ(reading.value, c.expected) << c.element;
    }

    const struct {
        const char* element;
        const char* message;
    } refused[] = {
        {"<v type=\"int\"></v>", "invalid integer"},
        {"<v type=\"int\">4 2</v>", "invalid integer"},
        {"<v type=\"int\">0x10</v>", "invalid integer"},
        {"<v type=\"int\">+5</v>", "invalid integer"},
        {"<v type=\"int\">١٢</v>", "invalid integer"},  // Arabic-Indic digits
        {"<v type=\"int\">４２</v>", "invalid integer"},  // full-width digits
        {"<v type=\"uint\">-1</v>", "invalid integer"},
        {"<v type=\"uint\">18446744073709551616</v>", "invalid integer"},
        {"<v type=\"double\">1e</v>", "invalid number"},
        {"<v type=\"double\">1e-400</v>", "invalid number"},
        {"<v type=\"float\">1e39</v>", "invalid number"},
        {"<v type=\"double\">1,5</v>", "invalid number"},
        {"<v type=\"bool\">yes</v>", "invalid boolean"},
        {"<v type=\"color\">1 1 1</v>", "four components"},
        {"<v type=\"color\">1 1 1 2</v>", "invalid colour"},
        {"<v type=\"float-keyframes\">0 1 2</v>", "invalid keyframe numbers"},
        {"<v type=\"color-keyframes\">0 1 1 1 1.5</v>", "invalid keyframe numbers"},
        {"<v type=\"keyframes\"><value time=\"x\" type=\"int\">1</value></v>", "without a valid time"},
    };
    for (const auto& c : refused) {
        const Reading reading = readElement(c.element);
        EXPECT_FALSE(reading.ok) << c.element;
        EXPECT_TRUE(reading.error.contains(QLatin1String(c.message))) << c.element << ": " << reading.error.toStdString();
    }
}

TEST(StoreValueCodecText, TextIsWhatTheXmlSaysWhateverItsForm)
{
    const struct {
        const char* element;
        QVariant expected;
    } cases[] = {
        {"<v type=\"string\">a<![CDATA[<b>&]]>c&#x1F600;&lt;é</v>", QString::fromUtf8("a<b>&c😀<é")},
        {"<v type=\"string\"/>", QString()},
        {"<v type=\"string\">  </v>", QStringLiteral("  ")},
        {"<v type=\"data\"/>", QByteArray()},
        {"<v type=\"data\">AAEC\n  AwQ=</v>", QByteArray("\0\1\2\3\4", 5)},
        {"<v type=\"data\"><![CDATA[AAEC]]>AwQ=</v>", QByteArray("\0\1\2\3\4", 5)},
        {"<v type=\"null\"></v>", QVariant()},
        {"<v type=\"url\">file:///tmp/a%20b</v>", QUrl(QStringLiteral("file:///tmp/a%20b"))},
        {"<v type=\"strings\"><value type=\"string\">Grüße</value><value type=\"string\"/></v>",
         QStringList{QStringLiteral("Grüße"), QString()}},
    };
    for (const auto& c : cases) {
        const Reading reading = readElement(c.element);
        ASSERT_TRUE(reading.ok) << c.element << " " << reading.error.toStdString();
        EXPECT_EQ(reading.value.metaType(), c.expected.metaType()) << c.element;
        EXPECT_EQ(reading.value, c.expected) << c.element;
    }
    EXPECT_FALSE(readElement("<v type=\"string\">a<b/>c</v>").ok) << "a value's text holds no elements";
    EXPECT_FALSE(readElement("<v type=\"image\">AAEC</v>").ok) << "an image is PNG data";
}
