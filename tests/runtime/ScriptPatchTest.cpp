// The JavaScript patch: both script forms, typed ports, and scripts that
// fail or never end.

#include "CompositionBuilder.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

using test::Node;

namespace {

std::unique_ptr<runtime::Renderer> scriptRenderer(const std::string& script, std::vector<std::string> inputs,
                                                  std::vector<std::string> outputs, plist::Dictionary state = {})
{
    Node js("QCJavaScript", "JavaScript_1");
    js.state("script", script);
    for (auto& [key, value] : state) js.state(key, value);
    Node r = test::root();
    r.child(js);
    for (const auto& in : inputs) r.publishInput(in, "JavaScript_1", in);
    for (const auto& out : outputs) r.publishOutput(out, "JavaScript_1", out);
    return std::make_unique<runtime::Renderer>(test::load(r), QSize(4, 4));
}

TEST(JavaScriptPatch, TypedMainFunction)
{
    auto r = scriptRenderer(
        "var calls = 0;\n"
        "function (__string label, __number sum, __structure list) main (__string name, __number values[2])\n"
        "{ calls++; return { label: name + '#' + calls, sum: values[0] + values[1], list: [1, 'two'] }; }",
        {"name", "values_0", "values_1"}, {"label", "sum", "list"});
    EXPECT_EQ(r->composition().input("values_1")->type, runtime::PortType::Number);
    r->setInputValue("name", "n");
    r->setInputValue("values_0", 2.0);
    r->setInputValue("values_1", 3.5);
    r->render(0);
    EXPECT_EQ(r->outputValue("label").toString(), "n#1");  // global state persists between calls
    EXPECT_EQ(r->outputValue("sum").toDouble(), 5.5);
    EXPECT_EQ(r->outputValue("list").toList(), QVariantList({1.0, "two"}));
}

TEST(JavaScriptPatch, OlderInputsOutputsForm)
{
    plist::Dictionary state;
    state["inputCount"] = 1;
    state["outputCount"] = 2;
    auto r = scriptRenderer("if (typeof prev == 'undefined') prev = 0;\noutputs[0] = inputs[0] * 2; outputs[1] = prev; prev = inputs[0];",
                            {"input_0"}, {"output_0", "output_1"}, state);
    r->setInputValue("input_0", 4.0);
    r->render(0);
    r->setInputValue("input_0", 5.0);
    r->render(0);
    EXPECT_EQ(r->outputValue("output_0").toDouble(), 10.0);
    EXPECT_EQ(r->outputValue("output_1").toDouble(), 4.0);
}

TEST(JavaScriptPatch, RunawayAndBrokenScriptsAreStopped)
{
    auto loop = scriptRenderer("function (__number out) main (__number x) { while (true) {} }", {"x"}, {"out"});
    QElapsedTimer timer;
    timer.start();
    loop->setInputValue("x", 1.0);
    loop->render(0);
    EXPECT_LT(timer.elapsed(), 5000);
    EXPECT_EQ(loop->outputValue("out").toDouble(), 0.0);  // outputs keep their initial value

    auto broken = scriptRenderer("function (__number out) main (__number x) { return {out: x +; }", {"x"}, {"out"});
    broken->setInputValue("x", 1.0);
    broken->render(0);
    EXPECT_EQ(broken->outputValue("out").toDouble(), 0.0);

    auto throwing = scriptRenderer("function (__number out) main (__number x) { throw new Error('no'); }", {"x"}, {"out"});
    throwing->setInputValue("x", 1.0);
    throwing->render(0);
    EXPECT_EQ(throwing->outputValue("out").toDouble(), 0.0);
    // A script that recovers produces values again after an interruption.
    auto flaky = scriptRenderer("function (__number out) main (__number x) { while (x > 0) {} return {out: 7}; }", {"x"}, {"out"});
    flaky->setInputValue("x", 1.0);
    flaky->render(0);
    flaky->setInputValue("x", 0.0);
    flaky->render(0);
    EXPECT_EQ(flaky->outputValue("out").toDouble(), 7.0);
}

TEST(JavaScriptPatch, ScriptsOfOneRendererKeepTheirOwnNamesAndRestartOnReset)
{
    // Both scripts run in the renderer's one engine; each has its own main
    // and its own counter.
    Node first("QCJavaScript", "JavaScript_1");
    first.state("script", "var n = 0;\nfunction (__number out) main (__number x) { n += 1; return {out: n}; }");
    Node second("QCJavaScript", "JavaScript_2");
    second.state("script", "var n = 100;\nfunction (__number out) main (__number x) { n += 10; return {out: n}; }");
    Node r = test::root();
    r.child(first).child(second);
    r.publishInput("a", "JavaScript_1", "x").publishInput("b", "JavaScript_2", "x");
    r.publishOutput("first", "JavaScript_1", "out").publishOutput("second", "JavaScript_2", "out");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    for (int frame = 0; frame < 3; ++frame) {
        renderer.setInputValue("a", double(frame));
        renderer.setInputValue("b", double(frame));
        renderer.render(0);
    }
    EXPECT_EQ(renderer.outputValue("first").toDouble(), 3.0);
    EXPECT_EQ(renderer.outputValue("second").toDouble(), 130.0);

    renderer.reset();
    renderer.setInputValue("a", 9.0);
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("first").toDouble(), 1.0);
}

}  // namespace
