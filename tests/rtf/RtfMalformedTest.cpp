// Damaged and hostile input: an error where the data cannot be RTF or would
// cost more than it is worth, otherwise the text read so far; never a crash.
#include "RtfTestSupport.h"

#include <random>

using namespace rtftest;

namespace {

QString errorFor(const QByteArray& input)
{
    QString error;
    EXPECT_FALSE(rtf::read(input, &error)) << "accepted: " << input.left(80).toStdString();
    EXPECT_FALSE(error.isEmpty());
    return error;
}

QByteArray nested(int depth) { return "{\\rtf1 " + QByteArray(depth - 1, '{') + "x" + QByteArray(depth - 1, '}') + "}"; }

}  // namespace

TEST(RtfMalformed, DataThatIsNotRtfIsRefused)
{
    for (const char* input : {"", "plain text", "{\\rtfx}", "{{\\rtf1 x}}", "\\rtf1 x", "{\\*\\rtf1 x}", "  \n  "})
        EXPECT_TRUE(errorFor(input).startsWith(QStringLiteral("not RTF"))) << input;
    EXPECT_EQ(rtf::read("plain"), nullptr);  // no error string wanted
}

TEST(RtfMalformed, MissingBracesAndTruncatedEscapesKeepWhatWasRead)
{
    EXPECT_EQ(texts(readParagraphs("{\\rtf1 a\\par {\\b b{\\i c")), (QStringList{"a", "bc"}));
    EXPECT_EQ(texts(readParagraphs("{\\rtf1 a}}}}")), QStringList{"a"});
    EXPECT_EQ(texts(readParagraphs("{\\rtf1{\\fonttbl{\\f0 Arial;}")), QStringList{""});
    EXPECT_EQ(texts(readParagraphs("{\\rtf1 a\\'")), QStringList{"a"});
    EXPECT_EQ(texts(readParagraphs("{\\rtf1 a\\'e")), QStringList{"ae"});  // the broken escape goes, its digit stays
    EXPECT_EQ(texts(readParagraphs("{\\rtf1 a\\'zz}")), QStringList{"azz"});
    EXPECT_EQ(texts(readParagraphs("{\\rtf1 a\\")), QStringList{"a"});
    EXPECT_EQ(texts(readParagraphs("{\\rtf1 \\uc5\\u8364 ab")), QStringList{u("€")});
}

TEST(RtfMalformed, BinDataIsSkippedRawButMayNotRunPastTheEnd)
{
    EXPECT_EQ(texts(readParagraphs("{\\rtf1 {\\pict\\bin4 {}\\\\}a\\bin0 b\\bin-5 c}")), QStringList{"abc"});
    EXPECT_TRUE(errorFor("{\\rtf1 {\\pict\\bin100 abc}}").contains(QStringLiteral("\\bin")));
    errorFor("{\\rtf1 \\bin99999999999999999999 x}");
    errorFor("{\\rtf1 {\\*\\foo\\bin5 ab}}");  // in a skipped group too: only \bin knows the data's length
}

TEST(RtfMalformed, NestingDeeperThanTheLimitIsAnErrorNotAStackOverflow)
{
    EXPECT_EQ(texts(readParagraphs(nested(rtf::kMaxGroupDepth))), QStringList{"x"});
    EXPECT_TRUE(errorFor(nested(rtf::kMaxGroupDepth + 1)).contains(QStringLiteral("nested")));
    errorFor("{\\rtf1 " + QByteArray(1'000'000, '{'));
    EXPECT_TRUE(rtf::read("{\\rtf1 " + QByteArray("{}").repeated(100'000) + "}"));  // depth never accumulates
}

TEST(RtfMalformed, EveryPrefixOfEveryFixtureReadsOrFailsCleanly)
{
    for (const char* name : {"cocoa_textedit.rtf", "word.rtf", "wordpad.rtf", "libreoffice.rtf"}) {
        const QByteArray whole = fixture(name);
        for (qsizetype n = 0; n <= whole.size(); ++n) {
            QString error;
            const auto document = rtf::read(whole.left(n), &error);
            // Until "{\rtf" is complete it is not RTF; after that only a cut \bin may fail.
            EXPECT_EQ(bool(document), n >= 5 && error.isEmpty()) << name << " prefix " << n;
        }
    }
}

TEST(RtfMalformed, RandomDamageNeverCrashes)
{
    const QByteArray original = fixture("word.rtf") + fixture("cocoa_textedit.rtf");
    std::mt19937 random(20240501);
    const char alphabet[] = "{}\\'*; abu0123456789-\r\n\xE9";
    for (int round = 0; round < 300; ++round) {
        QByteArray damaged = original;
        for (int edit = 0; edit < 20; ++edit)
            damaged[qsizetype(random() % damaged.size())] = alphabet[random() % (sizeof alphabet - 1)];
        if (const auto document = rtf::read(damaged)) {
            const auto reread = rtf::read(rtf::write(*document));  // whatever was read must write and read back
            ASSERT_TRUE(reread) << "round " << round;
            EXPECT_EQ(reread->toPlainText(), document->toPlainText()) << "round " << round;
        }
    }
}
