// "Box.qtz" (a coloured rectangle with an optional border) and
// "ImageComponent.qtz" (an image at its natural size, used for dropped and
// pasted pictures).

#include "ComponentParts.h"
#include "FileBuilders.h"

namespace standardcomponents {

std::unique_ptr<QuartzComposition> makeBoxFile()
{
    auto composition = newComposition(QStringLiteral("Box"), QStringLiteral("A coloured rectangle with an optional border."));
    GraphWriter root(composition->rootPatch());
    QuartzPatch& producer = addRenderInImage(root, QStringLiteral("Box"), QStringLiteral("Box"), 400, 300, false);
    GraphWriter g(producer);
    QuartzComposition& c = *composition;
    addComponentInput(c, g, QStringLiteral("Color"), PortClass::Color, colour(0.12, 0.35, 0.75),
                      {QStringLiteral("Color [1] (Box)"), QStringLiteral("Fill colour.")}, cell(0, 0));
    addComponentInput(c, g, QStringLiteral("Border_Width"), PortClass::Number, Value(0.0),
                      {QStringLiteral("Border Width [2] (Border)"), QStringLiteral("Border width in pixels; 0 for none.")}, cell(0, 1),
                      {0.0, {}, {}});
    addComponentInput(c, g, QStringLiteral("Border_Color"), PortClass::Color, colour(1, 1, 1),
                      {QStringLiteral("Border Color [3] (Border)"), QStringLiteral("Border colour.")}, cell(0, 2));
    publishProducerInput(c, producer, QStringLiteral("inputWidth"), {QStringLiteral("Width"), QStringLiteral("Width in pixels.")});
    publishProducerInput(c, producer, QStringLiteral("inputHeight"), {QStringLiteral("Height"), QStringLiteral("Height in pixels.")});
    publishComponentImage(producer);

    // The border colour fills the image; the fill replaces all of it but a
    // frame of the border's width (Replace keeps a translucent fill as it is).
    g.add(QStringLiteral("QCClear"), QStringLiteral("Border"), cell(1, 0), {{"inputColor", colour(1, 1, 1)}}, [] {
        Value state = Value::emptyDictionary();
        state.set("clearColorBuffer", true);
        state.set("clearDepthBuffer", true);
        return state;
    }());
    g.connect(QStringLiteral("Border_Color"), QStringLiteral("output"), QStringLiteral("Border"), QStringLiteral("inputColor"));
    addDestination(g, cell(1, 1));
    g.addExpression(QStringLiteral("FillWidth"),
                    QStringLiteral("border * 2 < pixelsWide ? unitsWide * (1 - 2 * border / pixelsWide) : 0"), cell(2, 0));
    g.addExpression(QStringLiteral("FillHeight"),
                    QStringLiteral("border * 2 < pixelsHigh ? unitsHigh * (1 - 2 * border / pixelsHigh) : 0"), cell(2, 1));
    for (const char* node : {"FillWidth", "FillHeight"})
        g.connect(QStringLiteral("Border_Width"), QStringLiteral("output"), QString::fromLatin1(node), QStringLiteral("border"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputWidth"), QStringLiteral("FillWidth"), QStringLiteral("unitsWide"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputPixelsWide"), QStringLiteral("FillWidth"), QStringLiteral("pixelsWide"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputHeight"), QStringLiteral("FillHeight"), QStringLiteral("unitsHigh"));
    g.connect(QStringLiteral("Destination"), QStringLiteral("outputPixelsHigh"), QStringLiteral("FillHeight"), QStringLiteral("pixelsHigh"));
    g.add(QStringLiteral("QCSprite"), QStringLiteral("Fill"), cell(3, 0),
          {{"inputX", Value(0.0)},
           {"inputY", Value(0.0)},
           {"inputZ", Value(0.0)},
           {"inputBlending", Value(0)},  // Replace
           {"inputZBuffer", Value(0)},
           {"inputCulling", Value(0)}},
          [] {
              Value state = Value::emptyDictionary();
              state.set("antialiasing", 0);
              return state;
          }());
    g.connect(QStringLiteral("FillWidth"), QStringLiteral("outputResult"), QStringLiteral("Fill"), QStringLiteral("inputWidth"));
    g.connect(QStringLiteral("FillHeight"), QStringLiteral("outputResult"), QStringLiteral("Fill"), QStringLiteral("inputHeight"));
    g.connect(QStringLiteral("Color"), QStringLiteral("output"), QStringLiteral("Fill"), QStringLiteral("inputColor"));
    return composition;
}

// The producer is a plain macro, not a Render In Image: the picture leaves
// it unchanged, so the editor's size-to-fit finds the image's own size and
// the renderer scales it to the component's frame. Width and height are
// accepted for the editor's size pushes and play no part in the picture.
std::unique_ptr<QuartzComposition> makeImageComponentFile()
{
    auto composition = newComposition(QStringLiteral("Image"), QStringLiteral("A picture at its natural size."));
    GraphWriter root(composition->rootPatch());
    QuartzPatch& producer = root.addMacro(QStringLiteral("Image"), QStringLiteral("Image"), cell(0, 0));
    GraphWriter g(producer);
    QuartzComposition& c = *composition;
    QuartzPatch& image = addComponentInput(c, g, QStringLiteral("Image"), PortClass::Image, Value(),
                                           {QStringLiteral("Image [1]"), QStringLiteral("The picture.")}, cell(0, 0));
    addComponentInput(c, g, QStringLiteral("inputWidth"), PortClass::Number, Value(0.0),
                      {QStringLiteral("Width"), QStringLiteral("Width in pixels.")}, cell(0, 1));
    addComponentInput(c, g, QStringLiteral("inputHeight"), PortClass::Number, Value(0.0),
                      {QStringLiteral("Height"), QStringLiteral("Height in pixels.")}, cell(0, 2));
    image.publishOutputPort(QStringLiteral("output"), QStringLiteral("outputImage"));
    producer.publishOutputPort(QStringLiteral("outputImage"), QStringLiteral("outputImage"));
    return composition;
}

}  // namespace standardcomponents
