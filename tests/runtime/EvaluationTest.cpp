// How a frame is evaluated: processors at most once per pass and only when
// needed, "_enable", timebases, published values flowing through macros.

#include "CompositionBuilder.h"

#include <gtest/gtest.h>

using test::Node;

namespace {

Node patchTime(const std::string& key, const char* timebase)
{
    Node n("QCTime", key);
    n.state("timebase", timebase);
    return n;
}

TEST(Evaluation, AProcessorRunsOncePerFrameWhateverPullsIt)
{
    // A random source read by two Math patches: if it ran twice in a frame,
    // the two readers would see different numbers.
    Node random("QCRandom", "Random_1");
    random.state("randomSeed", 7).state("timebase", "parent");
    Node r = test::root();
    r.child(random).child(Node("QCMath", "Math_1")).child(Node("QCMath", "Math_2"));
    r.connect("Random_1", "outputValue", "Math_1", "inputValue");
    r.connect("Random_1", "outputValue", "Math_2", "inputValue");
    r.publishOutput("A", "Math_1", "outputValue").publishOutput("B", "Math_2", "outputValue");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    renderer.render(0.0);
    const double first = renderer.outputValue("A").toDouble();
    EXPECT_EQ(first, renderer.outputValue("B").toDouble());
    renderer.render(0.0);  // same time: nothing re-runs
    EXPECT_EQ(first, renderer.outputValue("A").toDouble());
    renderer.render(0.5);
    EXPECT_NE(first, renderer.outputValue("A").toDouble());
    EXPECT_EQ(renderer.outputValue("A"), renderer.outputValue("B"));
}

TEST(Evaluation, UnusedProcessorsNeverRun)
{
    // A stop watch started by a pulse only counts when something reads it.
    Node counter("QCCounter", "Counter_1");
    Node r = test::root();
    r.child(counter).child(Node("QCSplitter", "Splitter_1").state("portClass", "QCBooleanPort"));
    r.connect("Splitter_1", "output", "Counter_1", "inputSignal");
    r.publishInput("Signal", "Splitter_1", "input");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    for (bool level : {true, false, true}) {
        renderer.setInputValue("Signal", level);
        renderer.render(0);
    }
    EXPECT_EQ(renderer.nodeOutputValue("Counter_1", "outputCount").toDouble(), 0.0);
}

TEST(Evaluation, DisabledPatchesKeepTheirOutputsAndDisabledMacrosSkipTheirChildren)
{
    Node math("QCMath", "Math_1");
    math.state("operationCount", 1).custom("operation_1", 0).custom("operand_1", 1.0);
    Node macro("QCPatch", "Patch_1");
    macro.child(patchTime("Time_1", "parent")).publishOutput("T", "Time_1", "outputTime");
    Node r = test::root();
    r.child(math).child(macro).child(Node("QCSplitter", "Splitter_1").state("portClass", "QCNumberPort"));
    r.connect("Splitter_1", "output", "Math_1", "inputValue");
    r.publishInput("In", "Splitter_1", "input").publishInput("MathOn", "Math_1", "_enable");
    r.publishInput("MacroOn", "Patch_1", "_enable");
    r.publishOutput("Out", "Math_1", "outputValue").publishOutput("Time", "Patch_1", "T");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    renderer.setInputValue("In", 1.0);
    renderer.render(1.0);
    EXPECT_EQ(renderer.outputValue("Out").toDouble(), 2.0);
    EXPECT_EQ(renderer.outputValue("Time").toDouble(), 1.0);
    renderer.setInputValue("MathOn", false);
    renderer.setInputValue("MacroOn", false);
    renderer.setInputValue("In", 5.0);
    renderer.render(2.0);
    EXPECT_EQ(renderer.outputValue("Out").toDouble(), 2.0);
    EXPECT_EQ(renderer.outputValue("Time").toDouble(), 1.0);
    renderer.setInputValue("MathOn", true);
    renderer.setInputValue("MacroOn", true);
    renderer.render(3.0);
    EXPECT_EQ(renderer.outputValue("Out").toDouble(), 6.0);
    EXPECT_EQ(renderer.outputValue("Time").toDouble(), 3.0);
}

TEST(Evaluation, TimebasesParentExternalAndRebasingMacros)
{
    Node external = patchTime("Time_2", "external");
    external.system("_time", 7.0);
    Node rebased("QCPatch", "Patch_1");
    rebased.state("timebase", "external").system("_time", 10.0);
    rebased.child(patchTime("Time_3", "parent")).publishOutput("T", "Time_3", "outputTime");
    Node r = test::root();
    r.child(patchTime("Time_1", "parent")).child(external).child(rebased);
    r.publishOutput("Parent", "Time_1", "outputTime").publishOutput("External", "Time_2", "outputTime");
    r.publishOutput("Rebased", "Patch_1", "T");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    renderer.render(2.5);
    EXPECT_EQ(renderer.outputValue("Parent").toDouble(), 2.5);
    EXPECT_EQ(renderer.outputValue("External").toDouble(), 7.0);
    EXPECT_EQ(renderer.outputValue("Rebased").toDouble(), 10.0);
}

TEST(Evaluation, LocalTimeRestartsWhenThePatchIsUsedAgain)
{
    Node macro("QCPatch", "Patch_1");
    macro.child(patchTime("Time_1", "local")).publishOutput("T", "Time_1", "outputTime");
    Node r = test::root();
    r.child(macro).publishInput("On", "Patch_1", "_enable").publishOutput("Local", "Patch_1", "T");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    renderer.render(3.0);  // first use: local time starts here
    EXPECT_EQ(renderer.outputValue("Local").toDouble(), 0.0);
    renderer.render(4.5);
    EXPECT_EQ(renderer.outputValue("Local").toDouble(), 1.5);
    renderer.setInputValue("On", false);
    renderer.render(5.0);
    renderer.setInputValue("On", true);
    renderer.render(8.0);  // in use again: restarts
    EXPECT_EQ(renderer.outputValue("Local").toDouble(), 0.0);
    renderer.render(9.0);
    EXPECT_EQ(renderer.outputValue("Local").toDouble(), 1.0);
}

TEST(Evaluation, PublishedInputsFlowIntoMacrosAndConvertTypes)
{
    Node logic("QCLogic", "Logic_1");
    logic.input("inputOperation", 3);  // NOT
    Node macro("QCPatch", "Patch_1");
    macro.child(logic).publishInput("Value", "Logic_1", "inputValue1").publishOutput("Result", "Logic_1", "outputResult");
    Node r = test::root();
    r.child(Node("QCSplitter", "Splitter_1").state("portClass", "QCNumberPort")).child(macro);
    r.connect("Splitter_1", "output", "Patch_1", "Value");
    r.publishInput("Number", "Splitter_1", "input").publishOutput("Not", "Patch_1", "Result");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    renderer.setInputValue("Number", 0.0);
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("Not").toBool(), true);
    renderer.setInputValue("Number", 3.0);  // a number feeding a boolean port: non-zero is true
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("Not").toBool(), false);
}

TEST(Evaluation, SeparateRenderersOfOneTemplateKeepSeparateValues)
{
    Node r = test::root();
    r.child(Node("QCSplitter", "Splitter_1").state("portClass", "QCStringPort").custom("input", "start"));
    r.publishInput("Text", "Splitter_1", "input").publishOutput("Echo", "Splitter_1", "output");
    auto composition = test::load(r);
    runtime::Renderer a(composition, QSize(4, 4)), b(composition, QSize(4, 4));
    a.setInputValue("Text", "changed");
    a.render(0);
    b.render(0);
    EXPECT_EQ(a.outputValue("Echo").toString(), "changed");
    EXPECT_EQ(b.outputValue("Echo").toString(), "start");
    EXPECT_EQ(composition->input("Text")->defaultValue.toString(), "start");
}

TEST(Evaluation, MultiplexerEvaluatesOnlyTheSelectedSource)
{
    // Source 1 is a counter of rising edges; while source 0 is selected the
    // counter must not see the edges.
    Node counter("QCCounter", "Counter_1");
    Node mux("QCMultiplexer", "Multiplexer_1");
    mux.state("inputCount", 2).state("portClass", "QCNumberPort");
    Node r = test::root();
    r.child(Node("QCSplitter", "Signal").state("portClass", "QCBooleanPort")).child(counter).child(mux);
    r.connect("Signal", "output", "Counter_1", "inputSignal");
    r.connect("Counter_1", "outputCount", "Multiplexer_1", "source_1");
    r.publishInput("Signal", "Signal", "input").publishInput("Index", "Multiplexer_1", "inputIndex");
    r.publishOutput("Out", "Multiplexer_1", "output");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    for (bool level : {true, false, true, false}) {
        renderer.setInputValue("Signal", level);
        renderer.render(0);
    }
    renderer.setInputValue("Index", 1);
    renderer.setInputValue("Signal", true);
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("Out").toDouble(), 1.0);
    renderer.setInputValue("Index", 9);  // clamped to the last source
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("Out").toDouble(), 1.0);
}

}  // namespace
