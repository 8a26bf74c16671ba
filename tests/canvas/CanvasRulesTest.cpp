// The widget-free rules behind zoom, hands, readouts and placement, at
// their boundaries.

#include "canvas/CanvasGeometry.h"
#include "canvas/CanvasHitRules.h"
#include "canvas/CanvasPlacement.h"
#include "canvas/CanvasReadout.h"
#include "canvas/CanvasZoom.h"

#include <gtest/gtest.h>

using namespace canvas;

namespace {
// A 100 × 50 frame at (300, 200) with handles as the component gives them.
std::array<QRectF, 9> rectsOf(const QRectF& f)
{
    auto sq = [](double x, double y) { return QRectF(x, y, 8, 8); };
    const double cx = f.center().x(), cy = f.center().y();
    return {f,
            sq(f.left(), f.top()),          sq(f.left(), cy - 4),      sq(f.left(), f.bottom() - 8),
            sq(cx - 4, f.bottom() - 8),     sq(cx - 4, f.top()),       sq(f.right() - 8, f.top()),
            sq(f.right() - 8, cy - 4),      sq(f.right() - 8, f.bottom() - 8)};
}
}  // namespace

TEST(CanvasZoomRules, StepsWheelAndPinchStayInsideTheRange)
{
    EXPECT_EQ(nextZoomStep(1.0, 1), 150);
    EXPECT_EQ(nextZoomStep(1.0, -1), 67);
    EXPECT_EQ(nextZoomStep(0.44, 1), 50) << "from fit to the next step up";
    EXPECT_EQ(nextZoomStep(0.44, -1), 33);
    EXPECT_EQ(nextZoomStep(16.0, 1), 1600);
    EXPECT_EQ(nextZoomStep(0.05, -1), 5);
    EXPECT_EQ(zoomPercentForWheel(1.0, 120), 120);
    EXPECT_EQ(zoomPercentForWheel(1.0, -120), 83);
    EXPECT_EQ(zoomPercentForWheel(1.0, 1), 101) << "a touchpad's smallest turn still zooms";
    EXPECT_EQ(zoomPercentForWheel(15.9, 1200), 1600);
    EXPECT_EQ(zoomPercentForWheel(0.06, -1200), 5);
    EXPECT_EQ(zoomPercentForPinch(1.0, 0.5), 150);
    EXPECT_EQ(zoomPercentForPinch(1.0, -5.0), 5) << "a wild pinch never turns the page over";
    EXPECT_EQ(clampZoomPercent(std::nan("")), 100);
}

TEST(CanvasZoomRules, RulerUnitsFollowTheModeTable)
{
    EXPECT_EQ(rulerUnitForZoomMode(200, 0.4).name, QStringLiteral("Points200"));
    EXPECT_EQ(rulerUnitForZoomMode(150, 0.4).pointsPerUnit, 1.5);
    EXPECT_EQ(rulerUnitForZoomMode(100, 0.4).name, QStringLiteral("Points"));
    EXPECT_EQ(rulerUnitForZoomMode(50, 0.4).pointsPerUnit, 0.5);
    EXPECT_EQ(rulerUnitForZoomMode(kZoomFit, 0.4).name, QStringLiteral("PointsFit"));
    EXPECT_EQ(rulerUnitForZoomMode(kZoomFit, 0.4).pointsPerUnit, 0.4);
    EXPECT_EQ(rulerUnitForZoomMode(400, 0.4).name, QStringLiteral("Points")) << "any other mode";
}

TEST(CanvasZoomRules, TheWorkAreaIsHalfAPageAndFitStaysInRange)
{
    EXPECT_EQ(documentSizeForZoom(QSizeF(1920, 1080), QSize(1000, 700)), QSize(3840, 2160));
    EXPECT_EQ(documentSizeForZoom(QSizeF(20, 10), QSize(1000, 700)), QSize(1000, 700));
    EXPECT_EQ(documentSizeForZoom(QSizeF(20, 10), QSize(50, 50)), QSize(120, 110)) << "at least 50 points of room";
    EXPECT_DOUBLE_EQ(zoomFactorForMode(kZoomFit, QSizeF(40, 40), QSizeF(1920, 1080), 20, 20), 0.05);
    EXPECT_DOUBLE_EQ(zoomFactorForMode(kZoomFit, QSizeF(4000, 4000), QSizeF(16, 9), 20, 20), 16.0);
}

TEST(CanvasZoomRules, AutoscrollStartsInTheEdgeBandAndSpeedsUpPastIt)
{
    const QSize viewport(800, 600);
    EXPECT_EQ(autoscrollStep({400, 300}, viewport), QPoint());
    EXPECT_EQ(autoscrollStep({kAutoscrollBand, 300}, viewport), QPoint()) << "the band's inner edge is still calm";
    EXPECT_LT(autoscrollStep({kAutoscrollBand - 1, 300}, viewport).x(), 0);
    EXPECT_GT(autoscrollStep({799, 599}, viewport).x(), 0);
    EXPECT_GT(autoscrollStep({799, 599}, viewport).y(), 0);
    EXPECT_LT(std::abs(autoscrollStep({790, 300}, viewport).x()), std::abs(autoscrollStep({900, 300}, viewport).x()));
    EXPECT_EQ(autoscrollStep({5000, 300}, viewport).x(), kAutoscrollMaxStep);
}

TEST(CanvasHitRules, HandlesReachAFixedScreenDistanceButKeepTheComponentsOwn)
{
    const auto rects = rectsOf(QRectF(300, 200, 100, 50));
    // At 25 % six screen pixels are 24 composition pixels.
    EXPECT_EQ(handleIndexAt(rects, 0, {400 + 20, 250 + 20}, 0.25), 8);
    EXPECT_EQ(handleIndexAt(rects, 0, {400 + 25, 250}, 0.25), 9) << "just past the reach";
    EXPECT_EQ(handleIndexAt(rects, 0, {280, 225}, 0.25), 2);
    EXPECT_EQ(handleIndexAt(rects, 0, {350, 225}, 0.25), 0) << "a quarter of the frame stays for moving";
    // At 400 % the component's own 8-pixel squares are larger than the reach.
    EXPECT_EQ(handleIndexAt(rects, 0, {393, 243}, 4.0), 8);
    EXPECT_EQ(handleIndexAt(rects, 0, {391, 241}, 4.0), 0);
    EXPECT_EQ(handleIndexAt(rects, 0, {401, 251}, 4.0), 8) << "reach outside the frame";
    EXPECT_EQ(handleIndexAt(rects, 0, {403, 253}, 4.0), 9);
    // Turned by 90°, the top-right handle sits where the top-left one was.
    const QPointF centre(350, 225);
    const QPointF turned = rotatedPoint({400, 250}, centre, 90);
    EXPECT_EQ(handleIndexAt(rects, 90, turned, 1.0), 8);
    EXPECT_DOUBLE_EQ(guideGrabTolerance(0.25), 24);
    EXPECT_DOUBLE_EQ(guideGrabTolerance(4.0), kGuideGrabTolerance);
}

TEST(CanvasHitRules, ADragStartsAtTheScreenDistanceAndTheComponentThreshold)
{
    EXPECT_FALSE(dragHasStarted({5, 0}, {9, 0}, 10, true));
    EXPECT_TRUE(dragHasStarted({5, 0}, {6, 4}, 10, true)) << "Manhattan length";
    EXPECT_FALSE(dragHasStarted({1, 1}, {40, 0}, 10, true)) << "the component's two pixels stay a lower bound";
    EXPECT_TRUE(dragHasStarted({1, 1}, {40, 0}, 10, false));
}

TEST(CanvasPlacementRules, NewComponentsCentreAndCascadeOffTakenOrigins)
{
    EXPECT_EQ(offsetCentring(QRectF(0, 0, 100, 50), QPointF(960, 540)), QPointF(910, 515));
    EXPECT_EQ(offsetCentring(QRectF(10, 10, 101, 51), QPointF(960, 540)), QPointF(900, 505)) << "whole pixels";
    const QPointF origin(910, 515);
    EXPECT_EQ(cascadeOffset(origin, {}), QPointF());
    EXPECT_EQ(cascadeOffset(origin, {origin}), kCascadeStep);
    EXPECT_EQ(cascadeOffset(origin, {origin, origin + kCascadeStep}), kCascadeStep * 2);
    EXPECT_EQ(cascadeOffset(origin, {origin + QPointF(0.6, 0)}), QPointF()) << "more than half a pixel off is free";
}

TEST(CanvasReadoutRules, ValuesReadAsWholePixelsOrOneDecimal)
{
    EXPECT_EQ(formatCoordinate(12.0), QStringLiteral("12"));
    EXPECT_EQ(formatCoordinate(12.25), QStringLiteral("12.3"));
    EXPECT_EQ(formatCoordinate(-0.01), QStringLiteral("0")) << "never -0";
    CanvasReadout r;
    r.pointer = QPointF(10, 20);
    r.selection = QRectF(1, 2, 3, 4);
    r.drag = CanvasReadout::Drag::Resize;
    r.delta = QPointF(-5, 0);
    EXPECT_EQ(formatReadout(r), QStringLiteral("X 10  Y 20     Selection X 1  Y 2  W 3  H 4     Resize ΔW -5  ΔH 0"));
    EXPECT_EQ(guideLabelText(Guide{540, true}, false), QStringLiteral("Y 540"));
    EXPECT_EQ(guideLabelText(Guide{540, true}, true), QStringLiteral("Release to remove"));
}
