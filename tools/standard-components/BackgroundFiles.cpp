// Full-frame layers the export adds with the background: "Background.qtz",
// "MovieBackground.qtz" and the frames-per-second overlay "FPS.qtz". Each
// holds one macro named "Background"; their keys differ because the export
// puts the background and the overlay side by side in one root.

#include "FileBuilders.h"
#include "GraphWriter.h"

namespace standardcomponents {

namespace {

// A billboard stretched over the whole destination; it draws nothing until
// it gets an image.
QuartzPatch& addFullFrameImage(GraphWriter& g, const QString& key, int row)
{
    g.add(QStringLiteral("QCScreenInfo"), QStringLiteral("Destination"), cell(0, row + 1));
    QuartzPatch& billboard = g.addBillboard(key, cell(1, row));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputWidth"), key, QStringLiteral("inputWidth"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputHeight"), key, QStringLiteral("inputHeight"));
    return billboard;
}

const char kFrameRateScript[] = R"(var times = [];

function (__number framesPerSecond, __string label) main (__number time)
{
	// Frames drawn during the last second, from the times they were drawn at;
	// a time going backwards (a restart) starts the count again.
	if (times.length > 0 && time < times[times.length - 1]) times = [];
	times.push(time);
	while (times.length > 2 && time - times[0] > 1) times.shift();
	var span = time - times[0];
	var result = new Object();
	result.framesPerSecond = span > 0 ? (times.length - 1) / span : 0;
	result.label = span > 0 ? result.framesPerSecond.toFixed(1) + " fps" : "-- fps";
	return result;
}
)";

}  // namespace

std::unique_ptr<QuartzComposition> makeBackgroundFile()
{
    auto composition = newComposition(QStringLiteral("Background"),
                                      QStringLiteral("A full-frame background: the image when one is set, over the colour."));
    GraphWriter root(composition->rootPatch());
    QuartzPatch& macro = root.addMacro(QStringLiteral("Background"), QStringLiteral("Background"), cell(0, 0));
    GraphWriter g(macro);
    QuartzPatch& clear = g.add(QStringLiteral("QCClear"), QStringLiteral("Color"), cell(1, 0), {{"inputColor", colour(0, 0, 0)}},
                               [] {
                                   Value state = Value::emptyDictionary();
                                   state.set("clearColorBuffer", true);
                                   state.set("clearDepthBuffer", true);
                                   return state;
                               }());
    clear.publishPort(QStringLiteral("inputColor"), QStringLiteral("backgroundColor"), QStringLiteral("Background Color"));
    addFullFrameImage(g, QStringLiteral("Image"), 1)
        .publishPort(QStringLiteral("inputImage"), QStringLiteral("backgroundImage"), QStringLiteral("Background Image"));
    return composition;
}

std::unique_ptr<QuartzComposition> makeMovieBackgroundFile()
{
    auto composition = newComposition(QStringLiteral("Movie Background"),
                                      QStringLiteral("A movie file played over the whole frame."));
    GraphWriter root(composition->rootPatch());
    QuartzPatch& macro = root.addMacro(QStringLiteral("MovieBackground"), QStringLiteral("Background"), cell(0, 0));
    GraphWriter g(macro);
    g.addSplitter(QStringLiteral("Filename"), PortClass::String, Value(""), cell(0, 0))
        .publishPort(QStringLiteral("input"), QStringLiteral("Filename"), QStringLiteral("Movie File"));
    // The "Movie Importer": plays the file at the patch time.
    g.add(QStringLiteral("QCMovieLoader"), QStringLiteral("Movie"), cell(1, 0), {}, [] {
        Value state = Value::emptyDictionary();
        state.set("timebase", "parent");
        return state;
    }());
    g.connect(QStringLiteral("Filename"), QStringLiteral("output"), QStringLiteral("Movie"), QStringLiteral("inputMovieLocation"));
    addFullFrameImage(g, QStringLiteral("Image"), 1);
    g.connect(QStringLiteral("Movie"), QStringLiteral("outputImage"), QStringLiteral("Image"), QStringLiteral("inputImage"));
    return composition;
}

std::unique_ptr<QuartzComposition> makeFrameRateFile()
{
    auto composition = newComposition(QStringLiteral("FPS"),
                                      QStringLiteral("The frames drawn per second, in the upper-left corner."));
    GraphWriter root(composition->rootPatch());
    QuartzPatch& macro = root.addMacro(QStringLiteral("FrameRate"), QStringLiteral("Background"), cell(0, 0));
    GraphWriter g(macro);
    g.add(QStringLiteral("QCTime"), QStringLiteral("Time"), cell(0, 0), {}, [] {
        Value state = Value::emptyDictionary();
        state.set("timebase", "parent");
        return state;
    }());
    g.add(QStringLiteral("QCJavaScript"), QStringLiteral("Counter"), cell(1, 0), {}, [] {
        Value state = Value::emptyDictionary();
        state.set("script", kFrameRateScript);
        state.set("newMode", 1);
        state.set("numberOfInputs", 0);
        state.set("numberOfOutputs", 0);
        state.set("version", 1);
        return state;
    }());
    g.connect(QStringLiteral("Time"), QStringLiteral("outputTime"), QStringLiteral("Counter"), QStringLiteral("time"));

    // Sizes in units: the overlay keeps its share of the frame at any size.
    g.add(QStringLiteral("QCTextImage"), QStringLiteral("Label"), cell(2, 0),
          {{"inputFontName", Value("LiberationMono")},
           {"inputGlyphSize", Value(0.035)},
           {"inputLeading", Value(0.0)},
           {"inputKerning", Value(0.0)},
           {"inputWidth", Value(0.0)},
           {"inputHeight", Value(0.0)}},
          [] {
              Value state = Value::emptyDictionary();
              state.set("fontName", "LiberationMono");
              state.set("fontSize", 0.035);
              state.set("horizontalAlignment", "Normal");
              state.set("verticalAlignment", "Normal");
              state.set("manualLayout", false);
              state.set("version", 2);
              return state;
          }());
    g.connect(QStringLiteral("Counter"), QStringLiteral("label"), QStringLiteral("Label"), QStringLiteral("inputString"));
    g.add(QStringLiteral("QCScreenInfo"), QStringLiteral("Destination"), cell(2, 1));

    // Centre of the label: a margin of 0.03 units from the upper-left corner.
    g.addExpression(QStringLiteral("CenterX"), QStringLiteral("-1 + 0.03 + labelWidth / 2"), cell(3, 0));
    g.addExpression(QStringLiteral("CenterY"), QStringLiteral("unitsHigh / 2 - 0.03 - labelHeight / 2"), cell(3, 1));
    g.addExpression(QStringLiteral("BackingWidth"), QStringLiteral("labelWidth + 0.02"), cell(3, 2));
    g.addExpression(QStringLiteral("BackingHeight"), QStringLiteral("labelHeight + 0.01"), cell(3, 3));
    g.connect(QStringLiteral("Label"), QStringLiteral("outputWidth"), QStringLiteral("CenterX"), QStringLiteral("labelWidth"));
    g.connect(QStringLiteral("Label"), QStringLiteral("outputHeight"), QStringLiteral("CenterY"), QStringLiteral("labelHeight"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputHeight"), QStringLiteral("CenterY"), QStringLiteral("unitsHigh"));
    g.connect(QStringLiteral("Label"), QStringLiteral("outputWidth"), QStringLiteral("BackingWidth"), QStringLiteral("labelWidth"));
    g.connect(QStringLiteral("Label"), QStringLiteral("outputHeight"), QStringLiteral("BackingHeight"), QStringLiteral("labelHeight"));

    // A dark backing so the figures stay readable over any picture.
    g.add(QStringLiteral("QCSprite"), QStringLiteral("Backing"), cell(4, 0),
          {{"inputZ", Value(0.0)},
           {"inputRX", Value(0.0)},
           {"inputRY", Value(0.0)},
           {"inputRZ", Value(0.0)},
           {"inputColor", colour(0, 0, 0, 0.6)},
           {"inputBlending", Value(1)},
           {"inputZBuffer", Value(0)},
           {"inputCulling", Value(0)}},
          [] {
              Value state = Value::emptyDictionary();
              state.set("antialiasing", 0);
              return state;
          }());
    g.addBillboard(QStringLiteral("Text"), cell(4, 1), true);
    for (const char* node : {"Backing", "Text"}) {
        g.connect(QStringLiteral("CenterX"), QStringLiteral("outputResult"), QString::fromLatin1(node), QStringLiteral("inputX"));
        g.connect(QStringLiteral("CenterY"), QStringLiteral("outputResult"), QString::fromLatin1(node), QStringLiteral("inputY"));
    }
    g.connect(QStringLiteral("BackingWidth"), QStringLiteral("outputResult"), QStringLiteral("Backing"), QStringLiteral("inputWidth"));
    g.connect(QStringLiteral("BackingHeight"), QStringLiteral("outputResult"), QStringLiteral("Backing"), QStringLiteral("inputHeight"));
    g.connect(QStringLiteral("Label"), QStringLiteral("outputImage"), QStringLiteral("Text"), QStringLiteral("inputImage"));
    g.connect(QStringLiteral("Label"), QStringLiteral("outputWidth"), QStringLiteral("Text"), QStringLiteral("inputWidth"));
    g.connect(QStringLiteral("Label"), QStringLiteral("outputHeight"), QStringLiteral("Text"), QStringLiteral("inputHeight"));
    return composition;
}

}  // namespace standardcomponents
