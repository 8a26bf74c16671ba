// The renderer operations the editor relies on: values by key, graph
// surgery for component rendering, snapshots and user information.

#include "CompositionBuilder.h"

#include <gtest/gtest.h>

using test::Node;

namespace {

// A component-shaped file: a Render In Image first child publishing its
// image, and a Clear at the root.
std::shared_ptr<const runtime::Composition> componentFile()
{
    Node inner("QCSprite", "Sprite_1");
    inner.input("inputWidth", 2.0).input("inputHeight", 2.0).input("inputColor", test::colorValue(1, 0, 0));
    Node rii("QCRenderInImage", "RenderInImage_1");
    rii.input("inputWidth", 16).input("inputHeight", 16).child(inner);
    Node r = test::root();
    r.child(rii).child(Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0, 0, 1)));
    r.child(Node("QCSplitter", "Splitter_1").state("portClass", "QCNumberPort"));
    r.publishOutput("outputImage", "RenderInImage_1", "outputImage");
    r.publishInput("inputWidth", "RenderInImage_1", "inputWidth");
    return test::load(r);
}

TEST(RendererApi, InjectsASpriteFedByTheFirstImageOutput)
{
    runtime::Renderer renderer(componentFile(), QSize(32, 32));
    const auto source = renderer.firstImageOutput();
    ASSERT_TRUE(source);
    EXPECT_EQ(source->node, "RenderInImage_1");
    EXPECT_EQ(source->className, "QCRenderInImage");

    const QString sprite = renderer.addPatch("QCSprite");
    EXPECT_EQ(sprite, "Sprite_1");
    EXPECT_TRUE(renderer.canConnect(source->node, source->port, sprite, "inputImage"));
    EXPECT_FALSE(renderer.canConnect("Splitter_1", "output", sprite, "inputImage"));  // a number is no image
    ASSERT_TRUE(renderer.connect(source->node, source->port, sprite, "inputImage"));
    EXPECT_EQ(renderer.disableClearPatches(), 1);
    renderer.setNodeInputValue(sprite, "inputWidth", 1.0);
    renderer.setNodeInputValue(sprite, "inputHeight", 1.0);
    renderer.setNodeInputValue(sprite, "inputColor", QColor::fromRgbF(1, 1, 1, 0.5));
    renderer.render(0);
    const QImage image = renderer.snapshot();
    EXPECT_EQ(qAlpha(image.pixel(1, 1)), 0);  // no clear: untouched outside the sprite
    EXPECT_NEAR(qRed(image.pixel(16, 16)), 128, 1);  // red at half opacity
    EXPECT_NEAR(qAlpha(image.pixel(16, 16)), 128, 1);

    // Setting up again replaces the sprite instead of adding a second one.
    EXPECT_TRUE(renderer.removeNode("Sprite_1"));
    EXPECT_FALSE(renderer.removeNode("Sprite_1"));
    EXPECT_EQ(renderer.addPatch("QCSprite"), "Sprite_1");
    EXPECT_EQ(renderer.nodeKeys(), QStringList({"RenderInImage_1", "Clear_1", "Splitter_1", "Sprite_1"}));
}

TEST(RendererApi, RemovingANodeDisconnectsIt)
{
    runtime::Renderer renderer(componentFile(), QSize(16, 16));
    const QString sprite = renderer.addPatch("QCSprite");
    ASSERT_TRUE(renderer.connect("RenderInImage_1", "outputImage", sprite, "inputImage"));
    EXPECT_TRUE(renderer.removeNode("RenderInImage_1"));
    renderer.render(0);  // the sprite's source is gone: no dangling pointer
    EXPECT_FALSE(renderer.outputValue("outputImage").isValid());
    EXPECT_FALSE(renderer.firstImageOutput());
}

TEST(RendererApi, SurgeryErrorsAreReported)
{
    runtime::Renderer renderer(componentFile(), QSize(16, 16));
    QString error;
    EXPECT_EQ(renderer.addPatch("QCNoSuchPatch", {}, &error), QString());
    EXPECT_EQ(error, "unknown patch class QCNoSuchPatch");
    EXPECT_FALSE(renderer.connect("Nope", "outputImage", "Clear_1", "inputColor", &error));
    EXPECT_EQ(error, "no port Nope.outputImage");
    EXPECT_FALSE(renderer.connect("Splitter_1", "output", "Splitter_1", "input", &error));
    EXPECT_FALSE(renderer.setNodeInputValue("Nope", "input", 1));
    EXPECT_FALSE(renderer.setInputValue("noSuchInput", 1));
    // Our plug-ins are added by their class names.
    EXPECT_EQ(renderer.addPatch("QLNStopframesPlugIn"), "PlugInPatch_1");
    EXPECT_EQ(renderer.nodeClassName("PlugInPatch_1"), "QCPlugInPatch");
}

TEST(RendererApi, InputsOutputsUserInfoAndSize)
{
    runtime::Renderer renderer(componentFile(), QSize(10, 20));
    EXPECT_EQ(renderer.inputKeys(), QStringList({"inputWidth"}));
    EXPECT_EQ(renderer.outputKeys(), QStringList({"outputImage"}));
    EXPECT_EQ(renderer.inputValue("inputWidth").toInt(), 16);
    renderer.setInputValue("inputWidth", 24);
    EXPECT_EQ(renderer.inputValue("inputWidth").toInt(), 24);
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("outputImage").value<QImage>().size(), QSize(24, 16));
    EXPECT_EQ(renderer.snapshot().size(), QSize(10, 20));
    renderer.setSize(QSize(40, 30));
    EXPECT_EQ(renderer.size(), QSize(40, 30));
    renderer.userInfo().insert("org.velloran.Velloran.file", "/tmp/doc.composition");
    EXPECT_EQ(renderer.userInfo().value("org.velloran.Velloran.file").toString(), "/tmp/doc.composition");
    // The template keeps its default.
    EXPECT_EQ(renderer.composition().input("inputWidth")->defaultValue.toInt(), 16);
}

// The renderer keeps its image, and the painter on it, from frame to frame.
TEST(RendererApi, FramesHandedOutStayAsTheyWere)
{
    Node sprite("QCSprite", "Sprite_1");
    sprite.input("inputWidth", 0.5).input("inputHeight", 0.5).input("inputRZ", 30.0);
    Node r = test::root();
    r.child(Node("QCClear", "Clear_1").input("inputColor", test::colorValue(0, 0, 1)));
    r.child(sprite).publishInput("X", "Sprite_1", "inputX");
    runtime::Renderer renderer(test::load(r), QSize(64, 48));
    const auto frameAt = [&](double x) {
        renderer.setInputValue("X", x);
        renderer.render(0);
        return renderer.snapshot();
    };
    const QImage left = frameAt(-0.5);
    const QImage leftAgain = frameAt(-0.5);  // the sprite drawn from its cached picture
    const QImage right = frameAt(0.5);
    EXPECT_EQ(left, leftAgain);
    EXPECT_NE(left.cacheKey(), leftAgain.cacheKey()) << "each frame is a new picture";
    EXPECT_EQ(left.pixel(16, 24), qRgb(255, 255, 255));
    EXPECT_EQ(left.pixel(48, 24), qRgb(0, 0, 255)) << "not drawn over by the later frame";
    EXPECT_EQ(right.pixel(48, 24), qRgb(255, 255, 255));
    EXPECT_EQ(right.pixel(16, 24), qRgb(0, 0, 255));

    // Resized: a new image, drawn as a renderer of that size draws it.
    renderer.setSize(QSize(128, 96));
    const QImage large = frameAt(0.5);
    runtime::Renderer fresh(test::load(r), QSize(128, 96));
    fresh.setInputValue("X", 0.5);
    fresh.render(0);
    EXPECT_EQ(large, fresh.snapshot());
    EXPECT_EQ(right.size(), QSize(64, 48));
}

TEST(RendererApi, NodePathsReachIntoMacros)
{
    Node macro("QCPatch", "Patch_1");
    macro.child(Node("QCSplitter", "Splitter_1").state("portClass", "QCStringPort"));
    Node r = test::root();
    r.child(macro);
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    EXPECT_TRUE(renderer.setNodeInputValue("Patch_1/Splitter_1", "input", "deep"));
    EXPECT_EQ(renderer.nodeInputValue("Patch_1/Splitter_1", "input").toString(), "deep");
    EXPECT_FALSE(renderer.nodeInputValue("Patch_1/Nope", "input").isValid());
}

TEST(RendererApi, ResetForgetsPatchState)
{
    Node counter("QCCounter", "Counter_1");
    Node r = test::root();
    r.child(counter).publishInput("Up", "Counter_1", "inputSignal").publishOutput("Count", "Counter_1", "outputCount");
    runtime::Renderer renderer(test::load(r), QSize(4, 4));
    for (bool level : {true, false, true}) {
        renderer.setInputValue("Up", level);
        renderer.render(0);
    }
    EXPECT_EQ(renderer.outputValue("Count").toInt(), 2);
    renderer.reset();
    renderer.setInputValue("Up", false);
    renderer.render(0);
    EXPECT_EQ(renderer.outputValue("Count").toInt(), 0);
}

}  // namespace
