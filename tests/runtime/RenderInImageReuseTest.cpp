// A Render In Image whose contents depend on its inputs alone draws again
// only when an input changes; anything time-driven inside draws every frame.

#include "CompositionBuilder.h"

#include <gtest/gtest.h>

using test::Node;

namespace {

// A Render In Image holding a sprite, its colour published as "Color"; with
// `moving`, an LFO drives the sprite across the picture.
std::unique_ptr<runtime::Renderer> spriteInImage(bool moving)
{
    Node sprite("QCSprite", "Sprite_1");
    sprite.input("inputWidth", 1.0).input("inputHeight", 2.0).input("inputColor", test::colorValue(1, 0, 0));
    Node rii("QCRenderInImage", "RenderInImage_1");
    rii.input("inputWidth", 16).input("inputHeight", 16).child(sprite);
    // Reads the size of the picture being drawn: fixed, so no reason to draw again.
    rii.child(Node("QCScreenInfo", "ScreenInfo_1"));
    if (moving) {
        rii.child(Node("QCLFO", "LFO_1").input("inputPeriod", 1.0).input("inputAmplitude", 0.5));
        rii.connect("LFO_1", "outputValue", "Sprite_1", "inputX");
    }
    rii.publishInput("Color", "Sprite_1", "inputColor");
    Node r = test::root();
    r.child(rii);
    r.publishOutput("Image", "RenderInImage_1", "outputImage");
    r.publishInput("Color", "RenderInImage_1", "Color");
    return std::make_unique<runtime::Renderer>(test::load(r), QSize(16, 16));
}

QImage pictureAt(runtime::Renderer& renderer, double time)
{
    renderer.render(time);
    return renderer.outputValue("Image").value<QImage>();
}

TEST(RenderInImageReuse, StillContentsDrawAgainOnlyWhenAnInputChanges)
{
    auto renderer = spriteInImage(false);
    const QImage first = pictureAt(*renderer, 0);
    EXPECT_EQ(first.pixel(8, 8), qRgba(255, 0, 0, 255));
    EXPECT_EQ(pictureAt(*renderer, 0.5).cacheKey(), first.cacheKey()) << "a later time alone draws nothing new";

    ASSERT_TRUE(renderer->setInputValue("Color", QColor(Qt::green)));
    const QImage green = pictureAt(*renderer, 0.5);
    EXPECT_NE(green.cacheKey(), first.cacheKey());
    EXPECT_EQ(green.pixel(8, 8), qRgba(0, 255, 0, 255));
    EXPECT_EQ(first.pixel(8, 8), qRgba(255, 0, 0, 255)) << "a picture handed out earlier is never drawn over";
}

TEST(RenderInImageReuse, AValueSetDirectlyInsideDrawsAgain)
{
    // Not through the image's own inputs, so only the renderer can tell it.
    auto renderer = spriteInImage(false);
    const QImage red = pictureAt(*renderer, 0);
    ASSERT_TRUE(renderer->setNodeInputValue("RenderInImage_1/Sprite_1", "inputWidth", 0.0));
    const QImage none = pictureAt(*renderer, 0);
    EXPECT_NE(none.cacheKey(), red.cacheKey());
    EXPECT_EQ(qAlpha(none.pixel(8, 8)), 0) << "the sprite has no width now";
}

TEST(RenderInImageReuse, TimeDrivenContentsDrawEveryFrame)
{
    auto renderer = spriteInImage(true);
    const QImage atZero = pictureAt(*renderer, 0);
    const QImage atQuarter = pictureAt(*renderer, 0.25);
    EXPECT_NE(atQuarter.cacheKey(), atZero.cacheKey());
    EXPECT_NE(atQuarter, atZero) << "the sprite moved";
}

}  // namespace
