// Components that show text: "Text.qtz" (the toolbar's text layer),
// "TextComponent.qtz" (pasted text), "LowerThird.qtz", "Ticker.qtz" and
// "Clock.qtz". Each renders into a Render In Image whose pixels are template
// pixels, so font sizes and paddings are template pixels too.
//
// Default fonts are the Liberation families the project installs, so a new
// component finds its font on the editor's machine; a playout machine
// without them substitutes its own.

#include "ComponentParts.h"
#include "FileBuilders.h"

namespace standardcomponents {

namespace {

QStringList horizontalMenu() { return {QStringLiteral("Left"), QStringLiteral("Center"), QStringLiteral("Right")}; }
QStringList verticalMenu() { return {QStringLiteral("Top"), QStringLiteral("Center"), QStringLiteral("Bottom")}; }

Value multiplexerState(const char* portClass, int count)
{
    Value state = Value::emptyDictionary();
    state.set("inputCount", count);
    state.set("portClass", portClass);
    return state;
}

struct TextLayer {
    QString name;
    QString description;
    QString text;
    QString fontName;
    double fontSize;
    int width;
    int height;
    int alignment;          // 0 left, 1 centre, 2 right
    int verticalAlignment;  // 0 top, 1 centre, 2 bottom
};

// A text box: the text wraps at the box's width, is aligned left, centred
// or right inside it (for every line) and sits at the top, middle or bottom.
std::unique_ptr<QuartzComposition> makeTextLayer(const TextLayer& t)
{
    auto composition = newComposition(t.name, t.description);
    GraphWriter root(composition->rootPatch());
    QuartzPatch& producer = addRenderInImage(root, QStringLiteral("TextLayer"), t.name, t.width, t.height, false);
    GraphWriter g(producer);
    QuartzComposition& c = *composition;
    addComponentInput(c, g, QStringLiteral("Text"), PortClass::String, Value(t.text.toStdString()),
                      {QStringLiteral("Text [1] (Text)"), QStringLiteral("The text; lines break at the box's width.")}, cell(0, 0));
    addComponentInput(c, g, QStringLiteral("Text_Font_Name"), PortClass::String, Value(t.fontName.toStdString()),
                      {QStringLiteral("Font [2] (Text)"), QStringLiteral("Font name.")}, cell(0, 1));
    addComponentInput(c, g, QStringLiteral("Text_Font_Size"), PortClass::Number, Value(t.fontSize),
                      {QStringLiteral("Font Size"), QStringLiteral("Glyph size in pixels.")}, cell(0, 2), {1.0, {}, {}});
    addComponentInput(c, g, QStringLiteral("Color"), PortClass::Color, colour(1, 1, 1),
                      {QStringLiteral("Color [3] (Text)"), QStringLiteral("Text colour.")}, cell(0, 3));
    addComponentInput(c, g, QStringLiteral("Alignment"), PortClass::Index, Value(t.alignment),
                      {QStringLiteral("Alignment [4] (Layout)"), QStringLiteral("Horizontal alignment of every line."), horizontalMenu()},
                      cell(0, 4), {0.0, 2.0, {}});
    addComponentInput(c, g, QStringLiteral("Vertical_Alignment"), PortClass::Index, Value(t.verticalAlignment),
                      {QStringLiteral("Vertical Alignment [5] (Layout)"), QStringLiteral("Where the lines sit in the box."), verticalMenu()},
                      cell(0, 5), {0.0, 2.0, {}});
    publishProducerInput(c, producer, QStringLiteral("inputWidth"), {QStringLiteral("Width"), QStringLiteral("Box width in pixels.")});
    publishProducerInput(c, producer, QStringLiteral("inputHeight"), {QStringLiteral("Height"), QStringLiteral("Box height in pixels.")});
    publishComponentImage(producer);

    addDestination(g, cell(1, 0));
    addGlyphSize(g, QStringLiteral("GlyphSize"), QStringLiteral("Text_Font_Size"), cell(1, 1));
    // The alignment of a text image is a setting, not a port: one image per
    // alignment, and the multiplexers pass the chosen one (only it renders).
    g.add(QStringLiteral("QCMultiplexer"), QStringLiteral("ImageChoice"), cell(3, 0), {}, multiplexerState("QCGLImagePort", 3));
    g.add(QStringLiteral("QCMultiplexer"), QStringLiteral("HeightChoice"), cell(3, 1), {}, multiplexerState("QCNumberPort", 3));
    const std::pair<const char*, const char*> alignments[] = {
        {"TextLeft", "Normal"}, {"TextCenter", "Centered"}, {"TextRight", "Opposite"}};
    int source = 0;
    for (const auto& [key, alignment] : alignments) {
        const QString node = QString::fromLatin1(key);
        addTextImage(g, node, t.fontName, QString::fromLatin1(alignment), cell(2, source));
        connectText(g, node, QStringLiteral("Text"), QStringLiteral("Text_Font_Name"), QStringLiteral("GlyphSize"));
        // As wide as the box: lines wrap there and align inside it.
        g.connect(QStringLiteral("Destination"), QStringLiteral("outputWidth"), node, QStringLiteral("inputWidth"));
        const QString sourcePort = QStringLiteral("source_%1").arg(source++);
        g.connect(node, QStringLiteral("outputImage"), QStringLiteral("ImageChoice"), sourcePort);
        g.connect(node, QStringLiteral("outputHeight"), QStringLiteral("HeightChoice"), sourcePort);
    }
    g.connect(QStringLiteral("Alignment"), QStringLiteral("output"), QStringLiteral("ImageChoice"), QStringLiteral("inputIndex"));
    g.connect(QStringLiteral("Alignment"), QStringLiteral("output"), QStringLiteral("HeightChoice"), QStringLiteral("inputIndex"));

    g.addExpression(QStringLiteral("CenterY"),
                    QStringLiteral("vertical < 0.5 ? (unitsHigh - textHeight) / 2 : (vertical < 1.5 ? 0 : (textHeight - unitsHigh) / 2)"),
                    cell(3, 2));
    g.connect(QStringLiteral("Vertical_Alignment"), QStringLiteral("output"), QStringLiteral("CenterY"), QStringLiteral("vertical"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputHeight"), QStringLiteral("CenterY"), QStringLiteral("unitsHigh"));
    g.connect(QStringLiteral("HeightChoice"), QStringLiteral("output"), QStringLiteral("CenterY"), QStringLiteral("textHeight"));

    g.addBillboard(QStringLiteral("TextBillboard"), cell(4, 0), true);
    g.connect(QStringLiteral("ImageChoice"), QStringLiteral("output"), QStringLiteral("TextBillboard"), QStringLiteral("inputImage"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputWidth"), QStringLiteral("TextBillboard"), QStringLiteral("inputWidth"));
    g.connect(QStringLiteral("HeightChoice"), QStringLiteral("output"), QStringLiteral("TextBillboard"), QStringLiteral("inputHeight"));
    g.connect(QStringLiteral("CenterY"), QStringLiteral("outputResult"), QStringLiteral("TextBillboard"), QStringLiteral("inputY"));
    g.connect(QStringLiteral("Color"), QStringLiteral("output"), QStringLiteral("TextBillboard"), QStringLiteral("inputColor"));
    return composition;
}

}  // namespace

std::unique_ptr<QuartzComposition> makeTextFile()
{
    return makeTextLayer({QStringLiteral("Text"), QStringLiteral("A text box with font, colour and alignment."),
                          QStringLiteral("Text"), QStringLiteral("LiberationSans"), 72, 800, 120, 0, 1});
}

std::unique_ptr<QuartzComposition> makeTextComponentFile()
{
    return makeTextLayer({QStringLiteral("Text"), QStringLiteral("Pasted text."), QStringLiteral("Text"),
                          QStringLiteral("LiberationSans"), 48, 1000, 160, 0, 0});
}

// A name and a function line on a coloured bar with an accent stripe on
// its left. Name and title are "CI" inputs: the operator may change them
// from the start.
std::unique_ptr<QuartzComposition> makeLowerThirdFile()
{
    auto composition = newComposition(QStringLiteral("Lower Third"),
                                      QStringLiteral("Name and title on a bar, for the lower third of the picture."));
    GraphWriter root(composition->rootPatch());
    QuartzPatch& producer = addRenderInImage(root, QStringLiteral("LowerThird"), QStringLiteral("Lower Third"), 1200, 180, false);
    GraphWriter g(producer);
    QuartzComposition& c = *composition;
    addComponentInput(c, g, QStringLiteral("CIName"), PortClass::String, Value("Firstname Lastname"),
                      {QStringLiteral("Name [1] (Name)"), QStringLiteral("The upper, larger line.")}, cell(0, 0));
    addComponentInput(c, g, QStringLiteral("Name_Font_Name"), PortClass::String, Value("LiberationSans-Bold"),
                      {QStringLiteral("Font [2] (Name)"), QStringLiteral("Font of the name.")}, cell(0, 1));
    addComponentInput(c, g, QStringLiteral("Name_Font_Size"), PortClass::Number, Value(64.0),
                      {QStringLiteral("Name Font Size"), QStringLiteral("Glyph size of the name in pixels.")}, cell(0, 2), {1.0, {}, {}});
    addComponentInput(c, g, QStringLiteral("CITitle"), PortClass::String, Value("Function / Title"),
                      {QStringLiteral("Title [3] (Title)"), QStringLiteral("The lower, smaller line.")}, cell(0, 3));
    addComponentInput(c, g, QStringLiteral("Title_Font_Name"), PortClass::String, Value("LiberationSans"),
                      {QStringLiteral("Font [4] (Title)"), QStringLiteral("Font of the title.")}, cell(0, 4));
    addComponentInput(c, g, QStringLiteral("Title_Font_Size"), PortClass::Number, Value(40.0),
                      {QStringLiteral("Title Font Size"), QStringLiteral("Glyph size of the title in pixels.")}, cell(0, 5), {1.0, {}, {}});
    addComponentInput(c, g, QStringLiteral("Text_Color"), PortClass::Color, colour(1, 1, 1),
                      {QStringLiteral("Text Color [5] (Style)"), QStringLiteral("Colour of both lines.")}, cell(0, 6));
    addComponentInput(c, g, QStringLiteral("Bar_Color"), PortClass::Color, colour(0.05, 0.15, 0.4, 0.9),
                      {QStringLiteral("Bar Color [6] (Style)"), QStringLiteral("Colour of the bar.")}, cell(0, 7));
    addComponentInput(c, g, QStringLiteral("Accent_Color"), PortClass::Color, colour(1, 0.55, 0),
                      {QStringLiteral("Accent Color [7] (Style)"), QStringLiteral("Colour of the stripe on the left.")}, cell(0, 8));
    publishProducerInput(c, producer, QStringLiteral("inputWidth"), {QStringLiteral("Width"), QStringLiteral("Bar width in pixels.")});
    publishProducerInput(c, producer, QStringLiteral("inputHeight"), {QStringLiteral("Height"), QStringLiteral("Bar height in pixels.")});
    publishComponentImage(producer);

    // The bar is the whole image.
    g.add(QStringLiteral("QCClear"), QStringLiteral("Bar"), cell(1, 0), {{"inputColor", colour(0.05, 0.15, 0.4, 0.9)}}, [] {
        Value state = Value::emptyDictionary();
        state.set("clearColorBuffer", true);
        state.set("clearDepthBuffer", true);
        return state;
    }());
    g.connect(QStringLiteral("Bar_Color"), QStringLiteral("output"), QStringLiteral("Bar"), QStringLiteral("inputColor"));
    addDestination(g, cell(1, 1));

    // Accent stripe: 12 pixels wide along the left edge.
    g.addExpression(QStringLiteral("AccentWidth"), QStringLiteral("12 * unitsWide / pixelsWide"), cell(2, 0));
    g.addExpression(QStringLiteral("AccentX"), QStringLiteral("accentWidth / 2 - unitsWide / 2"), cell(2, 1));
    for (const char* node : {"AccentWidth", "AccentX"})
        g.connect(QStringLiteral("Destination"), QStringLiteral("outputWidth"), QString::fromLatin1(node), QStringLiteral("unitsWide"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputPixelsWide"), QStringLiteral("AccentWidth"), QStringLiteral("pixelsWide"));
    g.connect(QStringLiteral("AccentWidth"), QStringLiteral("outputResult"), QStringLiteral("AccentX"), QStringLiteral("accentWidth"));
    g.add(QStringLiteral("QCSprite"), QStringLiteral("Accent"), cell(3, 0),
          {{"inputY", Value(0.0)}, {"inputZ", Value(0.0)}, {"inputBlending", Value(1)}, {"inputZBuffer", Value(0)}, {"inputCulling", Value(0)}},
          [] {
              Value state = Value::emptyDictionary();
              state.set("antialiasing", 0);
              return state;
          }());
    g.connect(QStringLiteral("AccentWidth"), QStringLiteral("outputResult"), QStringLiteral("Accent"), QStringLiteral("inputWidth"));
    g.connect(QStringLiteral("AccentX"), QStringLiteral("outputResult"), QStringLiteral("Accent"), QStringLiteral("inputX"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputHeight"), QStringLiteral("Accent"), QStringLiteral("inputHeight"));
    g.connect(QStringLiteral("Accent_Color"), QStringLiteral("output"), QStringLiteral("Accent"), QStringLiteral("inputColor"));

    // Two left-aligned lines, 40 pixels from the left edge: the name centred
    // in the upper part of the bar, the title in the lower part.
    struct Line {
        const char* prefix;
        const char* stringNode;
        const char* fontName;
        const char* centreY;  // a share of the bar's height from its middle
    };
    const Line lines[] = {{"Name", "CIName", "LiberationSans-Bold", "0.225 * unitsHigh"},
                          {"Title", "CITitle", "LiberationSans", "-0.25 * unitsHigh"}};
    int row = 2;
    for (const Line& line : lines) {
        const QString prefix = QString::fromLatin1(line.prefix);
        const QString glyph = prefix + QStringLiteral("GlyphSize");
        const QString image = prefix + QStringLiteral("Image");
        const QString x = prefix + QStringLiteral("X");
        const QString y = prefix + QStringLiteral("Y");
        addGlyphSize(g, glyph, prefix + QStringLiteral("_Font_Size"), cell(1, row));
        addTextImage(g, image, QString::fromLatin1(line.fontName), QStringLiteral("Normal"), cell(2, row));
        connectText(g, image, QString::fromLatin1(line.stringNode), prefix + QStringLiteral("_Font_Name"), glyph);
        g.addExpression(x, QStringLiteral("40 * unitsWide / pixelsWide - unitsWide / 2 + textWidth / 2"), cell(3, row));
        g.connect(QStringLiteral("Destination"), QStringLiteral("outputWidth"), x, QStringLiteral("unitsWide"));
        g.connect(QStringLiteral("Destination"), QStringLiteral("outputPixelsWide"), x, QStringLiteral("pixelsWide"));
        g.connect(image, QStringLiteral("outputWidth"), x, QStringLiteral("textWidth"));
        g.addExpression(y, QString::fromLatin1(line.centreY), cell(3, row + 1));
        g.connect(QStringLiteral("Destination"), QStringLiteral("outputHeight"), y, QStringLiteral("unitsHigh"));
        const QString billboard = prefix + QStringLiteral("Billboard");
        addTextBillboard(g, billboard, image, QStringLiteral("Text_Color"), cell(4, row));
        g.connect(x, QStringLiteral("outputResult"), billboard, QStringLiteral("inputX"));
        g.connect(y, QStringLiteral("outputResult"), billboard, QStringLiteral("inputY"));
        row += 2;
    }
    return composition;
}

// One line of text running from right to left across a coloured band, at
// a speed in pixels per second of the component's time. The text enters at
// the right edge at time 0 and comes round again once it has left.
std::unique_ptr<QuartzComposition> makeTickerFile()
{
    auto composition = newComposition(QStringLiteral("Ticker"), QStringLiteral("A line of text scrolling across a band."));
    GraphWriter root(composition->rootPatch());
    QuartzPatch& producer = addRenderInImage(root, QStringLiteral("Ticker"), QStringLiteral("Ticker"), 1920, 72, true);
    GraphWriter g(producer);
    QuartzComposition& c = *composition;
    addComponentInput(c, g, QStringLiteral("CIText"), PortClass::String, Value("+++ Breaking news +++ Type the ticker text here +++"),
                      {QStringLiteral("Ticker Text [1] (Text)"), QStringLiteral("The scrolling line.")}, cell(0, 0));
    addComponentInput(c, g, QStringLiteral("Ticker_Font_Name"), PortClass::String, Value("LiberationSans-Bold"),
                      {QStringLiteral("Font [2] (Text)"), QStringLiteral("Font name.")}, cell(0, 1));
    addComponentInput(c, g, QStringLiteral("Ticker_Font_Size"), PortClass::Number, Value(44.0),
                      {QStringLiteral("Font Size"), QStringLiteral("Glyph size in pixels.")}, cell(0, 2), {1.0, {}, {}});
    addComponentInput(c, g, QStringLiteral("Text_Color"), PortClass::Color, colour(1, 1, 1),
                      {QStringLiteral("Text Color [3] (Style)"), QStringLiteral("Colour of the text.")}, cell(0, 3));
    addComponentInput(c, g, QStringLiteral("Background_Color"), PortClass::Color, colour(0.55, 0.02, 0.05),
                      {QStringLiteral("Background Color [4] (Style)"), QStringLiteral("Colour of the band.")}, cell(0, 4));
    addComponentInput(c, g, QStringLiteral("Speed"), PortClass::Number, Value(240.0),
                      {QStringLiteral("Speed [5] (Motion)"), QStringLiteral("Pixels per second.")}, cell(0, 5), {0.0, {}, {}});
    publishProducerInput(c, producer, QStringLiteral("inputWidth"), {QStringLiteral("Width"), QStringLiteral("Band width in pixels.")});
    publishProducerInput(c, producer, QStringLiteral("inputHeight"), {QStringLiteral("Height"), QStringLiteral("Band height in pixels.")});
    publishComponentImage(producer);

    g.add(QStringLiteral("QCClear"), QStringLiteral("Band"), cell(1, 0), {{"inputColor", colour(0.55, 0.02, 0.05)}}, [] {
        Value state = Value::emptyDictionary();
        state.set("clearColorBuffer", true);
        state.set("clearDepthBuffer", true);
        return state;
    }());
    g.connect(QStringLiteral("Background_Color"), QStringLiteral("output"), QStringLiteral("Band"), QStringLiteral("inputColor"));
    addDestination(g, cell(1, 1));
    g.add(QStringLiteral("QCTime"), QStringLiteral("Time"), cell(1, 2), {}, [] {
        Value state = Value::emptyDictionary();
        state.set("timebase", "parent");
        return state;
    }());
    addGlyphSize(g, QStringLiteral("GlyphSize"), QStringLiteral("Ticker_Font_Size"), cell(1, 3));
    addTextImage(g, QStringLiteral("TextImage"), QStringLiteral("LiberationSans-Bold"), QStringLiteral("Normal"), cell(2, 0));
    connectText(g, QStringLiteral("TextImage"), QStringLiteral("CIText"), QStringLiteral("Ticker_Font_Name"), QStringLiteral("GlyphSize"));

    // Distance run so far, wrapped over band width + text width.
    g.addExpression(QStringLiteral("ScrollX"),
                    QStringLiteral("pixelsWide > 0 ? unitsWide / 2 + textWidth / 2 - (time * speed * unitsWide / pixelsWide) % (unitsWide + textWidth) : 0"),
                    cell(3, 0));
    g.connect(QStringLiteral("Time"), QStringLiteral("outputTime"), QStringLiteral("ScrollX"), QStringLiteral("time"));
    g.connect(QStringLiteral("Speed"), QStringLiteral("output"), QStringLiteral("ScrollX"), QStringLiteral("speed"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputWidth"), QStringLiteral("ScrollX"), QStringLiteral("unitsWide"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputPixelsWide"), QStringLiteral("ScrollX"), QStringLiteral("pixelsWide"));
    g.connect(QStringLiteral("TextImage"), QStringLiteral("outputWidth"), QStringLiteral("ScrollX"), QStringLiteral("textWidth"));
    addTextBillboard(g, QStringLiteral("TextBillboard"), QStringLiteral("TextImage"), QStringLiteral("Text_Color"), cell(4, 0));
    g.connect(QStringLiteral("ScrollX"), QStringLiteral("outputResult"), QStringLiteral("TextBillboard"), QStringLiteral("inputX"));
    return composition;
}

// The time of day, centred in its box.
std::unique_ptr<QuartzComposition> makeClockFile()
{
    auto composition = newComposition(QStringLiteral("Clock"), QStringLiteral("The time of day."));
    GraphWriter root(composition->rootPatch());
    QuartzPatch& producer = addRenderInImage(root, QStringLiteral("Clock"), QStringLiteral("Clock"), 420, 120, false);
    GraphWriter g(producer);
    QuartzComposition& c = *composition;
    addComponentInput(c, g, QStringLiteral("Format"), PortClass::Index, Value(0),
                      {QStringLiteral("Format [1] (Clock)"), QStringLiteral("How the time is written."),
                       {QStringLiteral("13:45:30"), QStringLiteral("13:45"), QStringLiteral("1:45 PM")}},
                      cell(0, 0), {0.0, 2.0, {}});
    addComponentInput(c, g, QStringLiteral("Clock_Font_Name"), PortClass::String, Value("LiberationSans-Bold"),
                      {QStringLiteral("Font [2] (Clock)"), QStringLiteral("Font name.")}, cell(0, 1));
    addComponentInput(c, g, QStringLiteral("Clock_Font_Size"), PortClass::Number, Value(80.0),
                      {QStringLiteral("Font Size"), QStringLiteral("Glyph size in pixels.")}, cell(0, 2), {1.0, {}, {}});
    addComponentInput(c, g, QStringLiteral("Color"), PortClass::Color, colour(1, 1, 1),
                      {QStringLiteral("Color [3] (Clock)"), QStringLiteral("Colour of the figures.")}, cell(0, 3));
    publishProducerInput(c, producer, QStringLiteral("inputWidth"), {QStringLiteral("Width"), QStringLiteral("Box width in pixels.")});
    publishProducerInput(c, producer, QStringLiteral("inputHeight"), {QStringLiteral("Height"), QStringLiteral("Box height in pixels.")});
    publishComponentImage(producer);

    g.add(QStringLiteral("QCSystemTime"), QStringLiteral("Now"), cell(1, 0));
    g.add(QStringLiteral("QCMultiplexer"), QStringLiteral("FormatChoice"), cell(3, 0), {}, multiplexerState("QCStringPort", 3));
    const std::pair<const char*, const char*> formats[] = {{"Seconds", "HH:mm:ss"}, {"Minutes", "HH:mm"}, {"TwelveHour", "h:mm a"}};
    int source = 0;
    for (const auto& [key, format] : formats) {
        const QString node = QString::fromLatin1(key);
        Value state = Value::emptyDictionary();
        state.set("format", format);
        g.add(QStringLiteral("QCDateFormatter"), node, cell(2, source), {}, std::move(state));
        g.connect(QStringLiteral("Now"), QStringLiteral("outputTime"), node, QStringLiteral("inputTime"));
        g.connect(node, QStringLiteral("outputString"), QStringLiteral("FormatChoice"), QStringLiteral("source_%1").arg(source++));
    }
    g.connect(QStringLiteral("Format"), QStringLiteral("output"), QStringLiteral("FormatChoice"), QStringLiteral("inputIndex"));

    addDestination(g, cell(1, 1));
    addGlyphSize(g, QStringLiteral("GlyphSize"), QStringLiteral("Clock_Font_Size"), cell(1, 2));
    addTextImage(g, QStringLiteral("TextImage"), QStringLiteral("LiberationSans-Bold"), QStringLiteral("Centered"), cell(4, 0));
    g.connect(QStringLiteral("FormatChoice"), QStringLiteral("output"), QStringLiteral("TextImage"), QStringLiteral("inputString"));
    g.connect(QStringLiteral("Clock_Font_Name"), QStringLiteral("output"), QStringLiteral("TextImage"), QStringLiteral("inputFontName"));
    g.connect(QStringLiteral("GlyphSize"), QStringLiteral("outputResult"), QStringLiteral("TextImage"), QStringLiteral("inputGlyphSize"));
    addTextBillboard(g, QStringLiteral("TextBillboard"), QStringLiteral("TextImage"), QStringLiteral("Color"), cell(5, 0));
    return composition;
}

}  // namespace standardcomponents
