// Image With String layout, font resolution and the string formatters.

#include "CompositionBuilder.h"

#include "runtime/FontResolver.h"

#include <QFontInfo>

#include <gtest/gtest.h>

using test::Node;

namespace {

TEST(FontResolution, PostScriptNamesFindInstalledFamilies)
{
    EXPECT_EQ(runtime::familyFromPostScriptName("HelveticaNeue-Bold"), "Helvetica Neue");
    EXPECT_EQ(runtime::familyFromPostScriptName("ArialMT"), "Arial");
    EXPECT_EQ(runtime::familyFromPostScriptName("Andale Mono"), "Andale Mono");

    const runtime::ResolvedFont dejavu = runtime::resolveFont("DejaVuSans-Bold");
    EXPECT_FALSE(dejavu.substituted);
    EXPECT_EQ(dejavu.family, "DejaVu Sans");
    EXPECT_EQ(dejavu.font.weight(), QFont::Bold);

    // Missing fonts get our fixed substitutes.
    EXPECT_TRUE(runtime::resolveFont("LucidaGrande").substituted);
    EXPECT_EQ(runtime::resolveFont("LucidaGrande").family, "DejaVu Sans");
    EXPECT_EQ(runtime::resolveFont("Helvetica-Oblique").family, "Liberation Sans");
    EXPECT_TRUE(runtime::resolveFont("Helvetica-Oblique").font.italic());
    EXPECT_EQ(runtime::resolveFont("Monaco").family, "Liberation Mono");
    EXPECT_EQ(runtime::resolveFont("TimesNewRomanPSMT").family, "Liberation Serif");
}

struct TextProbe {
    explicit TextProbe(Node text)
    {
        Node r = test::root();
        r.child(text);
        for (const char* out : {"outputImage", "outputWidth", "outputHeight", "outputLineCount", "outputGlyphCount"})
            r.publishOutput(out, "TextImage_1", out);
        r.publishInput("String", "TextImage_1", "inputString");
        renderer = std::make_unique<runtime::Renderer>(test::load(r), QSize(200, 100));
    }
    QImage image() const { return renderer->outputValue("outputImage").value<QImage>(); }
    std::unique_ptr<runtime::Renderer> renderer;
};

Node textNode(bool pixels)
{
    Node n("QCTextImage", "TextImage_1");
    n.state("manualLayout", pixels).state("fontName", "DejaVuSans").state("horizontalAlignment", "Opposite")
        .state("verticalAlignment", "Centered").input("inputFontName", "DejaVuSans");
    return n;
}

TEST(TextImagePatch, PixelModeUsesTheGivenBox)
{
    Node n = textNode(true);
    n.input("inputGlyphSize", 20.0).input("inputWidth", 120.0).input("inputHeight", 60.0);
    TextProbe p(n);
    p.renderer->setInputValue("String", "ab\ncd");
    p.renderer->render(0);
    const QImage image = p.image();
    ASSERT_EQ(image.size(), QSize(120, 60));
    EXPECT_EQ(p.renderer->outputValue("outputLineCount").toInt(), 2);
    EXPECT_EQ(p.renderer->outputValue("outputGlyphCount").toInt(), 4);
    EXPECT_DOUBLE_EQ(p.renderer->outputValue("outputWidth").toDouble(), 120 * 2.0 / 200);  // units of the destination
    // Right-aligned ("Opposite"): ink in the right half only.
    int leftInk = 0, rightInk = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            (x < 60 ? leftInk : rightInk) += qAlpha(image.pixel(x, y)) > 0;
    EXPECT_EQ(leftInk, 0);
    EXPECT_GT(rightInk, 20);
}

TEST(TextImagePatch, UnitModeFollowsTheDestinationAndWraps)
{
    Node n = textNode(false);
    n.input("inputGlyphSize", 0.2).input("inputWidth", 0.5);  // 20 px glyphs, 50 px wide box
    TextProbe p(n);
    p.renderer->setInputValue("String", "one two three four");
    p.renderer->render(0);
    EXPECT_EQ(p.image().width(), 50);
    EXPECT_GE(p.renderer->outputValue("outputLineCount").toInt(), 3);
    // Twice the destination: twice the pixels, the same size in units.
    const double unitsWide = p.renderer->outputValue("outputWidth").toDouble();
    p.renderer->setSize(QSize(400, 200));
    p.renderer->render(0);
    EXPECT_EQ(p.image().width(), 100);
    EXPECT_DOUBLE_EQ(p.renderer->outputValue("outputWidth").toDouble(), unitsWide);
}

TEST(TextImagePatch, EmptyTextGivesNoImage)
{
    TextProbe p(textNode(true).input("inputGlyphSize", 20.0));
    p.renderer->setInputValue("String", "");
    p.renderer->render(0);
    EXPECT_FALSE(p.renderer->outputValue("outputImage").isValid());
    EXPECT_EQ(p.renderer->outputValue("outputWidth").toDouble(), 0.0);
}

// The patch draws each string on a scratch image it keeps, with the font
// and layouts of the last one: nothing of an earlier string may remain.
TEST(TextImagePatch, ARetypedStringLooksAsIfTypedFirst)
{
    const auto typedFirst = [](const QString& text, double glyphSize) {
        TextProbe p(textNode(true).input("inputGlyphSize", glyphSize));
        p.renderer->setInputValue("String", text);
        p.renderer->render(0);
        return p.image();
    };
    TextProbe retyped(textNode(true).input("inputGlyphSize", 20.0));
    const struct {
        const char* text;
        double glyphSize;
    } steps[] = {{"a long first line of text", 20}, {"ab", 20}, {"three\nshort\nlines", 20}, {"x", 20},
                 {"bigger", 31}, {"ab", 12}};
    for (const auto& step : steps) {
        retyped.renderer->setInputValue("String", step.text);
        retyped.renderer->setNodeInputValue("TextImage_1", "inputGlyphSize", step.glyphSize);
        retyped.renderer->render(0);
        const QImage expected = typedFirst(step.text, step.glyphSize);
        ASSERT_FALSE(expected.isNull());
        EXPECT_EQ(retyped.image(), expected) << step.text;
    }
}

QString formatted(const char* className, const char* format, const char* inputPort, const QVariant& value, const char* output = "outputString")
{
    Node n(className, "Format_1");
    n.state("format", format);
    Node r = test::root();
    r.child(n).publishInput("In", "Format_1", inputPort).publishOutput("Out", "Format_1", output);
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    renderer.setInputValue("In", value);
    renderer.render(0);
    return renderer.outputValue("Out").toString();
}

TEST(StringFormatters, NumberPatterns)
{
    EXPECT_EQ(formatted("QCNumberFormatter", "000.00000", "inputNumber", 3.14159265), "003.14159");
    EXPECT_EQ(formatted("QCNumberFormatter", "#,##0.00", "inputNumber", 1234567.891), "1,234,567.89");
    EXPECT_EQ(formatted("QCNumberFormatter", "0.##", "inputNumber", 2.5), "2.5");
    EXPECT_EQ(formatted("QCNumberFormatter", "Score: 0", "inputNumber", -7.4), "Score: -7");
}

TEST(StringFormatters, DatesFromReferenceSeconds)
{
    // 2001-01-01 00:00 GMT plus one day and 13.5 hours, shown in UTC.
    qputenv("TZ", "UTC");
    EXPECT_EQ(formatted("QCDateFormatter", "yyyy-MM-dd HH:mm", "inputTime", 86400.0 + 13.5 * 3600), "2001-01-02 13:30");
}

TEST(StringPatches, TruncateReplaceCase)
{
    Node truncate("QCStringTruncate", "Truncate_1");
    truncate.input("inputMax", 5).input("inputToken", "…");
    Node replace("QCStringReplace", "Replace_1");
    replace.input("inputSearchString", "\n").input("inputReplaceString", " ");
    Node upper("QCStringCase", "Case_1");
    upper.input("inputMode", 0);
    Node r = test::root();
    r.child(truncate).child(replace).child(upper);
    r.publishInput("A", "Truncate_1", "inputString").publishInput("B", "Replace_1", "inputSourceString");
    r.publishInput("C", "Case_1", "inputString");
    r.publishOutput("Truncated", "Truncate_1", "outputString").publishOutput("Replaced", "Replace_1", "outputString");
    r.publishOutput("Cased", "Case_1", "outputString");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    renderer.setInputValue("A", "Headline of the day");
    renderer.setInputValue("B", "two\nlines");
    renderer.setInputValue("C", "hello wORLD");
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("Truncated").toString(), "Headl…");
    EXPECT_EQ(renderer.outputValue("Replaced").toString(), "two lines");
    EXPECT_EQ(renderer.outputValue("Cased").toString(), "Hello World");
}

}  // namespace
