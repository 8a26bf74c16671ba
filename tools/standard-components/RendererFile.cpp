// "Renderer.qtz": the patches the export copies for every component. All
// geometry arrives in template pixels (origin at the lower left, y up);
// "Scaling Factor" reads the rendering destination itself, so one exported
// file draws right at any output size.

#include "FileBuilders.h"
#include "GraphWriter.h"

namespace standardcomponents {

namespace {

// Template pixels → destination units and pixels. Each axis is mapped on its
// own, so the template frame always fills the destination (a uniform scale
// whenever the aspect ratios agree).
void buildScalingFactor(QuartzPatch& macro)
{
    GraphWriter g(macro);
    g.addSplitter(QStringLiteral("compositionWidth"), PortClass::Number, Value(1920.0), cell(0, 0), {1.0, {}, {}})
        .publishPort(QStringLiteral("input"), QStringLiteral("compositionWidth"), QStringLiteral("compositionWidth"));
    g.addSplitter(QStringLiteral("compositionHeight"), PortClass::Number, Value(1080.0), cell(0, 1), {1.0, {}, {}})
        .publishPort(QStringLiteral("input"), QStringLiteral("compositionHeight"), QStringLiteral("compositionHeight"));
    // "Rendering Destination Dimensions": 2 units wide, 2·h/w high.
    QuartzPatch& destination = g.add(QStringLiteral("QCScreenInfo"), QStringLiteral("Destination"), cell(0, 2));

    struct Ratio {
        const char* key;
        const char* expression;
        const char* destination;  // Destination output feeding the numerator
        const char* numerator;
        const char* denominator;  // splitter feeding the denominator
    };
    const Ratio ratios[] = {
        {"widthScalingFactor", "unitsWide / compositionWidth", "outputWidth", "unitsWide", "compositionWidth"},
        {"heightScalingFactor", "unitsHigh / compositionHeight", "outputHeight", "unitsHigh", "compositionHeight"},
        {"pixelScaleW", "pixelsWide / compositionWidth", "outputPixelsWide", "pixelsWide", "compositionWidth"},
        {"pixelScaleH", "pixelsHigh / compositionHeight", "outputPixelsHigh", "pixelsHigh", "compositionHeight"},
    };
    int row = 0;
    for (const Ratio& r : ratios) {
        const QString key = QString::fromLatin1(r.key);
        QuartzPatch& e = g.addExpression(key, QString::fromLatin1(r.expression), cell(1, row++));
        g.connect(QStringLiteral("Destination"), QString::fromLatin1(r.destination), key, QString::fromLatin1(r.numerator));
        g.connect(QString::fromLatin1(r.denominator), QStringLiteral("output"), key, QString::fromLatin1(r.denominator));
        e.publishOutputPort(QStringLiteral("outputResult"), key);
    }
    destination.publishOutputPort(QStringLiteral("outputWidth"), QStringLiteral("renderWidth"));
    destination.publishOutputPort(QStringLiteral("outputHeight"), QStringLiteral("renderHeight"));
}

// Number splitters published under their own key, in the given order.
void numberInputs(GraphWriter& g, std::initializer_list<std::pair<const char*, double>> inputs, int column)
{
    int row = 0;
    for (const auto& [key, value] : inputs) {
        const QString name = QString::fromLatin1(key);
        g.addSplitter(name, PortClass::Number, Value(value), cell(column, row++))
            .publishPort(QStringLiteral("input"), name, name);
    }
}

// Draws "image" with its lower-left corner at (originX, originY) template
// pixels, inputWidth × inputHeight pixels, turned by zRotation degrees
// (counter-clockwise) about its centre, at opacity 0…1. A Billboard draws
// nothing without an image, so an empty component leaves no white quad.
void buildRenderer(QuartzPatch& macro)
{
    GraphWriter g(macro);
    QuartzPatch& billboard = g.addBillboard(QStringLiteral("Billboard"), cell(3, 2));
    billboard.publishPort(QStringLiteral("inputImage"), QStringLiteral("image"), QStringLiteral("image"));

    numberInputs(g, {{"scaleFactorWidth", 2.0 / 1920}, {"scaleFactorHeight", 2.0 / 1920}, {"renderWidth", 2.0},
                     {"renderHeight", 1.125}, {"originX", 0.0}, {"originY", 0.0}, {"inputWidth", 1920.0},
                     {"inputHeight", 1080.0}},
                 0);
    g.addSplitter(QStringLiteral("opacity"), PortClass::Number, Value(1.0), cell(0, 8), {0.0, 1.0, {}})
        .publishPort(QStringLiteral("input"), QStringLiteral("opacity"), QStringLiteral("opacity"));
    billboard.publishPort(QStringLiteral("inputRotation"), QStringLiteral("zRotation"), QStringLiteral("zRotation"));

    // White with the opacity as alpha: the billboard multiplies the image by it.
    g.add(QStringLiteral("QCColorFromComponents"), QStringLiteral("Opacity"), cell(1, 8),
          {{"input1", Value(1.0)}, {"input2", Value(1.0)}, {"input3", Value(1.0)}, {"inputAlpha", Value(1.0)}})
        .setIdentifier(QStringLiteral("rgb"));
    g.connect(QStringLiteral("opacity"), QStringLiteral("output"), QStringLiteral("Opacity"), QStringLiteral("inputAlpha"));
    g.connect(QStringLiteral("Opacity"), QStringLiteral("outputColor"), QStringLiteral("Billboard"), QStringLiteral("inputColor"));

    struct Term {
        const char* key;
        const char* expression;
        std::initializer_list<const char*> variables;  // each fed by the splitter of that name
        const char* billboardPort;
    };
    const Term terms[] = {
        {"CenterX", "(originX + inputWidth / 2) * scaleFactorWidth - renderWidth / 2",
         {"originX", "inputWidth", "scaleFactorWidth", "renderWidth"}, "inputX"},
        {"CenterY", "(originY + inputHeight / 2) * scaleFactorHeight - renderHeight / 2",
         {"originY", "inputHeight", "scaleFactorHeight", "renderHeight"}, "inputY"},
        {"Width", "inputWidth * scaleFactorWidth", {"inputWidth", "scaleFactorWidth"}, "inputWidth"},
        {"Height", "inputHeight * scaleFactorHeight", {"inputHeight", "scaleFactorHeight"}, "inputHeight"},
    };
    int row = 0;
    for (const Term& t : terms) {
        const QString key = QString::fromLatin1(t.key);
        g.addExpression(key, QString::fromLatin1(t.expression), cell(2, row++));
        for (const char* variable : t.variables)
            g.connect(QString::fromLatin1(variable), QStringLiteral("output"), key, QString::fromLatin1(variable));
        g.connect(key, QStringLiteral("outputResult"), QStringLiteral("Billboard"), QString::fromLatin1(t.billboardPort));
    }
}

// The engine-output rectangle in destination pixels: X, Y the lower-left
// corner from the destination's lower-left corner, W × H its size; W and H
// are 0 while the component is off.
void buildPosition(QuartzPatch& macro)
{
    GraphWriter g(macro);
    numberInputs(g, {{"scaleFactorWidth", 1.0}, {"scaleFactorHeight", 1.0}, {"originX", 0.0}, {"originY", 0.0},
                     {"inputWidth", 0.0}, {"inputHeight", 0.0}},
                 0);
    g.addSplitter(QStringLiteral("enabled"), PortClass::Boolean, Value(true), cell(0, 6))
        .publishPort(QStringLiteral("input"), QStringLiteral("enabled"), QStringLiteral("enabled"));
    struct Term {
        const char* output;
        const char* expression;
        std::initializer_list<const char*> variables;
    };
    const Term terms[] = {
        {"X", "originX * scaleFactorWidth", {"originX", "scaleFactorWidth"}},
        {"Y", "originY * scaleFactorHeight", {"originY", "scaleFactorHeight"}},
        {"W", "enabled > 0.5 ? inputWidth * scaleFactorWidth : 0", {"enabled", "inputWidth", "scaleFactorWidth"}},
        {"H", "enabled > 0.5 ? inputHeight * scaleFactorHeight : 0", {"enabled", "inputHeight", "scaleFactorHeight"}},
    };
    int row = 0;
    for (const Term& t : terms) {
        const QString key = QString::fromLatin1(t.output);
        QuartzPatch& e = g.addExpression(key, QString::fromLatin1(t.expression), cell(1, row++));
        for (const char* variable : t.variables)
            g.connect(QString::fromLatin1(variable), QStringLiteral("output"), key, QString::fromLatin1(variable));
        e.publishOutputPort(QStringLiteral("outputResult"), key);
    }
}

// The component's local time: max(patchTime − startTime, 0). endTime is
// carried for the export, which sets it on both time patches.
void buildTimer(QuartzPatch& macro)
{
    GraphWriter g(macro);
    QuartzPatch& elapsed = g.addExpression(QStringLiteral("Elapsed"), QStringLiteral("patchTime > startTime ? patchTime - startTime : 0"),
                                           cell(1, 0), {{"patchTime", Value(0.0)}, {"startTime", Value(0.0)}});
    elapsed.publishPort(QStringLiteral("patchTime"), QStringLiteral("patchTime"), QStringLiteral("patchTime"));
    elapsed.publishPort(QStringLiteral("startTime"), QStringLiteral("startTime"), QStringLiteral("startTime"));
    g.addSplitter(QStringLiteral("endTime"), PortClass::Number, Value(0.0), cell(0, 1))
        .publishPort(QStringLiteral("input"), QStringLiteral("endTime"), QStringLiteral("endTime"));
    elapsed.publishOutputPort(QStringLiteral("outputResult"), QStringLiteral("time"));
}

// True (1) while startTime ≤ patchTime ≤ endTime.
void buildEnabler(QuartzPatch& macro)
{
    GraphWriter g(macro);
    QuartzPatch& window =
        g.addExpression(QStringLiteral("Window"), QStringLiteral("patchTime < startTime ? 0 : (patchTime > endTime ? 0 : 1)"),
                        cell(1, 0), {{"patchTime", Value(0.0)}, {"startTime", Value(0.0)}, {"endTime", Value(0.0)}});
    for (const char* port : {"patchTime", "startTime", "endTime"})
        window.publishPort(QString::fromLatin1(port), QString::fromLatin1(port), QString::fromLatin1(port));
    window.publishOutputPort(QStringLiteral("outputResult"), QStringLiteral("outputResult"));
}

}  // namespace

std::unique_ptr<QuartzComposition> makeRendererFile()
{
    auto composition = newComposition(
        QStringLiteral("Renderer"),
        QStringLiteral("Patches the export copies for every component: scaling, drawing, engine-output position, "
                       "local time and time window."));
    GraphWriter root(composition->rootPatch());
    buildScalingFactor(root.addMacro(QStringLiteral("ScalingFactor"), QStringLiteral("Scaling Factor"), cell(0, 0)));
    buildRenderer(root.addMacro(QStringLiteral("Renderer"), QStringLiteral("Renderer"), cell(2, 0)));
    buildPosition(root.addMacro(QStringLiteral("Position"), QStringLiteral("Position"), cell(2, 2)));
    buildTimer(root.addMacro(QStringLiteral("Timer"), QStringLiteral("Timer"), cell(0, 3)));
    buildEnabler(root.addMacro(QStringLiteral("Enabler"), QStringLiteral("Enabler"), cell(0, 4)));
    QuartzPatch& logic = root.add(QStringLiteral("QCLogic"), QStringLiteral("Logic_1"), cell(1, 4),
                                  {{"inputOperation", Value(0)},  // AND
                                   {"inputValue1", Value(false)},
                                   {"inputValue2", Value(true)}});
    logic.setName(QStringLiteral("Logic_1"));

    // The wiring the export makes between the copies, shown once here.
    for (const auto& [from, to] : {std::pair{"widthScalingFactor", "scaleFactorWidth"}, std::pair{"heightScalingFactor", "scaleFactorHeight"},
                                   std::pair{"renderWidth", "renderWidth"}, std::pair{"renderHeight", "renderHeight"}})
        root.connect(QStringLiteral("ScalingFactor"), QString::fromLatin1(from), QStringLiteral("Renderer"), QString::fromLatin1(to));
    root.connect(QStringLiteral("ScalingFactor"), QStringLiteral("pixelScaleW"), QStringLiteral("Position"), QStringLiteral("scaleFactorWidth"));
    root.connect(QStringLiteral("ScalingFactor"), QStringLiteral("pixelScaleH"), QStringLiteral("Position"), QStringLiteral("scaleFactorHeight"));
    root.connect(QStringLiteral("Enabler"), QStringLiteral("outputResult"), QStringLiteral("Logic_1"), QStringLiteral("inputValue1"));
    root.connect(QStringLiteral("Logic_1"), QStringLiteral("outputResult"), QStringLiteral("Renderer"), QStringLiteral("_enable"));
    root.connect(QStringLiteral("Logic_1"), QStringLiteral("outputResult"), QStringLiteral("Position"), QStringLiteral("enabled"));
    return composition;
}

}  // namespace standardcomponents
