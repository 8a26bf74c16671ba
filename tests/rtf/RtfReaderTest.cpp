// The reader on small inputs: delimiters, groups, Unicode fallbacks, code
// pages, tables, destinations and paragraph properties.
#include "RtfTestSupport.h"

using namespace rtftest;

namespace {

// A body with Arial as \f0, Times as \f1 and red as \cf1.
QByteArray doc(const char* body)
{
    return QByteArray("{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fswiss Arial;}{\\f1\\froman Times;}}"
                      "{\\colortbl;\\red255\\green0\\blue0;}") + body + "}";
}

QString textOf(const char* body) { return readParagraphs(doc(body)).at(0).text(); }

}  // namespace

TEST(RtfReader, DelimitersEscapesAndSymbols)
{
    EXPECT_EQ(textOf("\\b  x\\b0;\\li-y\\zzz-12 z"), u(" x;-yz"));  // one space is the delimiter; unknown words vanish
    EXPECT_EQ(textOf("\\'e9\\'C9\\{\\}\\\\\\~\\-\\_\\tab\\line\\emdash\\endash\\bullet\\lquote\\rdblquote"),
        u("éÉ{}\\\u00A0\u00AD\u2011\t\u2028—–•‘”"));
    EXPECT_EQ(texts(readParagraphs(doc("a\r\nb\\par c\\\nd\\\r\ne\\sect f\\page g"))),
        (QStringList{"ab", "c", "d", "e", "f", "g"}));  // "\" + line break is \par
    EXPECT_EQ(textOf("a\\'0d\\'0ab\\u10?c\x01\x7f\\u65532?"), u("abc"));  // control characters are not text
}

TEST(RtfReader, GroupsRestoreTheOuterStateAtEveryDepth)
{
    const Span arial = look("Arial", 12);
    EXPECT_EQ(readParagraphs(doc("a{\\b b{\\i\\fs40\\cf1\\f1 c}d{\\plain e}f}g")).at(0).spans,
        (std::vector<Span>{arial.t("a"), arial.withBold().t("b"),
            look("Times", 20).withBold().withItalic().withColour(255, 0, 0).t("c"), arial.withBold().t("d"),
            arial.t("e"), arial.withBold().t("f"), arial.t("g")}));
    const auto s = readParagraphs(doc("\\b1 a\\b0 b\\ulwave c\\ul0 d\\uldb e\\ulnone f\\strike g\\striked0 h")).at(0).spans;
    ASSERT_EQ(s.size(), 8u);
    EXPECT_EQ((std::vector<bool>{s[0].bold, s[1].bold, s[2].underline, s[3].underline, s[4].underline, s[5].underline,
                  s[6].strike, s[7].strike}),
        (std::vector<bool>{true, false, true, false, true, false, true, false}));
}

TEST(RtfReader, UnicodeEscapesAndTheirFallbacks)
{
    EXPECT_EQ(textOf("\\u233?x"), u("éx"));
    EXPECT_EQ(textOf("\\u-4064?"), QString(QChar(0xF020)));          // negative: 65536 + N
    EXPECT_EQ(textOf("\\u55357?\\u-8704?"), u("\xF0\x9F\x98\x80"));  // a surrogate pair, either sign
    EXPECT_EQ(textOf("\\uc2\\u8364\\'80\\'81x"), u("€x"));           // \'hh count one character each
    EXPECT_EQ(textOf("\\uc1\\u8364\\bullet x"), u("€x"));            // so does a control word
    EXPECT_EQ(textOf("\\uc2\\u8364?xy"), u("€y"));                   // a text run is split
    EXPECT_EQ(textOf("\\uc0\\u8364 x"), u("€x"));
    EXPECT_EQ(textOf("\\uc3\\u8364a{b}c"), u("€bc"));          // a brace ends the fallback
    EXPECT_EQ(textOf("{\\uc2 \\u8364??}\\u8364?x"), u("€€x"));  // \uc belongs to its group
    EXPECT_EQ(textOf("\\u99999999999999?x\\u-"), u("x-"));     // clamped out of range: dropped; a bare \u is no escape
}

TEST(RtfReader, CodePagesFromTheHeaderAndFromFontCharsets)
{
    EXPECT_EQ(texts(readParagraphs("{\\rtf1\\ansi\\ansicpg1251 \\'cf\\'f0\\'e8}")), QStringList{u("При")});
    EXPECT_EQ(texts(readParagraphs("{\\rtf1\\pc \\'82}")), QStringList{u("é")});
    // The font's charset wins over the document's code page, only while the font is current.
    EXPECT_EQ(texts(readParagraphs("{\\rtf1\\ansi{\\fonttbl{\\f0 A;}{\\f1\\fcharset238 B;}{\\f2\\cpg1253 C;}}"
                                   "\\'e8{\\f1\\'e8}{\\f2\\'e8}\\'e8}")),
        QStringList{u("èčθè")});
    EXPECT_EQ(texts(readParagraphs("{\\rtf1{\\fonttbl{\\f0\\fcharset128 Gothic;}}\\f0\\'82\\'a0}")), QStringList{u("あ")});
    EXPECT_EQ(texts(readParagraphs("{\\rtf1\\ansicpg77777 \\'e9}")), QStringList{u("é")});  // unknown: read as 1252
}

TEST(RtfReader, FontAndColourTables)
{
    // Cocoa's entries without braces, a name in escapes, a missing ';', an unknown number.
    const auto s = readParagraphs("{\\rtf1\\deff3{\\fonttbl\\f0\\fcharset0 Helvetica;\\f1 Caf\\'e9 Sans;{\\f2 Noto Sans}"
                                  "{\\f3{\\*\\panose 0000}Gill Sans{\\*\\falt Arial};}\\f4 Helvetica-BoldOblique;}"
                                  "\\f0 a\\f1 b\\f2 c\\plain d\\f9 e\\f4 f}")
                       .at(0)
                       .spans;
    QStringList families;
    for (const Span& span : s) families << span.family;
    EXPECT_EQ(families, (QStringList{"Helvetica", u("Café Sans"), "Noto Sans", "Gill Sans",
                            QTextDocument().defaultFont().family(), "Helvetica"}));
    EXPECT_TRUE(s.back().bold && s.back().italic);

    const auto c = readParagraphs("{\\rtf1{\\colortbl;\\red300\\green-4\\blue17;;\\blue9;}"
                                  "\\cf1 a\\cf2 b\\cf3 c\\cf9 d\\cf1 e{\\cf0 f}}")
                       .at(0)
                       .spans;
    ASSERT_EQ(c.size(), 6u);
    // Clamped components; an empty entry, an index past the table and 0 are the automatic colour.
    EXPECT_EQ((std::vector<std::optional<QColor>>{c[0].colour, c[1].colour, c[2].colour, c[3].colour, c[4].colour, c[5].colour}),
        (std::vector<std::optional<QColor>>{QColor(255, 0, 17), {}, QColor(0, 0, 9), {}, QColor(255, 0, 17), {}}));
}

TEST(RtfReader, SizesAreHalfPointsAndClamped)
{
    const auto s = readParagraphs(doc("\\fs21 a\\fs0 b\\fs99999999999999999999 c\\fs d")).at(0).spans;
    ASSERT_EQ(s.size(), 4u);
    EXPECT_EQ((std::vector<double>{s[0].points, s[1].points, s[2].points, s[3].points}),
        (std::vector<double>{10.5, rtf::kMinPointSize, rtf::kMaxPointSize, 12}));
}

TEST(RtfReader, DestinationsThatAreNotTextAreSkipped)
{
    EXPECT_EQ(textOf("a{\\*\\unknowndest b{c}\\par}d{\\*\\x y}z"), u("adz"));
    EXPECT_EQ(textOf("a{\\info{\\title t}}b{\\stylesheet{\\s1 Heading;}}c{\\header h}{\\footnote n}"), u("abc"));
    EXPECT_EQ(textOf("a{\\pict\\pngblip 89504e47}b{\\*\\shppict{\\pict 00}}{\\nonshppict{\\pict\\bin3 }{}}}c"), u("abc"));
    EXPECT_EQ(textOf("{\\field{\\*\\fldinst HYPERLINK \"x\"}{\\fldrslt link}}{\\field{\\fldinst PAGE}{\\fldrslt 3}}"), u("link3"));
    EXPECT_EQ(textOf("a\\v hidden\\v0 b"), u("ab"));
}

TEST(RtfReader, ParagraphsTakeTheAlignmentInForceAtTheirMark)
{
    std::vector<Qt::Alignment> alignments;
    for (const auto& p : readParagraphs(doc("\\qc a\\par\\pard b\\par\\qr c\\par\\qj d\\par\\pard\\qd e\\par{\\qc f\\par}g")))
        alignments.push_back(p.alignment);
    EXPECT_EQ(alignments, (std::vector<Qt::Alignment>{Qt::AlignHCenter, Qt::AlignLeft, Qt::AlignRight, Qt::AlignJustify,
                              Qt::AlignJustify, Qt::AlignHCenter, Qt::AlignJustify}));
    EXPECT_EQ(readParagraphs(doc("a\\par\\qr")).back().alignment, Qt::AlignRight);  // an empty last paragraph: at the end
    EXPECT_TRUE(readParagraphs(doc("\\b a\\par\\pard b")).back().spans.at(0).bold);  // \pard keeps the character format
}

TEST(RtfReader, HeaderVariantsAndTrailingData)
{
    EXPECT_EQ(texts(readParagraphs("\xEF\xBB\xBF  {\\rtf1 a}")), QStringList{"a"});
    EXPECT_EQ(texts(readParagraphs("{\\rtf a}after{\\b junk}")), QStringList{"a"});
}
