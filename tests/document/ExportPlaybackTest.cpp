// The exported file played by our own runtime: geometry, keyframes, time
// windows and stop frames behave as they did in the editor.

#include "ExportFixture.h"

#include "runtime/Renderer.h"

using model::Attribute;
using model::QuartzComponent;

class ExportPlaybackTest : public ExportFixture {
protected:
    std::unique_ptr<runtime::Renderer> play(QSize size = QSize(1920, 1080))
    {
        exportAndRead();
        QString error;
        auto loaded = runtime::Composition::loadFile(path, &error);
        EXPECT_TRUE(loaded) << error.toStdString();
        return loaded ? std::make_unique<runtime::Renderer>(loaded, size) : nullptr;
    }

    // Whether the red box covers a point given in template pixels (origin
    // lower left) on a frame of any size; the export clears to black.
    static bool redAt(const runtime::Renderer& r, double x, double y)
    {
        const QImage frame = r.snapshot();
        const double scale = frame.width() / 1920.0;
        const QColor c = frame.pixelColor(int(x * scale), frame.height() - 1 - int(y * scale));
        return c.red() > 250 && c.green() < 5 && c.alpha() == 255;
    }

    static void renderAt(runtime::Renderer& r, double t) { r.render(t); }
};

TEST_F(ExportPlaybackTest, ComponentsAppearAtTheirGeometryAtAnySize)
{
    addBox(QStringLiteral("Box"), QRectF(100, 200, 400, 300));
    for (QSize size : {QSize(1920, 1080), QSize(480, 270)}) {
        auto r = play(size);
        ASSERT_TRUE(r);
        renderAt(*r, 1.0);
        EXPECT_TRUE(redAt(*r, 300, 350)) << size.width();
        EXPECT_TRUE(redAt(*r, 110, 210)) << size.width();
        EXPECT_FALSE(redAt(*r, 90, 350)) << size.width();
        EXPECT_FALSE(redAt(*r, 300, 190)) << size.width();
        EXPECT_FALSE(redAt(*r, 520, 350)) << size.width();
        EXPECT_FALSE(redAt(*r, 300, 520)) << size.width();
    }
}

TEST_F(ExportPlaybackTest, ComponentsShowOnlyInTheirTimeWindow)
{
    QuartzComponent* c = addBox(QStringLiteral("Late"), QRectF(100, 100, 200, 100));
    c->setStartTime(2);
    c->setEndTime(4);
    auto r = play();
    renderAt(*r, 1.0);
    EXPECT_FALSE(redAt(*r, 200, 150));
    renderAt(*r, 3.0);
    EXPECT_TRUE(redAt(*r, 200, 150));
    renderAt(*r, 5.0);
    EXPECT_FALSE(redAt(*r, 200, 150));
}

TEST_F(ExportPlaybackTest, TheEnableSwitchHidesAComponent)
{
    addBox(QStringLiteral("Logo"), QRectF(100, 100, 200, 100));
    auto r = play();
    r->setInputValue(QStringLiteral("Logo_Enable"), false);
    renderAt(*r, 1.0);
    EXPECT_FALSE(redAt(*r, 200, 150));
    r->setInputValue(QStringLiteral("Logo_Enable"), true);
    renderAt(*r, 1.1);
    EXPECT_TRUE(redAt(*r, 200, 150));
}

TEST_F(ExportPlaybackTest, KeyframesAnimateThePosition)
{
    QuartzComponent* c = addBox(QStringLiteral("Mover"), QRectF(0, 100, 100, 100));
    Attribute* x = c->attributeForKey(QStringLiteral("originX"));
    x->setAnimateable(true);
    x->addTimepoint(0.0, 0.0f);
    x->addTimepoint(2.0, 1000.0f);
    auto r = play();
    renderAt(*r, 0.0);
    EXPECT_TRUE(redAt(*r, 50, 150));
    renderAt(*r, 2.0);
    EXPECT_FALSE(redAt(*r, 50, 150));
    EXPECT_TRUE(redAt(*r, 1050, 150));
    renderAt(*r, 1.0);
    EXPECT_TRUE(redAt(*r, 550, 150));
}

TEST_F(ExportPlaybackTest, StopFramesHoldUntilTriggered)
{
    QuartzComponent* c = addBox(QStringLiteral("Mover"), QRectF(0, 100, 100, 100));
    Attribute* x = c->attributeForKey(QStringLiteral("originX"));
    x->setAnimateable(true);
    x->addTimepoint(0.0, 0.0f);
    x->addTimepoint(2.0, 1000.0f);
    composition->addStopFrame(1.0, QStringLiteral("Hold"));
    auto r = play();
    for (double t : {0.0, 0.5, 1.0, 1.5, 1.9}) renderAt(*r, t);
    // Held at 1 s: still in the middle, waiting.
    EXPECT_TRUE(r->outputValue(QStringLiteral("waitingForTrigger")).toBool());
    EXPECT_TRUE(redAt(*r, 550, 150));
    EXPECT_FALSE(redAt(*r, 1050, 150));

    r->setInputValue(QStringLiteral("trigger"), true);
    renderAt(*r, 2.0);
    r->setInputValue(QStringLiteral("trigger"), false);
    renderAt(*r, 2.5);
    EXPECT_FALSE(r->outputValue(QStringLiteral("waitingForTrigger")).toBool());
    // One second after the release the animation has reached its end.
    renderAt(*r, 3.0);
    EXPECT_TRUE(redAt(*r, 1050, 150));
    EXPECT_TRUE(r->outputValue(QStringLiteral("active")).toBool());
}
