// The scroll view around the canvas: how large the scrolled canvas is at
// each zoom, and guides made by double-clicking the rulers.

#include "canvas/CompositionView.h"
#include "canvas/VLRulerView.h"
#include "canvas/VLZoomScrollView.h"
#include "document/CompositionDocument.h"
#include "model/Composition.h"
#include "model/Ruler.h"
#include "model/VideoResolution.h"

#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

class ScrollViewTest : public ::testing::Test {
protected:
    ScrollViewTest()
    {
        document = document::CompositionDocument::emptyDocumentWithResolution(
            model::VideoResolution(QStringLiteral("720p25 RGBA")));
        view = new canvas::CompositionView;
        view->setDocument(document.get());
        scroll.setCompositionView(view);
        scroll.resize(1000, 700);
        scroll.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&scroll));
    }

    QSize visible() const { return scroll.viewport()->size(); }

    std::unique_ptr<document::CompositionDocument> document;
    canvas::VLZoomScrollView scroll;
    canvas::CompositionView* view = nullptr;
};

TEST_F(ScrollViewTest, FitShowsTheWholePageInTheMiddleOfItsWorkArea)
{
    view->setZoomMode(0);
    const QRectF page = view->geometry().drawingAreaRect();
    // The page is fully in view when the window opens...
    const QRect shown(QPoint(scroll.horizontalScrollBar()->value(), scroll.verticalScrollBar()->value()), visible());
    EXPECT_TRUE(QRectF(shown).contains(page)) << page.x() << "," << page.y() << " " << page.width() << "x" << page.height() << " in " << shown.x() << "," << shown.y() << " " << shown.width() << "x" << shown.height();
    // ...and half a page of room lies beyond each edge for off-page components.
    EXPECT_GE(page.left(), page.width() / 2 - 1);
    EXPECT_GE(view->width() - page.right(), page.width() / 2 - 1);
    EXPECT_GE(page.top(), page.height() / 2 - 1);
    EXPECT_GE(view->height() - page.bottom(), page.height() / 2 - 1);
}

TEST_F(ScrollViewTest, EveryZoomHasHalfAPageOfWorkAreaOnEachSide)
{
    view->setZoomMode(200);
    EXPECT_EQ(view->size(), QSize(2560 * 2, 1440 * 2));
    view->setZoomMode(5);
    EXPECT_EQ(view->size(), visible()) << "a tiny page still fills the view";
    view->setZoomMode(3000);
    EXPECT_EQ(view->zoomMode(), 1600) << "held to the largest zoom";
}

TEST_F(ScrollViewTest, DoubleClickingARulerAddsAGuideWhereTheClickWas)
{
    view->setZoomMode(50);
    // The ruler point level with composition y = 100 on the canvas.
    const QPoint onCanvas = view->mapTo(&scroll, view->viewPointFromComposition(QPointF(0, 100)).toPoint());
    canvas::VLRulerView* vertical = scroll.verticalRuler();
    QTest::mouseDClick(vertical, Qt::LeftButton, {}, QPoint(8, vertical->mapFrom(&scroll, onCanvas).y()));
    ASSERT_EQ(document->composition()->rulers().size(), 1u);
    const model::Ruler* guide = document->composition()->rulers().front();
    EXPECT_TRUE(guide->horizontal());
    EXPECT_NEAR(guide->position(), 100, 2);  // a widget point is two pixels at 50 %

    const QPoint atX = view->mapTo(&scroll, view->viewPointFromComposition(QPointF(640, 0)).toPoint());
    canvas::VLRulerView* horizontal = scroll.horizontalRuler();
    QTest::mouseDClick(horizontal, Qt::LeftButton, {}, QPoint(horizontal->mapFrom(&scroll, atX).x(), 8));
    ASSERT_EQ(document->composition()->rulers().size(), 2u);
    EXPECT_FALSE(document->composition()->rulers().back()->horizontal());
    EXPECT_NEAR(document->composition()->rulers().back()->position(), 640, 2);
}
