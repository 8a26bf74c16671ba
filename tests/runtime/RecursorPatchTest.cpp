// The Recursor: values fed back from a macro's published outputs one frame
// late, its initial values and reset, and loops that it makes legal.

#include "CompositionBuilder.h"

#include <gtest/gtest.h>

using test::Node;

namespace {

// A recursor saving the given number ports, as the editor stores it.
Node recursor(const std::string& key, std::initializer_list<const char*> names)
{
    plist::Array saved;
    for (const char* name : names) saved.push_back(plist::Value(plist::Array{"QCNumberPort", name}));
    Node node("QCRecursor", key);
    node.state("savedPorts", plist::Value(std::move(saved)));
    return node;
}

Node adder(const std::string& key, double operand)
{
    Node math("QCMath", key);
    math.state("operationCount", 1).custom("operation_1", 0).custom("operand_1", operand);
    return math;
}

// Patch_1 publishes "Sum" = recursor's Sum + 1, so each frame adds one.
Node counterMacro()
{
    Node macro("QCPatch", "Patch_1");
    macro.child(recursor("Recursor_1", {"Sum"}).custom("Initial_Sum", 0.0))
        .child(adder("Math_1", 1.0))
        .connect("Recursor_1", "Sum", "Math_1", "inputValue")
        .publishOutput("Sum", "Math_1", "outputValue")
        .publishInput("Start", "Recursor_1", "Initial_Sum")
        .publishInput("Reset", "Recursor_1", "inputInitialize");
    return macro;
}

std::unique_ptr<runtime::Renderer> counterRenderer()
{
    Node r = test::root();
    r.child(counterMacro())
        .publishOutput("Out", "Patch_1", "Sum")
        .publishInput("Start", "Patch_1", "Start")
        .publishInput("Reset", "Patch_1", "Reset");
    return std::make_unique<runtime::Renderer>(test::load(r), QSize(8, 8));
}

double frame(runtime::Renderer& renderer, double time, const char* output = "Out")
{
    renderer.render(time);
    return renderer.outputValue(output).toDouble();
}

TEST(Recursor, FeedsThePublishedOutputBackOneFrameLate)
{
    auto renderer = counterRenderer();
    EXPECT_DOUBLE_EQ(frame(*renderer, 0.0), 1.0);  // initial 0, plus one
    EXPECT_DOUBLE_EQ(frame(*renderer, 0.1), 2.0);
    EXPECT_DOUBLE_EQ(frame(*renderer, 0.2), 3.0);
    // Every frame is a step, even at the same time (a still canvas redraws).
    EXPECT_DOUBLE_EQ(frame(*renderer, 0.2), 4.0);
}

TEST(Recursor, StartsFromTheInitialValueAndAgainOnInitializeOrReset)
{
    auto renderer = counterRenderer();
    ASSERT_TRUE(renderer->setInputValue("Start", 10.0));
    EXPECT_DOUBLE_EQ(frame(*renderer, 0.0), 11.0);
    EXPECT_DOUBLE_EQ(frame(*renderer, 0.1), 12.0);

    ASSERT_TRUE(renderer->setInputValue("Reset", true));
    EXPECT_DOUBLE_EQ(frame(*renderer, 0.2), 11.0);
    EXPECT_DOUBLE_EQ(frame(*renderer, 0.3), 11.0);  // held while initialising
    ASSERT_TRUE(renderer->setInputValue("Reset", false));
    EXPECT_DOUBLE_EQ(frame(*renderer, 0.4), 12.0);

    renderer->reset();
    EXPECT_DOUBLE_EQ(frame(*renderer, 0.5), 11.0);
}

// The "last value" macro of the avocado files: the current value is
// published but only the delayed one is used outside.
TEST(Recursor, KeepsTheLoopGoingWhenOnlyTheDelayedValueIsRead)
{
    Node macro("QCPatch", "Patch_1");
    macro.child(Node("QCSplitter", "Splitter_1").state("portClass", "QCNumberPort"))
        .child(Node("QCSplitter", "Splitter_2").state("portClass", "QCNumberPort"))
        .child(Node("QCSplitter", "Splitter_4").state("portClass", "QCNumberPort"))
        .child(recursor("Recursor_2", {"Last_Value", "Value_1"}).custom("Initial_Last_Value", 0.0))
        .connect("Splitter_1", "output", "Recursor_2", "Initial_Value_1")
        .connect("Splitter_1", "output", "Splitter_2", "input")
        .connect("Recursor_2", "Value_1", "Splitter_4", "input")
        .publishInput("Value", "Splitter_1", "input")
        .publishOutput("Last_Value", "Splitter_4", "output")
        .publishOutput("Value_1", "Splitter_2", "output");
    Node r = test::root();
    r.child(macro).publishInput("Value", "Patch_1", "Value").publishOutput("Last", "Patch_1", "Last_Value");
    runtime::Renderer renderer(test::load(r), QSize(8, 8));

    ASSERT_TRUE(renderer.setInputValue("Value", 1.0));
    EXPECT_DOUBLE_EQ(frame(renderer, 0.0, "Last"), 1.0);  // the initial value is the current one
    ASSERT_TRUE(renderer.setInputValue("Value", 5.0));
    EXPECT_DOUBLE_EQ(frame(renderer, 0.1, "Last"), 1.0);
    EXPECT_DOUBLE_EQ(frame(renderer, 0.2, "Last"), 5.0);
    ASSERT_TRUE(renderer.setInputValue("Value", -2.0));
    EXPECT_DOUBLE_EQ(frame(renderer, 0.3, "Last"), 5.0);
    EXPECT_DOUBLE_EQ(frame(renderer, 0.4, "Last"), -2.0);
}

// Image Flow's physics macro: its output comes back into one of its own
// inputs through patches outside it. That loop is kept and read one frame
// late; a loop of plain patches is still dropped and reported.
TEST(Recursor, MakesALoopThroughItsMacroLegalWhileOtherCyclesAreStillDropped)
{
    Node macro("QCPatch", "Patch_1");
    macro.child(recursor("Recursor_1", {"Acc"}).custom("Initial_Acc", 1.0))
        .child(adder("Math_1", 0.0))
        .connect("Recursor_1", "Acc", "Math_1", "inputValue")
        .publishInput("Step", "Math_1", "operand_1")
        .publishOutput("Acc", "Math_1", "outputValue");
    Node r = test::root();
    r.child(macro)
        .child(adder("Math_2", 0.0))
        .child(adder("Math_3", 1.0))
        .child(adder("Math_4", 1.0))
        .connect("Patch_1", "Acc", "Math_2", "inputValue")
        .connect("Math_2", "outputValue", "Patch_1", "Step")
        .connect("Math_3", "outputValue", "Math_4", "inputValue")
        .connect("Math_4", "outputValue", "Math_3", "inputValue")
        .publishOutput("Out", "Patch_1", "Acc");
    auto composition = test::load(r);
    const QString problems = test::problemsText(*composition);
    EXPECT_FALSE(problems.contains("Patch_1.Step")) << problems.toStdString();
    EXPECT_FALSE(problems.contains("Patch_1.Acc")) << problems.toStdString();
    EXPECT_EQ(problems.count("closes a cycle"), 1) << problems.toStdString();
    EXPECT_TRUE(problems.contains("Math_3")) << problems.toStdString();

    // Acc = recursor (last frame's Acc) + Step (last frame's Acc, read
    // around the loop): it doubles every frame.
    runtime::Renderer renderer(composition, QSize(8, 8));
    EXPECT_DOUBLE_EQ(frame(renderer, 0.0), 1.0);
    EXPECT_DOUBLE_EQ(frame(renderer, 0.1), 2.0);
    EXPECT_DOUBLE_EQ(frame(renderer, 0.2), 4.0);
    EXPECT_DOUBLE_EQ(frame(renderer, 0.3), 8.0);
}

TEST(Recursor, AConnectionIntoItsOwnInputsClosesNoCycle)
{
    Node macro("QCPatch", "Patch_1");
    macro.child(recursor("Recursor_1", {"X"}).custom("Initial_X", 3.0))
        .child(adder("Math_1", 2.0))
        .connect("Recursor_1", "X", "Math_1", "inputValue")
        .connect("Math_1", "outputValue", "Recursor_1", "Initial_X")
        .publishOutput("X", "Math_1", "outputValue");
    Node r = test::root();
    r.child(macro).publishOutput("Out", "Patch_1", "X");
    auto composition = test::load(r);
    EXPECT_FALSE(test::problemsText(*composition).contains("cycle")) << test::problemsText(*composition).toStdString();
    runtime::Renderer renderer(composition, QSize(8, 8));
    // The connection is live: the initial value is what the loop made of
    // the recursor's empty output (0 + 2), not the stored 3 (which would give 5).
    EXPECT_DOUBLE_EQ(frame(renderer, 0.0), 2.0);
}

TEST(Recursor, DamagedSavedPortsAreReportedAndSkipped)
{
    plist::Array saved;
    saved.push_back(plist::Value(plist::Array{"QCNumberPort"}));       // no name
    saved.push_back(plist::Value(42));                                  // not a pair
    saved.push_back(plist::Value(plist::Array{"QCNumberPort", "X"}));
    saved.push_back(plist::Value(plist::Array{"QCNumberPort", "X"}));  // twice: one port
    saved.push_back(plist::Value(plist::Array{"QCNoSuchPort", "Y"}));  // unknown class: untyped
    Node node("QCRecursor", "Recursor_1");
    node.state("savedPorts", plist::Value(std::move(saved)));
    Node r = test::root();
    r.child(node).publishOutput("X", "Recursor_1", "X").publishOutput("Y", "Recursor_1", "Y");
    auto composition = test::load(r);
    EXPECT_EQ(test::problemsText(*composition).count("saved port without"), 2) << test::problemsText(*composition).toStdString();
    runtime::Renderer renderer(composition, QSize(8, 8));
    renderer.render(0);
    renderer.render(0.1);
    EXPECT_EQ(renderer.outputKeys(), (QStringList{"X", "Y"}));

    // No saved ports at all is an empty patch, not an error.
    Node bare("QCRecursor", "Recursor_1");
    Node r2 = test::root();
    r2.child(bare);
    EXPECT_TRUE(test::problemsText(*test::load(r2)).isEmpty());
}

}  // namespace
