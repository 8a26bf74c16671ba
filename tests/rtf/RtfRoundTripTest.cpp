// The writer's output, and both round trips: read(write(doc)) gives the
// document back, write(read(rtf)) keeps what the RTF said.
#include "RtfTestSupport.h"

#include <QTextCursor>
#include <QTextDocumentFragment>

using namespace rtftest;

namespace {

QTextCharFormat format(const char* family, double points, std::initializer_list<QTextFormat::Property> on = {})
{
    QTextCharFormat f;
    f.setFontFamilies({QString::fromUtf8(family)});
    f.setFontPointSize(points);
    for (const auto property : on) {
        if (property == QTextFormat::FontWeight) f.setFontWeight(QFont::Bold);
        else f.setProperty(property, true);
    }
    return f;
}

QTextBlockFormat aligned(Qt::Alignment alignment)
{
    QTextBlockFormat f;
    f.setAlignment(alignment);
    return f;
}

// Every property in several combinations, text that needs each kind of
// escape, runs starting with what could join a control word, empty paragraphs.
std::unique_ptr<QTextDocument> richDocument()
{
    auto document = std::make_unique<QTextDocument>();
    QTextCursor c(document.get());
    c.setBlockFormat(aligned(Qt::AlignHCenter));
    QTextCharFormat title = format("Helvetica", 36, {QTextFormat::FontWeight});
    title.setForeground(QColor(250, 10, 20));
    c.insertText(u("Title {with} \\braces\\"), title);

    c.insertBlock(aligned(Qt::AlignJustify));
    const QTextCharFormat body = format("Times New Roman", 10.5);
    c.insertText(u(" leading space, digits after a switch: "), body);
    c.insertText(u("42 -7 café € ∞ ≥ 😀 Ωmega"), format("Times New Roman", 10.5, {QTextFormat::FontItalic}));
    QTextCharFormat underlined = format("Times New Roman", 10.5, {QTextFormat::FontUnderline});
    underlined.setForeground(QColor(0, 128, 255));
    c.insertText(u("\ttabbed\u2028new line\u00A0nbsp\u00ADsoft\u2011hyphen"), underlined);
    c.insertText(u("日本語 "), format("Noto Sans CJK SC", 20, {QTextFormat::FontStrikeOut}));
    c.insertText(u("trailing  "), body);

    c.insertBlock(aligned(Qt::AlignRight));
    c.insertBlock(QTextBlockFormat{});
    QTextCharFormat all = format("Helvetica", 12, {QTextFormat::FontWeight, QTextFormat::FontItalic,
                                                    QTextFormat::FontUnderline, QTextFormat::FontStrikeOut});
    all.setForeground(QColor(250, 10, 20));
    c.insertText(u("everything; at once"), all);
    return document;
}

}  // namespace

TEST(RtfRoundTrip, ReadingWhatWasWrittenGivesTheDocumentBack)
{
    const auto document = richDocument();
    EXPECT_EQ(readParagraphs(rtf::write(*document)), paragraphsOf(*document)) << rtf::write(*document).toStdString();

    // Unset properties are written as the document's default font shows them.
    QTextDocument plain;
    plain.setDefaultFont(QFont(QStringLiteral("DejaVu Serif"), 15));
    QTextCursor(&plain).insertText(u("no format at all"));
    EXPECT_EQ(readParagraphs(rtf::write(plain)), (std::vector<Paragraph>{{Qt::AlignLeft, {look("DejaVu Serif", 15).t("no format at all")}}}));
}

TEST(RtfRoundTrip, WritingWhatWasReadKeepsEveryProperty)
{
    for (const char* sample :
        {"{\\rtf1\\ansi\\ansicpg1252\\cocoartf2709{\\fonttbl\\f0\\fswiss\\fcharset0 Helvetica;\\f1\\fnil Menlo-Bold;}"
         "{\\colortbl;\\red255\\green255\\blue255;\\red0\\green10\\blue20;}\\pard\\qc\\f0\\fs48 \\cf1 Name\\\n"
         "\\pard\\qr\\f1\\fs30\\cf2\\ul\\strike Title \\uc0\\u9733 \\i x}",
            "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}\\uc1\\pard\\qj\\b \\u1055\\'3f\\'e9{\\b0\\i\\fs17 half}\\par\\par}"}) {
        const auto first = rtf::read(sample);
        ASSERT_TRUE(first);
        EXPECT_EQ(readParagraphs(rtf::write(*first)), paragraphsOf(*first));
    }
}

TEST(RtfRoundTrip, WriterOutputForm)
{
    const QByteArray rtf = rtf::write(*richDocument());
    EXPECT_TRUE(rtf.startsWith("{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1\n{\\fonttbl{\\f0\\fnil\\fcharset0 Helvetica;}"
                               "{\\f1\\fnil\\fcharset0 Times New Roman;}{\\f2\\fnil\\fcharset0 Noto Sans CJK SC;}}\n"
                               "{\\colortbl;\\red250\\green10\\blue20;\\red0\\green128\\blue255;}\n"))
        << rtf.toStdString();
    EXPECT_TRUE(rtf.endsWith("}\n"));
    EXPECT_TRUE(std::all_of(rtf.begin(), rtf.end(), [](char c) { return c > 0; })) << "not ASCII";
    for (const char* documentAttribute : {"\\paperw", "\\margl", "\\viewkind", "\\info"})
        EXPECT_FALSE(rtf.contains(documentAttribute)) << documentAttribute;

    EXPECT_TRUE(rtf.contains("\\pard\\qc\\f0\\fs72\\b\\cf1 Title \\{with\\} \\\\braces\\\\\\par"));
    EXPECT_TRUE(rtf.contains("\\pard\\qj\\f1\\fs21\\b0\\cf0  leading space"));  // the delimiter, then the text's space
    EXPECT_TRUE(rtf.contains("\\i 42 -7 caf\\'e9 \\'80 \\u8734?"));               // 1252 as \'hh, others as \uN?
    EXPECT_TRUE(rtf.contains("\\u-10179?\\u-8704?"));                              // above 32767: negative
    EXPECT_TRUE(rtf.contains("\\tab tabbed\\line new line\\~nbsp\\-soft\\_hyphen"));
    EXPECT_TRUE(rtf.contains("\\pard\\qr\\par\n\\pard\\ql"));
}

TEST(RtfRoundTrip, EmptyDocumentsFragmentsAndWhatRtfCannotCarry)
{
    const QByteArray empty = rtf::write(QTextDocument());
    EXPECT_TRUE(empty.contains("{\\fonttbl{\\f0"));  // \deff0 names a font even without text
    EXPECT_EQ(readParagraphs(empty), std::vector<Paragraph>{Paragraph{}});

    const auto document = richDocument();
    QTextCursor selection(document.get());
    selection.setPosition(2);
    selection.setPosition(9, QTextCursor::KeepAnchor);
    EXPECT_EQ(readParagraphs(rtf::write(selection.selection())),
        (std::vector<Paragraph>{{Qt::AlignLeft, {look("Helvetica", 36).withBold().withColour(250, 10, 20).t("tle {wi")}}}));

    // ';' cannot be part of a font name, sizes are half points, colours opaque, objects are dropped.
    QTextDocument lossy;
    QTextCharFormat f = format("A;B", 11.3);
    f.setForeground(QColor(1, 2, 3, 100));
    QTextCursor(&lossy).insertText(u("x\uFFFCy"), f);
    EXPECT_EQ(readParagraphs(rtf::write(lossy)), (std::vector<Paragraph>{{Qt::AlignLeft, {look("AB", 11.5).withColour(1, 2, 3).t("xy")}}}));
}
