// Components drawing themselves on a canvas through the injected sprite.

#include "ModelFixture.h"
#include "../support/ComponentFiles.h"

#include "runtime/RasterBackend.h"
#include "runtime/Renderer.h"

#include <QImage>
#include <QTemporaryDir>

using model::QuartzComponent;

class ComponentRenderingTest : public ModelFixture {
protected:
    ComponentRenderingTest() : canvas(1920, 1080, QImage::Format_ARGB32_Premultiplied) { canvas.fill(Qt::transparent); }

    // A 100 × 50 red image component with its lower-left corner at (x, y).
    QuartzComponent* addImage(double x, double y)
    {
        const QString path = testfiles::writeImageComposition(QDir(dir.path()), QStringLiteral("Image.qtz"));
        QImage red(100, 50, QImage::Format_ARGB32_Premultiplied);
        red.fill(Qt::red);
        QuartzComponent* c = composition->addComponenWithQuartzCompositionFile(path, {{QStringLiteral("Image"), red}});
        c->setOriginX(x);
        c->setOriginY(y);
        return c;
    }

    void draw(QuartzComponent* c, double time)
    {
        composition->setEditorTimepoint(time);
        auto target = backend.wrap(&canvas, QuartzComponent::viewTransformForCompositionSize(composition->size()));
        c->renderForView(this, *target, time);
    }

    // Canvas pixels are top-down; composition pixels bottom-up.
    QColor at(int x, int y) const { return canvas.pixelColor(x, canvas.height() - 1 - y); }

    QTemporaryDir dir;
    QImage canvas;
    runtime::RasterBackend backend;
};

TEST_F(ComponentRenderingTest, TheImageLandsOnTheComponentFrame)
{
    QuartzComponent* c = addImage(300, 200);
    draw(c, 0);
    EXPECT_EQ(at(350, 225), QColor(Qt::red));
    EXPECT_EQ(at(302, 202).alpha(), 255);
    EXPECT_EQ(at(297, 225).alpha(), 0);
    EXPECT_EQ(at(350, 253).alpha(), 0);
    EXPECT_EQ(at(403, 225).alpha(), 0);
}

TEST_F(ComponentRenderingTest, RotationAndOpacityAreTheSpritesOnly)
{
    QuartzComponent* c = addImage(300, 200);
    c->setZRotation(90);
    c->setOpacity(0.5);
    draw(c, 0);
    // Turned about its centre (350, 225): now 50 wide and 100 high.
    EXPECT_NEAR(at(350, 265).alpha(), 128, 2);
    EXPECT_EQ(at(390, 225).alpha(), 0);
    EXPECT_EQ(at(350, 265).red(), 255);  // the image's own colour is untouched
}

TEST_F(ComponentRenderingTest, LocalTimeStartsAtTheComponentsStart)
{
    // A span of 2–5 s: drawn at 3 s the composition sees 1 s; at 1 s the
    // component is switched off and not rendered.
    QuartzComponent* c = addImage(0, 0);
    c->setStartTime(2);
    c->setEndTime(5);
    draw(c, 1);
    EXPECT_EQ(at(50, 25).alpha(), 0);
    EXPECT_FALSE(c->renderer()->nodeInputValue(c->spriteNodeKey(), QStringLiteral("_enable")).toBool());
    draw(c, 3);
    EXPECT_EQ(at(50, 25), QColor(Qt::red));
    EXPECT_TRUE(c->renderer()->nodeInputValue(c->spriteNodeKey(), QStringLiteral("_enable")).toBool());
}

TEST_F(ComponentRenderingTest, HiddenComponentsDrawNeitherPictureNorOverlay)
{
    QuartzComponent* c = addImage(0, 0);
    c->setVisibleInCompositionEditor(false);
    ASSERT_TRUE(c->selected());
    draw(c, 0);
    auto target = backend.wrap(&canvas, QuartzComponent::viewTransformForCompositionSize(composition->size()));
    c->renderOverlaysForView(*target);
    EXPECT_EQ(canvas.pixelColor(0, canvas.height() - 1).alpha(), 0);
    EXPECT_EQ(at(50, 25).alpha(), 0);
}

TEST_F(ComponentRenderingTest, TheSelectionOverlayFramesTheComponent)
{
    QuartzComponent* c = addImage(400, 400);
    auto target = backend.wrap(&canvas, QuartzComponent::viewTransformForCompositionSize(composition->size()));
    c->renderOverlaysForView(*target, 2.0);
    EXPECT_GT(at(450, 400).alpha(), 100);  // bottom edge of the frame
    EXPECT_EQ(at(450, 425).alpha(), 0);    // inside stays clear
    EXPECT_GT(at(403, 403).alpha(), 100);  // bottom-left handle
    c->setSelected(false);
    QImage before = canvas;
    c->renderOverlaysForView(*target, 2.0);
    EXPECT_EQ(canvas, before);
}

TEST_F(ComponentRenderingTest, SetupTwiceKeepsOneSprite)
{
    QuartzComponent* c = addImage(0, 0);
    c->setupRenderer();
    c->setupRenderer();
    int sprites = 0;
    for (const QString& key : c->renderer()->nodeKeys())
        sprites += c->renderer()->nodeClassName(key) == QLatin1String("QCSprite");
    EXPECT_EQ(sprites, 1);
    draw(c, 0);
    EXPECT_EQ(at(50, 25), QColor(Qt::red));
}

TEST_F(ComponentRenderingTest, ClearPatchesNeverWipeTheLayersBelow)
{
    QuartzComposition file;
    QuartzPatch* clear = file.rootPatch().addPatchWithClass(QStringLiteral("QCClear"), plist::Value(),
                                                           plist::Dictionary{});
    (void)clear;
    QuartzPatch* image = file.rootPatch().addPatchWithClass(QStringLiteral("QCRenderInImage"));
    image->publishOutputPort(QStringLiteral("outputImage"), QStringLiteral("outputImage"));
    const QString path = dir.filePath(QStringLiteral("Clearing.qtz"));
    ASSERT_TRUE(file.writeToFile(path, false));

    QuartzComponent* below = addImage(0, 0);
    QuartzComponent* above = composition->addComponenWithQuartzCompositionFile(path);
    ASSERT_NE(above, nullptr);
    draw(below, 0);
    draw(above, 0);
    EXPECT_EQ(at(50, 25), QColor(Qt::red));
}
