// The hand-written samples in tests/fixtures/rtf, one per producer style:
// every paragraph with its runs as that producer's own reader would show them.
#include "RtfTestSupport.h"

using namespace rtftest;

TEST(RtfFixture, CocoaTextEdit)
{
    const auto p = readParagraphs(fixture("cocoa_textedit.rtf"));
    ASSERT_EQ(p.size(), 7u);
    EXPECT_EQ(p[0], (Paragraph{Qt::AlignLeft, {look("Helvetica", 12).t("Plain Helvetica 12")}}));
    // "Helvetica-Bold" is the family Helvetica in bold.
    EXPECT_EQ(p[1], (Paragraph{Qt::AlignHCenter, {look("Helvetica", 18).withBold().withColour(251, 2, 7).t("Red bold title")}}));
    // \'hh in code page 1252, \uc0 (no fallback), a surrogate pair as two positive \uN.
    EXPECT_EQ(p[2], (Paragraph{Qt::AlignRight, {look("Times", 14).withItalic().t("Café – naïve € ∞ and \xF0\x9F\x98\x80")}}));
    // \ulc and \strikec (decoration colours) switch nothing on.
    const Span menlo = look("Menlo", 11).withColour(16, 60, 192);
    EXPECT_EQ(p[3], (Paragraph{Qt::AlignJustify, {menlo.withUnderline().t("underlined"), menlo.t(" "),
                                                     menlo.withStrike().t("struck"), menlo.t(" plain")}}));
    // \fcharset134 makes the \'hh pairs GB2312; a raw tab stays.
    EXPECT_EQ(p[4], (Paragraph{Qt::AlignLeft, {look("PingFangSC", 12).t("你好\t"),
                                                  look("HelveticaNeue-Light", 12).t("tab before light")}}));
    EXPECT_EQ(p[5], Paragraph{});
    EXPECT_EQ(p[6], (Paragraph{Qt::AlignLeft, {look("Helvetica", 12).t("last line")}}));
}

TEST(RtfFixture, OlderCocoaAndMacRoman)
{
    const Span white = look("Helvetica", 36).withColour(255, 255, 255);
    EXPECT_EQ(readParagraphs(fixture("cocoa_legacy.rtf")),
        (std::vector<Paragraph>{{Qt::AlignLeft, {white.t("Lower third")}},
            {Qt::AlignLeft, {look("LucidaGrande", 24).withColour(255, 255, 255).t("Caption — 2009")}}}));
    EXPECT_EQ(texts(readParagraphs(fixture("mac_roman.rtf"))), QStringList{u("Café crème – naïve €")});
}

TEST(RtfFixture, Word)
{
    const auto p = readParagraphs(fixture("word.rtf"));
    ASSERT_EQ(p.size(), 5u) << testing::PrintToString(texts(p));
    // Style sheet, info, theme data and the like leave no text; {\*\falt} is not part of the name.
    EXPECT_EQ(p[0], (Paragraph{Qt::AlignHCenter, {look("Calibri", 16).withBold().withColour(255, 0, 0).t("Word heading")}}));
    // \u8364\'80: the \'80 is the fallback (\uc1) and skipped; \~ \emdash \tab are characters.
    const Span arial = look("Arial", 11);
    EXPECT_EQ(p[1], (Paragraph{Qt::AlignJustify, {arial.t("Arial text with "), arial.withItalic().t("café crème"),
                                                     arial.t(", a "), arial.withStrike().t("struck"),
                                                     arial.t(" word, “quotes” and € 5 ≥ 3\u00A0—\tend")}}));
    // A field shows its result; the instruction and its data are dropped.
    EXPECT_EQ(p[2], (Paragraph{Qt::AlignRight, {look("Calibri", 11).withUnderline().withColour(5, 99, 193).t("example link")}}));
    // \fcharset204 reads \'hh as Cyrillic; the pictures (one in \bin data holding braces) vanish.
    EXPECT_EQ(p[3], (Paragraph{Qt::AlignLeft, {look("Times New Roman Cyr", 11).t("Привет "), arial.t("мир")}}));
    EXPECT_EQ(p[4].text(), QString());
}

TEST(RtfFixture, WordPad)
{
    const auto p = readParagraphs(fixture("wordpad.rtf"));
    ASSERT_EQ(p.size(), 5u) << testing::PrintToString(texts(p));
    const Span calibri = look("Calibri", 14);
    EXPECT_EQ(p[0], (Paragraph{Qt::AlignHCenter, {calibri.withBold().t("WordPad title")}}));
    EXPECT_EQ(p[1], (Paragraph{Qt::AlignLeft, {calibri.withItalic().withColour(255, 0, 0).t("Red italic"), calibri.t(" and "),
                                                  calibri.withUnderline().t("underlined"), calibri.t(" and "),
                                                  calibri.withStrike().t("struck")}}));
    EXPECT_EQ(p[2], (Paragraph{Qt::AlignLeft, {look("Arial", 14).t("Привет"), calibri.t(" € "),
                                                  look("Arial", 14).withColour(0, 77, 187).t("euro in blue")}}));
    // The bullet text of old-style numbering is shown; its definition is not.
    EXPECT_EQ(p[3].text(), u("·\tbullet item"));
    EXPECT_EQ(p[4].text(), QString());  // and the NUL after the last brace is ignored
}

TEST(RtfFixture, LibreOffice)
{
    const auto p = readParagraphs(fixture("libreoffice.rtf"));
    ASSERT_EQ(p.size(), 4u) << testing::PrintToString(texts(p));
    EXPECT_EQ(p[0], (Paragraph{Qt::AlignHCenter, {look("Liberation Sans", 14).t("LibreOffice heading")}}));
    const Span serif = look("Liberation Serif", 12);
    EXPECT_EQ(p[1], (Paragraph{Qt::AlignJustify,
                        {serif.withBold().t("Bold"), serif.t(" and "), serif.withColour(201, 33, 30).t("coloured"),
                         serif.t(" text, "), serif.withItalic().t("café naïve"), serif.t(" "),
                         serif.withUnderline().t("under"), serif.withStrike().t(" struck")}}));
    // \uc2 skips both \'3f after \u8734.
    EXPECT_EQ(p[2], (Paragraph{Qt::AlignRight, {serif.withUnderline().withColour(0, 0, 128).t("link"), serif.t(" "),
                                                   look("Liberation Serif", 10).withColour(114, 159, 207).t("small "),
                                                   serif.t("∞ infinity")}}));
    EXPECT_EQ(p[3].text(), QString());
}

TEST(RtfFixture, EveryFixtureSurvivesAWriteAndReadUnchanged)
{
    for (const char* name : {"cocoa_textedit.rtf", "cocoa_legacy.rtf", "mac_roman.rtf", "word.rtf", "wordpad.rtf",
             "libreoffice.rtf"}) {
        const auto original = rtf::read(fixture(name));
        ASSERT_TRUE(original) << name;
        const QByteArray written = rtf::write(*original);
        EXPECT_EQ(readParagraphs(written), paragraphsOf(*original)) << name << "\n" << written.toStdString();
    }
}
