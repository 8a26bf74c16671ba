// What individual patches compute, through the public renderer API.

#include "CompositionBuilder.h"

#include "runtime/patches/Expression.h"
#include "runtime/patches/StopFramesPlugIn.h"
#include "runtime/patches/TimelineCurve.h"

#include <gtest/gtest.h>

#include <cmath>

using test::Node;

namespace {

// A renderer whose root publishes `node`'s output `port` as "Out" and the
// given inputs under their own names.
struct Probe {
    explicit Probe(Node node, const std::string& port, std::vector<std::string> inputs = {})
    {
        Node r = test::root();
        const std::string key = node.value().value("key").string();
        r.child(node).publishOutput("Out", key, port);
        for (const auto& in : inputs) r.publishInput(in, key, in);
        renderer = std::make_unique<runtime::Renderer>(test::load(r), QSize(8, 8));
    }
    double at(double time)
    {
        renderer->render(time);
        return renderer->outputValue("Out").toDouble();
    }
    void set(const char* key, const QVariant& v) { ASSERT_TRUE(renderer->setInputValue(key, v)) << key; }
    std::unique_ptr<runtime::Renderer> renderer;
};

TEST(MathPatch, AppliesOperationsLeftToRight)
{
    Node math("QCMath", "Math_1");
    math.state("operationCount", 3)
        .input("inputValue", 5.0)
        .custom("operation_1", 1).custom("operand_1", 2.0)    // 5 − 2 = 3
        .custom("operation_2", 5).custom("operand_2", 2.0)    // 3 ^ 2 = 9
        .custom("operation_3", 4).custom("operand_3", 4.0);   // 9 mod 4 = 1
    Probe p(math, "outputValue", {"operation_3", "operand_3"});
    EXPECT_DOUBLE_EQ(p.at(0), 1.0);
    p.set("operation_3", 3);  // ÷
    p.set("operand_3", 0.0);  // by zero gives 0, not infinity
    EXPECT_DOUBLE_EQ(p.at(0), 0.0);
    p.set("operation_3", 6);  // min
    p.set("operand_3", -2.0);
    EXPECT_DOUBLE_EQ(p.at(0), -2.0);
    p.set("operation_3", 7);  // max
    EXPECT_DOUBLE_EQ(p.at(0), 9.0);
}

TEST(ExpressionPatch, EvaluatesWithVariablesAsInputs)
{
    Node e("QCExpression", "Expression_1");
    e.state("expression", "a > 1 ? sqrt(b) * 2 ^ 2 : -b % 3 + sin(90) + round(2.5)");
    Probe p(e, "outputResult", {"a", "b"});
    p.set("a", 2.0);
    p.set("b", 9.0);
    EXPECT_DOUBLE_EQ(p.at(0), 12.0);
    p.set("a", 0.0);
    EXPECT_DOUBLE_EQ(p.at(0), std::fmod(-9.0, 3.0) + 1.0 + 3.0);  // degrees: sin(90) = 1
}

TEST(ExpressionPatch, ParserReportsErrorsAndListsVariablesInOrder)
{
    auto e = runtime::Expression::parse("width * scale + offset - width");
    ASSERT_TRUE(e);
    EXPECT_EQ(e->variables(), QStringList({"width", "scale", "offset"}));
    EXPECT_DOUBLE_EQ(e->evaluate({2, 3, 4}), 2 * 3 + 4 - 2);
    EXPECT_DOUBLE_EQ(runtime::Expression::parse("true && !false || 0")->evaluate({}), 1.0);
    EXPECT_DOUBLE_EQ(runtime::Expression::parse("-2^2")->evaluate({}), -4.0);
    EXPECT_DOUBLE_EQ(runtime::Expression::parse("2^3^2")->evaluate({}), 512.0);
    EXPECT_DOUBLE_EQ(runtime::Expression::parse("atan2(1, 1) + min(3, max(1, 2))")->evaluate({}), 47.0);

    QString error;
    EXPECT_FALSE(runtime::Expression::parse("1 + (2", &error));
    EXPECT_EQ(error, "\")\" expected at column 7");
    EXPECT_FALSE(runtime::Expression::parse("frob(1)", &error));
    EXPECT_TRUE(error.startsWith("unknown function \"frob\"")) << error.toStdString();
    EXPECT_FALSE(runtime::Expression::parse("1 $ 2", &error));
    EXPECT_FALSE(runtime::Expression::parse(QString(100000, '('), &error));
    EXPECT_TRUE(error.startsWith("expression nested too deeply"));
    QString longSum = "x";
    for (int i = 0; i < 20000; ++i) longSum += "+x";
    EXPECT_FALSE(runtime::Expression::parse(longSum, &error));
    EXPECT_TRUE(error.startsWith("expression too long"));
}

TEST(ExpressionPatch, BadExpressionIsReportedAndOutputsZero)
{
    Node r = test::root();
    r.child(Node("QCExpression", "Expression_1").state("expression", "1 +")).publishOutput("Out", "Expression_1", "outputResult");
    auto c = test::load(r);
    EXPECT_TRUE(test::problemsText(*c).contains("Expression_1: expression \"1 +\": value expected")) << test::problemsText(*c).toStdString();
    runtime::Renderer renderer(c, QSize(4, 4));
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("Out").toDouble(), 0.0);
}

TEST(InterpolationPatch, RepeatModes)
{
    Node n("QCInterpolation", "Interpolation_1");
    n.input("inputValue1", 10.0).input("inputValue2", 20.0).input("inputDuration", 2.0).state("timebase", "parent");
    Probe p(n, "outputValue", {"inputRepeat", "inputInterpolation"});
    EXPECT_DOUBLE_EQ(p.at(0.5), 12.5);
    EXPECT_DOUBLE_EQ(p.at(3.0), 20.0);  // None: holds the end value
    p.set("inputRepeat", 1);             // Loop
    EXPECT_DOUBLE_EQ(p.at(3.0), 15.0);
    p.set("inputRepeat", 2);  // Mirrored loop
    EXPECT_DOUBLE_EQ(p.at(3.0), 15.0);
    EXPECT_DOUBLE_EQ(p.at(3.5), 12.5);
    p.set("inputRepeat", 3);  // Mirrored once, then the start value
    EXPECT_DOUBLE_EQ(p.at(3.5), 12.5);
    EXPECT_DOUBLE_EQ(p.at(4.5), 10.0);
    p.set("inputRepeat", 0);
    p.set("inputInterpolation", 1);  // quadratic in
    EXPECT_DOUBLE_EQ(p.at(1.0), 12.5);
}

TEST(LfoPatch, Waveforms)
{
    Node n("QCLFO", "LFO_1");
    n.input("inputPeriod", 4.0).input("inputAmplitude", 2.0).input("inputOffset", 1.0).input("inputPhase", 0.0);
    Probe p(n, "outputValue", {"inputType", "inputPhase", "inputPWMRatio"});
    EXPECT_NEAR(p.at(1.0), 3.0, 1e-12);  // sin peak a quarter period in
    EXPECT_NEAR(p.at(3.0), -1.0, 1e-12);
    p.set("inputPhase", 90.0);  // degrees
    EXPECT_NEAR(p.at(0.0), 3.0, 1e-12);
    p.set("inputPhase", 0.0);
    p.set("inputType", 1);  // cos
    EXPECT_NEAR(p.at(2.0), -1.0, 1e-12);
    p.set("inputType", 2);  // triangle
    EXPECT_NEAR(p.at(0.5), 2.0, 1e-12);
    p.set("inputType", 3);  // square
    EXPECT_NEAR(p.at(0.5), 3.0, 1e-12);
    EXPECT_NEAR(p.at(2.5), -1.0, 1e-12);
    p.set("inputType", 4);  // sawtooth up
    EXPECT_NEAR(p.at(1.0), 0.0, 1e-12);
    p.set("inputType", 5);  // sawtooth down
    EXPECT_NEAR(p.at(1.0), 2.0, 1e-12);
    p.set("inputType", 6);  // PWM with a quarter duty cycle
    p.set("inputPWMRatio", 0.25);
    EXPECT_NEAR(p.at(0.5), 3.0, 1e-12);
    EXPECT_NEAR(p.at(1.5), -1.0, 1e-12);
}

TEST(TimelineCurve, BezierSegmentsHoldsAndJumps)
{
    using Key = runtime::TimelineCurve::Key;
    // A straight line as a Bézier with handles at thirds, then a jump.
    runtime::TimelineCurve curve({Key{0, 0, {}, {1, 1}}, Key{3, 3, {-1, -1}, {}}, Key{3, 10, {}, {}}, Key{4, 10, {}, {}}});
    EXPECT_DOUBLE_EQ(curve.valueAt(-1), 0.0);
    EXPECT_NEAR(curve.valueAt(1.5), 1.5, 1e-9);
    EXPECT_NEAR(curve.valueAt(2.999), 2.999, 1e-6);
    EXPECT_DOUBLE_EQ(curve.valueAt(3), 10.0);  // the later of two keys at one time
    EXPECT_DOUBLE_EQ(curve.valueAt(99), 10.0);
    // An ease: flat handles make the middle steeper than a line.
    runtime::TimelineCurve ease({Key{0, 0, {}, {0.5, 0}}, Key{1, 1, {-0.5, 0}, {}}});
    EXPECT_NEAR(ease.valueAt(0.5), 0.5, 1e-9);
    EXPECT_LT(ease.valueAt(0.2), 0.2);
    EXPECT_GT(ease.valueAt(0.8), 0.8);
}

TEST(TimelinePatch, TracksBecomeNumberedOutputs)
{
    auto keyFrame = [](double t, double v) {
        plist::Dictionary kf;
        kf["time"] = t;
        kf["value"] = v;
        plist::Dictionary frame;
        frame["kf"] = plist::Value(kf);
        return plist::Value(frame);
    };
    auto track = [&](int number, plist::Array frames) {
        plist::Dictionary t;
        t["portNumber"] = number;
        t["identifier"] = "Track";
        t["keyFrames"] = plist::Value(frames);
        return plist::Value(t);
    };
    plist::Dictionary wrapper;
    wrapper["timeLines"] = plist::Array{track(1, {keyFrame(0, 0), keyFrame(2, 4)}), track(3, {keyFrame(1, -1)})};
    Node timeline("QCTimeLine", "TimeLine_1");
    timeline.state("timeLines", plist::Value(wrapper)).state("timebase", "external");
    Node r = test::root();
    r.child(timeline).publishInput("Time", "TimeLine_1", "_time");
    r.publishOutput("One", "TimeLine_1", "output_1").publishOutput("Three", "TimeLine_1", "output_3");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    renderer.setInputValue("Time", 1.0);
    renderer.render(100);  // the external time rules, not the render time
    EXPECT_DOUBLE_EQ(renderer.outputValue("One").toDouble(), 2.0);
    EXPECT_DOUBLE_EQ(renderer.outputValue("Three").toDouble(), -1.0);
}

TEST(StopFrameClock, HoldsUntilARisingTriggerAndEndsAtTheDuration)
{
    runtime::StopFrameClock clock({2.0, 5.0}, 8.0, true);
    EXPECT_EQ(clock.advance(1.0, false).time, 1.0);
    auto s = clock.advance(2.5, false);  // passes the first stop frame: holds on it
    EXPECT_EQ(s.time, 2.0);
    EXPECT_TRUE(s.waitingForTrigger);
    EXPECT_EQ(clock.advance(4.0, true).time, 2.0);  // rising edge: released from here on
    EXPECT_FALSE(clock.advance(4.0, true).waitingForTrigger);
    EXPECT_EQ(clock.advance(4.5, true).time, 2.5);  // continuous: 2 s were held
    EXPECT_EQ(clock.advance(5.0, false).time, 3.0);
    s = clock.advance(7.5, true);  // the second stop frame: a level is no edge
    EXPECT_EQ(s.time, 5.0);
    EXPECT_TRUE(s.waitingForTrigger);
    EXPECT_TRUE(clock.advance(8.0, true).waitingForTrigger);
    clock.advance(8.1, false);
    EXPECT_EQ(clock.advance(9.0, true).time, 5.0);
    s = clock.advance(10.0, false);
    EXPECT_EQ(s.time, 6.0);
    EXPECT_TRUE(s.active);
    s = clock.advance(20.0, false);
    EXPECT_EQ(s.time, 8.0);  // stays at the duration
    EXPECT_FALSE(s.active);
    s = clock.advance(0.0, false);  // from the start again: a reload
    EXPECT_EQ(s.time, 0.0);
    EXPECT_TRUE(s.active);
    EXPECT_EQ(clock.advance(3.0, false).time, 2.0);
}

TEST(StopFrameClock, DisabledStopFramesNeverHold)
{
    runtime::StopFrameClock clock({1.0}, 4.0, false);
    EXPECT_EQ(clock.advance(2.0, false).time, 2.0);
    EXPECT_FALSE(clock.advance(3.0, false).waitingForTrigger);
}

TEST(StopFramesPlugIn, DrivenByThePatchTimePlugInAsTheExportWiresIt)
{
    Node patchTime("QCPlugInPatch", "stopframetimer");
    patchTime.identifier("QLNPatchTimePlugIn").state("timebase", "parent");
    plist::Dictionary stop;
    stop["name"] = "Hold";
    stop["time"] = 1.0;
    plist::Dictionary plugInState;
    plugInState["compositionDuration"] = 3.0;
    plugInState["enableStopframesInQLNApps"] = true;
    plugInState["stopframes"] = plist::Array{plist::Value(stop)};
    Node stops("QCPlugInPatch", "QCPlugInPatch_1");
    stops.identifier("QLNStopframesPlugIn").state("timebase", "external").state("plugInState", plist::Value(plugInState));
    Node r = test::root();
    r.child(patchTime).child(stops);
    r.connect("stopframetimer", "outputTime", "QCPlugInPatch_1", "_time");
    r.publishInput("trigger", "QCPlugInPatch_1", "inputTrigger");
    r.publishOutput("waitingForTrigger", "QCPlugInPatch_1", "outputWaitingForTrigger");
    r.publishOutput("active", "QCPlugInPatch_1", "outputActive");
    r.publishOutput("time", "QCPlugInPatch_1", "outputTime");
    auto c = test::load(r);
    EXPECT_TRUE(c->unsupportedClasses().isEmpty());
    runtime::Renderer renderer(c, QSize(4, 4));
    renderer.render(0.5);
    EXPECT_EQ(renderer.outputValue("time").toDouble(), 0.5);
    EXPECT_FALSE(renderer.outputValue("waitingForTrigger").toBool());
    renderer.render(1.5);
    EXPECT_EQ(renderer.outputValue("time").toDouble(), 1.0);
    EXPECT_TRUE(renderer.outputValue("waitingForTrigger").toBool());
    renderer.setInputValue("trigger", true);
    renderer.render(2.0);
    renderer.setInputValue("trigger", false);
    renderer.render(2.5);
    EXPECT_EQ(renderer.outputValue("time").toDouble(), 1.5);
    EXPECT_TRUE(renderer.outputValue("active").toBool());
    renderer.render(9.0);
    EXPECT_EQ(renderer.outputValue("time").toDouble(), 3.0);
    EXPECT_FALSE(renderer.outputValue("active").toBool());
}

TEST(ValuePatches, SplitterClampsAndConverts)
{
    Node s("QCSplitter", "Splitter_1");
    s.state("portClass", "QCIndexPort").state("inputMax", 3.0);
    Probe p(s, "output", {"input"});
    p.set("input", 2.6);
    EXPECT_EQ(p.at(0), 3.0);  // an index rounds
    p.set("input", 7);
    EXPECT_EQ(p.at(0), 3.0);
    p.set("input", -4);
    EXPECT_EQ(p.at(0), 0.0);
}

TEST(ColorPatches, HslAndRgbRoundTrip)
{
    Node hsl("QCColorFromComponents", "HSL_1");
    hsl.identifier("hsl").input("input1", 2.0 / 3.0).input("input2", 1.0).input("input3", 0.5).input("inputAlpha", 0.5);
    Node split("QCColorToComponents", "RGB_1");
    split.identifier("rgb");
    Node r = test::root();
    r.child(hsl).child(split).connect("HSL_1", "outputColor", "RGB_1", "inputColor");
    r.publishOutput("R", "RGB_1", "output1").publishOutput("B", "RGB_1", "output3").publishOutput("A", "RGB_1", "outputAlpha");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    renderer.render(0);
    EXPECT_NEAR(renderer.outputValue("R").toDouble(), 0.0, 1e-9);
    EXPECT_NEAR(renderer.outputValue("B").toDouble(), 1.0, 1e-9);  // hue 2/3 is blue
    EXPECT_NEAR(renderer.outputValue("A").toDouble(), 0.5, 1e-9);
}

TEST(ColorPatches, ColorTransformTurnsHueAndScalesTheRest)
{
    Node transform("QCColorTransform", "ColorTransform_1");
    transform.input("inputColor", test::colorValue(1, 0, 0, 1)).input("inputHue", 1.0 / 3.0).input("inputAlpha", 0.25);
    Node split("QCColorToComponents", "RGB_1");
    split.identifier("rgb");
    Node r = test::root();
    r.child(transform).child(split).connect("ColorTransform_1", "outputColor", "RGB_1", "inputColor");
    r.publishInput("luminosity", "ColorTransform_1", "inputLuminosity").publishInput("saturation", "ColorTransform_1", "inputSaturation");
    r.publishOutput("R", "RGB_1", "output1").publishOutput("G", "RGB_1", "output2").publishOutput("A", "RGB_1", "outputAlpha");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    renderer.render(0);
    EXPECT_NEAR(renderer.outputValue("R").toDouble(), 0.0, 1e-9);  // red turned a third: green
    EXPECT_NEAR(renderer.outputValue("G").toDouble(), 1.0, 1e-9);
    EXPECT_NEAR(renderer.outputValue("A").toDouble(), 0.25, 1e-9);
    renderer.setInputValue("saturation", 0.0);  // grey at the same luminosity
    renderer.setInputValue("luminosity", 0.8);
    renderer.render(0);
    EXPECT_NEAR(renderer.outputValue("R").toDouble(), 0.4, 1e-9);
    EXPECT_NEAR(renderer.outputValue("G").toDouble(), 0.4, 1e-9);
}

TEST(LogicPatches, ConditionalWithToleranceAndCounterOnEdges)
{
    Node cond("QCConditional", "Conditional_1");
    cond.input("inputValue2", 1.0).input("inputTolerance", 0.1);
    Probe p(cond, "outputResult", {"inputValue1", "inputTest"});
    p.set("inputValue1", 1.05);
    EXPECT_EQ(p.at(0), 1.0);
    p.set("inputTest", 2);  // greater than
    EXPECT_EQ(p.at(0), 1.0);
    p.set("inputTest", 1);  // not equal (within tolerance it is equal)
    EXPECT_EQ(p.at(0), 0.0);

    Probe counter(Node("QCCounter", "Counter_1"), "outputCount", {"inputSignal", "inputSignalReset"});
    for (bool level : {true, true, false, true}) {
        counter.set("inputSignal", level);
        counter.at(0);
    }
    EXPECT_EQ(counter.at(0), 2.0);
    counter.set("inputSignalReset", true);
    EXPECT_EQ(counter.at(0), 0.0);
}

TEST(DevicePatches, NoPointerAndNoKeysWhileRendering)
{
    Node keyboard("QCKeyboard", "Keyboard_1");
    keyboard.state("keys", plist::Value::data(std::string("\0 \0r", 4)));
    Node r = test::root();
    r.child(keyboard).child(Node("QCMouse", "Mouse_1"));
    r.publishOutput("Space", "Keyboard_1", "key_0020").publishOutput("R", "Keyboard_1", "key_0072");
    r.publishOutput("X", "Mouse_1", "outputX").publishOutput("Down", "Mouse_1", "outputButton1");
    auto c = test::load(r);
    EXPECT_TRUE(c->problems().isEmpty()) << test::problemsText(*c).toStdString();
    runtime::Renderer renderer(c, QSize(4, 4));
    renderer.render(0, {{"mouseLocation", QPointF(0.25, -0.5)}});
    EXPECT_FALSE(renderer.outputValue("Space").toBool());
    EXPECT_FALSE(renderer.outputValue("Down").toBool());
    EXPECT_EQ(renderer.outputValue("X").toDouble(), 0.25);
}

TEST(StringPatches, PrinterFormatsItsArguments)
{
    Node printer("QCStringFormat", "StringFormat_1");
    printer.identifier("printer").state("format", "%@: %.2f%% of %d").custom("argument_1", "Load");
    Probe p(printer, "outputString", {"argument_2", "argument_3"});
    p.set("argument_2", 12.345);
    p.set("argument_3", 7.6);
    p.renderer->render(0);
    EXPECT_EQ(p.renderer->outputValue("Out").toString(), "Load: 12.35% of 8");
}

}  // namespace

namespace {

TEST(QueuePatch, KeepsTheLastValuesOldestFirst)
{
    const auto queueOf = [](bool continuous) {
        test::Node queue("QCQueue", "Queue_1");
        queue.state("continuous", continuous).input("inputSize", 3);
        test::Node r = test::root();
        r.child(queue).publishInput("value", "Queue_1", "inputValue").publishInput("filling", "Queue_1", "inputFilling");
        r.publishInput("reset", "Queue_1", "inputResetSignal").publishOutput("queue", "Queue_1", "outputQueue");
        return std::make_unique<runtime::Renderer>(test::load(r), QSize(4, 4));
    };
    auto queue = queueOf(false);
    for (double v : {1.0, 2.0, 2.0, 3.0, 4.0}) {
        queue->setInputValue("value", v);
        queue->render(v);
    }
    // An unchanged value is not added again; the oldest beyond three go.
    EXPECT_EQ(queue->outputValue("queue").toList(), QVariantList({2.0, 3.0, 4.0}));
    queue->setInputValue("filling", false);
    queue->setInputValue("value", 5.0);
    queue->render(6);
    EXPECT_EQ(queue->outputValue("queue").toList(), QVariantList({2.0, 3.0, 4.0}));
    queue->setInputValue("reset", true);
    queue->render(7);
    EXPECT_EQ(queue->outputValue("queue").toList(), QVariantList());

    // Continuous: a value every frame, changed or not.
    auto continuous = queueOf(true);
    continuous->setInputValue("value", 8.0);
    for (int frame = 0; frame < 2; ++frame) continuous->render(frame);
    EXPECT_EQ(continuous->outputValue("queue").toList(), QVariantList({8.0, 8.0}));
}

}  // namespace
