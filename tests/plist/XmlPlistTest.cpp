#include "plist/PropertyList.h"

#include "../support/PlistPrinting.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace plist;

namespace {

std::string wrap(std::string_view body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n" +
           std::string(body) + "\n</plist>\n";
}

Value parse(std::string_view body)
{
    std::string error;
    auto v = readXml(wrap(body), &error);
    EXPECT_TRUE(v.has_value()) << error;
    return v.value_or(Value());
}

std::string errorFor(std::string_view document)
{
    std::string error;
    auto v = readXml(document, &error);
    EXPECT_FALSE(v.has_value()) << "accepted: " << document;
    return error;
}

}  // namespace

TEST(XmlPlist, ReadsEveryScalarKind)
{
    const Value v = parse(R"(<dict>
        <key>t</key><true/>  <key>f</key><false/>
        <key>i</key><integer>-42</integer>
        <key>big</key><integer>18446744073709551615</integer>
        <key>min</key><integer>-9223372036854775808</integer>
        <key>hex</key><integer>0x1F</integer>
        <key>r</key><real>2.5e-3</real>
        <key>inf</key><real>-infinity</real>
        <key>s</key><string>a &amp; b &lt;c&gt; &#233;&#x1F600;</string>
        <key>empty</key><string/>
        <key>d</key><data>
            aGVs
            bG8=
        </data>
        <key>date</key><date>2001-01-02T00:00:01Z</date>
        </dict>)");
    EXPECT_TRUE(v.value("t").toBool());
    EXPECT_TRUE(v.value("f").isBoolean());
    EXPECT_FALSE(v.value("f").toBool());
    EXPECT_EQ(v.value("i").toInt(), -42);
    EXPECT_TRUE(v.value("big").isUnsignedInteger());
    EXPECT_EQ(v.value("big").toUnsigned(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(v.value("min").toInt(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(v.value("hex").toInt(), 31);
    EXPECT_DOUBLE_EQ(v.value("r").toDouble(), 0.0025);
    EXPECT_TRUE(std::isinf(v.value("inf").toDouble()) && v.value("inf").toDouble() < 0);
    EXPECT_EQ(v.value("s").string(), "a & b <c> \xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_EQ(v.value("empty").string(), "");
    EXPECT_TRUE(v.value("empty").isString());
    EXPECT_EQ(v.value("d").dataBytes(), "hello");
    EXPECT_DOUBLE_EQ(v.value("date").dateValue(), 86401.0);
}

TEST(XmlPlist, ReadsContainersCommentsCdataAndLineEnds)
{
    const Value v = parse("<!-- leading --><array>\n<dict/><array/><string><![CDATA[<raw> & stuff]]></string>"
                          "<string>a\r\nb\rc</string><!-- between --><dict><key>CF$UID</key><integer>7</integer></dict></array>");
    ASSERT_EQ(v.size(), 5u);
    EXPECT_TRUE(v.array()[0].isDictionary());
    EXPECT_TRUE(v.array()[1].isArray());
    EXPECT_EQ(v.array()[2].string(), "<raw> & stuff");
    EXPECT_EQ(v.array()[3].string(), "a\nb\nc");
    EXPECT_TRUE(v.array()[4].isUid());
    EXPECT_EQ(v.array()[4].uidValue(), 7u);
}

TEST(XmlPlist, UnsortedAndRepeatedKeysReadAsASortedDictionary)
{
    const Value v = parse("<dict><key>b</key><integer>1</integer><key>a</key><integer>2</integer>"
                          "<key>c</key><dict><key>z</key><true/><key>y</key><false/></dict>"
                          "<key>a</key><integer>3</integer><key>&#98;</key><integer>4</integer></dict>");
    EXPECT_EQ(v.size(), 3u);
    EXPECT_EQ(v.value("a").toInt(), 3) << "the last of a repeated key wins";
    EXPECT_EQ(v.value("b").toInt(), 4) << "also when spelled with a character reference";
    EXPECT_EQ(v.value("c").value("y"), Value(false));
    EXPECT_EQ(v.value("c").value("z"), Value(true));
    EXPECT_EQ(v.dictionary().begin()->first, "a");
}

TEST(XmlPlist, DictionariesShareTheirKeyNames)
{
    const Value v = parse("<array><dict><key>inputPortStates</key><true/></dict>"
                          "<dict><key>inputPortStates</key><false/></dict></array>");
    ASSERT_EQ(v.size(), 2u);
    EXPECT_EQ(v.array()[0].dictionary().begin()->first.data(), v.array()[1].dictionary().begin()->first.data());
}

TEST(XmlPlist, DataMayBreakItsGroupsOfFourAnywhere)
{
    EXPECT_EQ(parse("<data>aGVsbG8gd29ybGQ=</data>").dataBytes(), "hello world");
    EXPECT_EQ(parse("<data>a GVs\n\tbG8g d29y bGQ =</data>").dataBytes(), "hello world");
    EXPECT_EQ(parse("<data>aGVsbG8gd29ybGQh</data>").dataBytes(), "hello world!");
    EXPECT_EQ(parse("<data/>").dataBytes(), "");
    EXPECT_NE(errorFor(wrap("<data>aGVsbG8=aGVs</data>")).find("base64"), std::string::npos) << "data after padding";
}

TEST(XmlPlist, WriterProducesThePlatformLayout)
{
    Dictionary d;
    d["zeta"] = Value(1);
    d["alpha"] = Value(std::string("x<y"));
    d["empty"] = Value::emptyArray();
    d["single"] = Value::singleReal(0.1f);
    const std::string xml = *writeXml(Value(std::move(d)));
    EXPECT_EQ(xml,
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n"
              "<dict>\n"
              "\t<key>alpha</key>\n"
              "\t<string>x&lt;y</string>\n"
              "\t<key>empty</key>\n"
              "\t<array/>\n"
              "\t<key>single</key>\n"
              "\t<real>0.10000000149011612</real>\n"
              "\t<key>zeta</key>\n"
              "\t<integer>1</integer>\n"
              "</dict>\n"
              "</plist>\n");
}

TEST(XmlPlist, WriterWrapsDataInIndentedLinesOf68)
{
    std::string fifty, fiftyTwo;
    for (int i = 0; i < 52; ++i) (i < 50 ? fifty : fiftyTwo) += char(i);
    fiftyTwo = fifty + fiftyTwo;
    // 50 bytes fill one line exactly; 52 spill four padded characters onto
    // a second; empty data is an empty element.
    const Value d(Dictionary{{"a", Value::data(fifty)}, {"b", Value::data(fiftyTwo)}, {"c", Value::data("")}});
    const std::string xml = *writeXml(d);
    const std::string full = "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDE";
    EXPECT_NE(xml.find("<dict>\n"
                       "\t<key>a</key>\n"
                       "\t<data>\n"
                       "\t" + full + "=\n"
                       "\t</data>\n"
                       "\t<key>b</key>\n"
                       "\t<data>\n"
                       "\t" + full + "y\n"
                       "\tMw==\n"
                       "\t</data>\n"
                       "\t<key>c</key>\n"
                       "\t<data>\n"
                       "\t</data>\n"
                       "</dict>\n"),
              std::string::npos)
        << xml;
    EXPECT_EQ(*readXml(xml), d);
}

TEST(XmlPlist, LargeDataIsWrittenWithoutIndentation)
{
    // Pictures deep inside a composition: tabs would add a fifth to their size.
    std::string bytes(65 * 1024 + 7, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = char(i * 31 % 251);
    const Value d(Dictionary{{"outer", Value(Dictionary{{"inner", Value(Dictionary{{"picture", Value::data(bytes)}})}})},
                             {"small", Value::data("abc")}});
    const std::string xml = *writeXml(d);
    const std::size_t start = xml.find("<data>\n", xml.find("picture")) + 7;
    EXPECT_NE(xml[start], '\t') << "the first line of the large blob";
    EXPECT_EQ(xml.find('\t', start), xml.find("</data>", start) - 3) << "no tab before the closing tag's own indentation";
    EXPECT_NE(xml.find("\t<data>\n\tYWJj\n\t</data>"), std::string::npos) << "small data keeps the platform's layout";
    EXPECT_EQ(*readXml(xml), d);
}

TEST(XmlPlist, RoundTripsValuesThatNeedCare)
{
    Dictionary d;
    d["cr"] = Value(std::string("line\r\nend"));
    d["nan"] = Value(std::numeric_limits<double>::quiet_NaN());
    d["tiny"] = Value(5e-324);
    d["huge"] = Value(1.7976931348623157e308);
    d["negzero"] = Value(-0.0);
    d["u"] = Value(static_cast<unsigned long long>(1) << 63);
    d["uid"] = Value::uid(3);
    d["data"] = Value::data(std::string(200, '\x01') + std::string("\0\xff", 2));
    d["date"] = Value::date(-86400.0 * 365);
    d["nested"] = Value(Array{Value(Array{Value(Dictionary{{"k", Value(true)}})})});
    const Value original(std::move(d));
    std::string error;
    const auto xml = writeXml(original, &error);
    ASSERT_TRUE(xml) << error;
    const auto back = readXml(*xml, &error);
    ASSERT_TRUE(back) << error;
    EXPECT_EQ(*back, original);
    EXPECT_TRUE(std::signbit(back->value("negzero").toDouble()));
}

TEST(XmlPlist, NullCannotBeWritten)
{
    std::string error;
    EXPECT_FALSE(writeXml(Value(Array{Value()}), &error));
    EXPECT_NE(error.find("null"), std::string::npos);
}

TEST(XmlPlist, BadInputIsAnErrorWithALine)
{
    EXPECT_EQ(errorFor(wrap("<dict>\n<key>a</key>\n<foo/>\n</dict>")), "line 6: unknown tag <foo>");
    EXPECT_NE(errorFor(wrap("<dict><key>a</key>")).find("line"), std::string::npos);
    EXPECT_NE(errorFor(wrap("<integer>12x</integer>")).find("invalid integer"), std::string::npos);
    EXPECT_NE(errorFor(wrap("<integer>-9223372036854775809</integer>")).find("out of range"), std::string::npos);
    EXPECT_NE(errorFor(wrap("<real>one</real>")).find("invalid real"), std::string::npos);
    EXPECT_NE(errorFor(wrap("<string>a &bogus; b</string>")).find("unknown entity"), std::string::npos);
    EXPECT_NE(errorFor(wrap("<string>&#xD800;</string>")).find("character reference"), std::string::npos);
    EXPECT_NE(errorFor(wrap("<data>!!!</data>")).find("base64"), std::string::npos);
    EXPECT_NE(errorFor(wrap("<date>yesterday</date>")).find("invalid date"), std::string::npos);
    EXPECT_NE(errorFor(wrap("<dict><integer>1</integer></dict>")).find("expected <key>"), std::string::npos);
    EXPECT_NE(errorFor(wrap("<array><string>x</array>")).find("line"), std::string::npos);
    EXPECT_NE(errorFor(wrap("<true>yes</true>")).find("</true>"), std::string::npos);
    EXPECT_NE(errorFor(wrap("<string>ok</string><string>again</string>")).find("expected </plist>"), std::string::npos);
    EXPECT_NE(errorFor("").find("expected an XML element"), std::string::npos);
    EXPECT_NE(errorFor("<plist><!-- never closed").find("unterminated comment"), std::string::npos);
    EXPECT_EQ(errorFor(wrap("<string>bad \xC3\x28 byte</string>")), "line 4: invalid UTF-8");
    EXPECT_NE(errorFor(wrap("<string>overlong \xC0\xAF</string>")).find("invalid UTF-8"), std::string::npos);
}

TEST(XmlPlist, NestingIsLimited)
{
    std::string deep;
    for (int i = 0; i < kMaxNestingDepth; ++i) deep += "<array>";
    for (int i = 0; i < kMaxNestingDepth; ++i) deep += "</array>";
    std::string error;
    EXPECT_TRUE(readXml(wrap(deep), &error)) << error;
    const std::string tooDeep = "<array>" + deep + "</array>";
    EXPECT_NE(errorFor(wrap(tooDeep)).find("nesting deeper than 512"), std::string::npos);
    // A hostile file of a million open tags fails fast instead of overflowing the stack.
    std::string hostile;
    for (int i = 0; i < 1000000; ++i) hostile += "<array>";
    EXPECT_NE(errorFor(hostile).find("nesting"), std::string::npos);
}

TEST(XmlPlist, AcceptsABareRootWithoutThePlistElement)
{
    std::string error;
    auto v = readXml("<?xml version=\"1.0\"?><dict><key>k</key><integer>3</integer></dict>", &error);
    ASSERT_TRUE(v) << error;
    EXPECT_EQ(v->value("k").toInt(), 3);
}
