// What the canvas shows: components at their place in composition pixels,
// through the zoom, over the composition's background.

#include "CanvasFixture.h"

#include "model/Ruler.h"

namespace {

bool isRed(const QColor& c) { return c.red() > 200 && c.green() < 60 && c.blue() < 60; }

}  // namespace

class CanvasRenderingTest : public CanvasFixture {
protected:
    QImage picture() { return view.grab().toImage(); }
};

TEST_F(CanvasRenderingTest, AComponentLandsOnItsFrameAt100Percent)
{
    addImage(300, 200)->setSelected(false);
    const QImage image = picture();
    // 1280 × 720 centred in 1400 × 800: the drawing area starts at (60, 40)
    // and its bottom edge, composition y = 0, is at widget y = 760.
    EXPECT_TRUE(isRed(image.pixelColor(410, 535)));  // composition (350, 225)
    EXPECT_TRUE(isRed(image.pixelColor(361, 559)));  // just inside the lower-left corner
    EXPECT_FALSE(isRed(image.pixelColor(357, 535)));
    EXPECT_FALSE(isRed(image.pixelColor(410, 507)));
    EXPECT_EQ(image.pixelColor(200, 300), QColor(Qt::black));  // the background colour
}

TEST_F(CanvasRenderingTest, AComponentLandsOnItsFrameAt50Percent)
{
    addImage(300, 200)->setSelected(false);
    view.setZoomMode(50);
    const QImage image = picture();
    // 640 × 360 centred: left 380, bottom 580. The component covers widget
    // x 530–580 and y 455–480.
    EXPECT_TRUE(isRed(image.pixelColor(555, 467)));
    EXPECT_TRUE(isRed(image.pixelColor(531, 479)));
    EXPECT_FALSE(isRed(image.pixelColor(527, 467)));
    EXPECT_FALSE(isRed(image.pixelColor(555, 452)));
    EXPECT_FALSE(isRed(image.pixelColor(610, 467)));  // where it would be at 100 %
}

TEST_F(CanvasRenderingTest, FitShowsTheWholeCompositionInsideTheView)
{
    addImage(1180, 670)->setSelected(false);  // the top-right corner
    view.resize(900, 600);
    view.setZoomMode(0);
    EXPECT_NEAR(view.zoomFactor(), (900.0 - 56) / 1280, 1e-9);  // 28 points clear on each side
    const QRectF area = view.geometry().drawingAreaRect();
    EXPECT_TRUE(QRectF(view.rect()).contains(area));
    const QPoint corner = at(1275, 715);
    EXPECT_TRUE(isRed(picture().pixelColor(corner)));
}

TEST_F(CanvasRenderingTest, ComponentsStackByZLevel)
{
    model::QuartzComponent* below = addImage(300, 200);
    const QString path = testfiles::writeImageComposition(QDir(dir.path()), QStringLiteral("Blue.qtz"));
    QImage blue(100, 50, QImage::Format_ARGB32_Premultiplied);
    blue.fill(Qt::blue);
    model::QuartzComponent* above = composition->addComponenWithQuartzCompositionFile(path, {{QStringLiteral("Image"), blue}});
    above->setOriginX(350);
    above->setOriginY(200);
    composition->clearSelection();
    EXPECT_EQ(picture().pixelColor(at(375, 225)), QColor(Qt::blue));
    composition->adjustZLevels({above, below});
    EXPECT_TRUE(isRed(picture().pixelColor(at(375, 225))));
}

TEST_F(CanvasRenderingTest, SelectionHandlesAndGuidesAreDrawnOverTheComponents)
{
    model::QuartzComponent* c = addImage(300, 200);
    c->setSelected(false);
    const QColor unselected = picture().pixelColor(at(302, 202));
    c->setSelected(true);
    EXPECT_NE(picture().pixelColor(at(302, 202)), unselected);  // the lower-left handle

    composition->addRulerAtPosition(100, true);
    const QPoint onGuide = at(800, 100);
    EXPECT_EQ(picture().pixelColor(onGuide), canvas::SafeAreasLayer::guideColor());
    composition->setShowsRulers(false);
    EXPECT_EQ(picture().pixelColor(onGuide), QColor(Qt::black));
}

TEST_F(CanvasRenderingTest, TheSelectionShowsOnBlackAndOnWhiteAtAConstantScreenSize)
{
    addImage(500, 250, QSize(400, 400));
    for (int zoom : {25, 100, 200}) {
        view.setZoomMode(zoom);
        // On the left edge a quarter up, clear of the handles.
        const QPoint edge = at(500, 350);
        for (const QColor& background : {QColor(Qt::black), QColor(Qt::white)}) {
            composition->setBackgroundColor(background);
            const QImage image = picture();
            const std::string where = std::to_string(zoom) + " % on " + background.name().toStdString();
            // A dark stroke beside a light one, whatever is behind.
            EXPECT_LT(image.pixelColor(edge + QPoint(-1, 0)).lightness(), 90) << where;
            EXPECT_GT(image.pixelColor(edge).lightness(), 150) << where;
        }
        // Handles are 7 screen pixels wide at every zoom.
        const QImage image = picture();
        const QPoint corner = at(500, 250);
        EXPECT_NE(image.pixelColor(corner + QPoint(-3, 0)), QColor(Qt::white)) << zoom;
        EXPECT_EQ(image.pixelColor(corner + QPoint(-6, 0)), QColor(Qt::white)) << zoom;
    }
}

TEST_F(CanvasRenderingTest, AComponentOutsideItsTimeSpanIsNotDrawn)
{
    model::QuartzComponent* c = addImage(300, 200);
    c->setSelected(false);
    c->setStartTime(2);
    composition->setEditorTimepoint(1);
    EXPECT_FALSE(isRed(picture().pixelColor(at(350, 225))));
    composition->setEditorTimepoint(3);
    EXPECT_TRUE(isRed(picture().pixelColor(at(350, 225))));
}

TEST_F(CanvasRenderingTest, ADraggedComponentLeavesNoTrailOverThoseKeptStillUnderIt)
{
    // The components under a drag are drawn once and reused for every step.
    addImage(100, 100)->setSelected(false);
    model::QuartzComponent* top = addImage(400, 100);
    top->setSelected(false);
    startCounting();
    press(QPointF(450, 125));
    dragTo(QPointF(450, 325));
    QImage image = picture();
    EXPECT_TRUE(isRed(image.pixelColor(at(450, 325))));
    EXPECT_EQ(image.pixelColor(at(450, 125)), QColor(Qt::black));
    EXPECT_TRUE(isRed(image.pixelColor(at(150, 125)))) << "the component under the drag";

    dragTo(QPointF(450, 425));
    image = picture();
    EXPECT_TRUE(isRed(image.pixelColor(at(450, 425))));
    EXPECT_EQ(image.pixelColor(at(450, 325)), QColor(Qt::black)) << "no trail of the last step";
    EXPECT_TRUE(isRed(image.pixelColor(at(150, 125))));
    release(QPointF(450, 425));
    EXPECT_DOUBLE_EQ(top->originY(), 400);
}
