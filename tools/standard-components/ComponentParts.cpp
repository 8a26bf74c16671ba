#include "ComponentParts.h"

#include "quartz/QuartzStrings.h"

namespace standardcomponents {

QuartzPatch& addComponentInput(QuartzComposition& composition, GraphWriter& g, const QString& key, PortClass type,
                               const Value& value, const InputLabel& label, QPointF position, SplitterLimits limits)
{
    if (limits.menu.isEmpty()) limits.menu = label.menu;
    QuartzPatch& splitter = g.addSplitter(key, type, value, position, limits);
    publishComponentInput(composition, splitter, QStringLiteral("input"), key, label);
    return splitter;
}

QuartzPatch& addDestination(GraphWriter& g, QPointF position)
{
    return g.add(QStringLiteral("QCScreenInfo"), QStringLiteral("Destination"), position);
}

QuartzPatch& addGlyphSize(GraphWriter& g, const QString& key, const QString& fontSizeNode, QPointF position)
{
    QuartzPatch& e = g.addExpression(key, QStringLiteral("fontSize * unitsWide / pixelsWide"), position);
    g.connect(fontSizeNode, QStringLiteral("output"), key, QStringLiteral("fontSize"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputWidth"), key, QStringLiteral("unitsWide"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputPixelsWide"), key, QStringLiteral("pixelsWide"));
    return e;
}

QuartzPatch& addTextImage(GraphWriter& g, const QString& key, const QString& fontName, const QString& alignment,
                          QPointF position)
{
    Value state = Value::emptyDictionary();
    state.set("fontName", quartz::toStd(fontName));
    state.set("fontSize", 0.1);
    state.set("horizontalAlignment", quartz::toStd(alignment));
    state.set("verticalAlignment", "Normal");
    state.set("manualLayout", false);
    state.set("version", 2);
    return g.add(QStringLiteral("QCTextImage"), key, position,
                 {{"inputLeading", Value(0.0)},
                  {"inputKerning", Value(0.0)},
                  {"inputWidth", Value(0.0)},
                  {"inputHeight", Value(0.0)}},
                 std::move(state));
}

void connectText(GraphWriter& g, const QString& textImage, const QString& stringNode, const QString& fontNode,
                 const QString& glyphSizeNode)
{
    g.connect(stringNode, QStringLiteral("output"), textImage, QStringLiteral("inputString"));
    g.connect(fontNode, QStringLiteral("output"), textImage, QStringLiteral("inputFontName"));
    g.connect(glyphSizeNode, QStringLiteral("outputResult"), textImage, QStringLiteral("inputGlyphSize"));
}

QuartzPatch& addTextBillboard(GraphWriter& g, const QString& key, const QString& textImage, const QString& colorNode,
                              QPointF position)
{
    // Pixel aligned: the text image has the destination's resolution, so
    // on pixel boundaries it is drawn one to one, sharp.
    QuartzPatch& billboard = g.addBillboard(key, position, true);
    g.connect(textImage, QStringLiteral("outputImage"), key, QStringLiteral("inputImage"));
    g.connect(textImage, QStringLiteral("outputWidth"), key, QStringLiteral("inputWidth"));
    g.connect(textImage, QStringLiteral("outputHeight"), key, QStringLiteral("inputHeight"));
    g.connect(colorNode, QStringLiteral("output"), key, QStringLiteral("inputColor"));
    return billboard;
}

}  // namespace standardcomponents
