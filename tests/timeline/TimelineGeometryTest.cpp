// Where things lie on the timeline: zoom, x ↔ time, frame quantisation,
// tick stride, the clip's edges and the row list with its keyframe queries.

#include "TimelineModelFixture.h"

#include "model/VideoModeCatalogue.h"
#include "timeline/TimelineGeometry.h"
#include "timeline/TimelineRows.h"

using namespace timeline;

namespace {

TimelineGeometry at25fps(double unitWidth, double visibleX = 0) { return TimelineGeometry(unitWidth, model::kRate25, {}, visibleX); }

}  // namespace

TEST(TimelineGeometry, TheSliderRunsFrom25To300PixelsASecond)
{
    EXPECT_DOUBLE_EQ(unitWidthForZoom(0), 25);
    EXPECT_DOUBLE_EQ(unitWidthForZoom(1), 300);
    EXPECT_DOUBLE_EQ(unitWidthForZoom(0.5), 162.5);
    EXPECT_DOUBLE_EQ(unitWidthForZoom(-3), 25) << "out of range is clamped";
    EXPECT_DOUBLE_EQ(unitWidthForZoom(7), 300);
}

TEST(TimelineGeometry, PositionsInTheRowsAndInTheRuler)
{
    const TimelineGeometry g = at25fps(100, /*visibleX=*/-200);
    EXPECT_DOUBLE_EQ(g.xPositionAtTime(1.5), 150);
    EXPECT_DOUBLE_EQ(g.xPositionAtTime(1.5, false), 153) << "time 0 is inset by 3";
    EXPECT_DOUBLE_EQ(g.xPositionAtTime(1.5, true), 353) << "the ruler stays put: minus the visible x";
    EXPECT_DOUBLE_EQ(g.xPosition(10.4, false), 13) << "placed on whole pixels";
    EXPECT_DOUBLE_EQ(g.xPosition(10.6, false), 14);
    // Reading a position back goes through the same offsets.
    EXPECT_DOUBLE_EQ(g.timeFromPosition(163, false), 1.6);
    EXPECT_DOUBLE_EQ(g.timeFromPosition(363, true), 1.6);
    EXPECT_DOUBLE_EQ(g.timeFromPosition(153, false), 1.48) << "1.5 s lies between two frames at 25 a second";
}

TEST(TimelineGeometry, TimesFromPositionsAreWholeFramesWithTheirSign)
{
    const TimelineGeometry g = at25fps(100);  // 4 pixels a frame
    EXPECT_DOUBLE_EQ(g.timeFromPosition(3.9), 0) << "less than a frame is none";
    EXPECT_DOUBLE_EQ(g.timeFromPosition(4), 0.04);
    EXPECT_DOUBLE_EQ(g.timeFromPosition(11), 0.08) << "quantised down";
    EXPECT_DOUBLE_EQ(g.timeFromPosition(-11), -0.08) << "a negative position: the same magnitude, negative";
    EXPECT_DOUBLE_EQ(g.timeFromPosition(-3.9), 0);
    EXPECT_DOUBLE_EQ(g.timeFromPosition(-260), -2.6);
    // At 29.97 the frames are 1001/30000 s long.
    const TimelineGeometry ntsc(100, model::kRate2997);
    EXPECT_NEAR(ntsc.timeFromPosition(100), 29.0 / (30000.0 / 1001.0), 1e-12);
}

TEST(TimelineGeometry, TickStrideGrowsByOnePerDoubling)
{
    EXPECT_EQ(tickStride(25, 25), 4) << "steps 1 → 2 → 4 → 8 pixels: stride 4, ticks 4 pixels apart";
    EXPECT_EQ(tickStride(125, 25), 1) << "5 pixels a tick already";
    EXPECT_EQ(tickStride(124, 25), 2);
    EXPECT_EQ(tickStride(300, 25), 1);
    EXPECT_EQ(tickStride(25, 60), 5) << "0.42 → 0.83 → 1.67 → 3.33 → 6.67 pixels: four doublings";
    EXPECT_EQ(tickStride(0, 25), 1) << "no width makes no endless loop";
    EXPECT_EQ(tickStride(25, 0), 1);
}

TEST(TimelineGeometry, TheEdgesOfAClipAreFivePixelsStrictly)
{
    const QRectF clip(100, 0, 200, 20);
    EXPECT_EQ(clipPartAt(clip, 104), kPartStart) << "4 pixels inside the left edge";
    EXPECT_EQ(clipPartAt(clip, 105), kPartWhole) << "5 pixels inside: the whole clip";
    EXPECT_EQ(clipPartAt(clip, 296), kPartEnd) << "4 pixels inside the right edge";
    EXPECT_EQ(clipPartAt(clip, 295), kPartWhole);
    EXPECT_EQ(clipPartAt(clip, 40), kPartStart) << "left of the clip";
    EXPECT_EQ(clipPartAt(clip, 400), kPartEnd) << "right of the clip";
}

TEST(TimelineGeometry, RectanglesOfClipsRowsAndDiamonds)
{
    const TimelineGeometry g = at25fps(100);
    EXPECT_EQ(g.clipRect(1, 2.5, 3), QRectF(103, 60, 150, 20));
    EXPECT_EQ(g.rowRect(2, 500), QRectF(0, 40, 500, 20));
    EXPECT_EQ(g.keyframeRect(1, 1), QRectF(97.5, 24.5, 11, 11)) << "centred on the time and in the row";
    EXPECT_EQ(g.rowAt(-1), -1);
    EXPECT_EQ(g.rowAt(0), 0);
    EXPECT_EQ(g.rowAt(19.9), 0);
    EXPECT_EQ(g.rowAt(20), 1);
    EXPECT_EQ(g.timeAxisSize(12, 7), QSizeF(1250, 140)) << "the duration plus 50 points, and the rows";
}

class TimelineRowsTest : public TimelineModelFixture {};

TEST_F(TimelineRowsTest, AnExpandedComponentShowsEveryChildAndAnUnanimatedOneStaysEmpty)
{
    model::QuartzComponent* back = addComponent(QStringLiteral("Back"));
    model::QuartzComponent* c = addBareComponent(QStringLiteral("Three"), {"alpha", "beta", "gamma"});
    animate(c, QStringLiteral("alpha"), {1, 2});
    animate(c, QStringLiteral("gamma"), {3});
    c->setExpanded(true);
    const TimelineRows rows = TimelineRows::build(*composition);
    ASSERT_EQ(rows.count(), 5) << "front-most first: the component, its three children, then the one behind";
    EXPECT_EQ(rows.row(0)->component, c);
    EXPECT_EQ(rows.row(1)->attribute->key(), QStringLiteral("alpha"));
    EXPECT_EQ(rows.row(2)->attribute->key(), QStringLiteral("beta"));
    EXPECT_EQ(rows.row(3)->attribute->key(), QStringLiteral("gamma"));
    EXPECT_EQ(rows.row(4)->component, back);
    EXPECT_EQ(rows.row(2)->owner, c);
    EXPECT_EQ(rows.row(4)->componentIndex, 1);

    const TimelineGeometry g = at25fps(100);
    QList<float> seen;
    for (int row = 0; row < rows.count(); ++row)
        rows.forEachKeyframeInSpan(g, row, 0, 2000, [&](model::Attribute*, float key, const QRectF&) { seen << key; });
    EXPECT_EQ(seen, (QList<float>{1, 2, 3})) << "the unanimated child has a row and nothing in it";
    c->setExpanded(false);
    EXPECT_EQ(TimelineRows::build(*composition).count(), 2);
}

TEST_F(TimelineRowsTest, OnlyTheKeyframesInTheSpanAreVisited)
{
    model::QuartzComponent* c = addBareComponent(QStringLiteral("C"), {"x"});
    model::Attribute* x = animate(c, QStringLiteral("x"), {0, 0.5, 1, 1.5, 2, 2.5, 3});
    c->setExpanded(true);
    const TimelineRows rows = TimelineRows::build(*composition);
    const TimelineGeometry g = at25fps(100);
    QList<float> seen;
    // Pixels 150–251 hold the diamonds of 1.5 and 2.5 only partly, 2 wholly.
    rows.forEachKeyframeInSpan(g, 1, 150, 251, [&](model::Attribute* a, float key, const QRectF&) {
        EXPECT_EQ(a, x);
        seen << key;
    });
    EXPECT_EQ(seen, (QList<float>{1.5, 2, 2.5}));
    seen.clear();
    rows.forEachKeyframeInSpan(g, 1, 400, 500, [&](model::Attribute*, float key, const QRectF&) { seen << key; });
    EXPECT_TRUE(seen.isEmpty());
    rows.forEachKeyframeInSpan(g, 0, 0, 500, [&](model::Attribute*, float key, const QRectF&) { seen << key; });
    EXPECT_TRUE(seen.isEmpty()) << "a component row has no diamonds";
}

TEST_F(TimelineRowsTest, HitTestingFindsClipsWithTheirPartAndKeyframes)
{
    model::QuartzComponent* c = addBareComponent(QStringLiteral("C"), {"x"});
    c->setStartTime(1);
    c->setEndTime(4);
    animate(c, QStringLiteral("x"), {-0.5, 2});
    c->setExpanded(true);
    const TimelineRows rows = TimelineRows::build(*composition);
    const TimelineGeometry g = at25fps(100);  // the clip spans x 103–403

    TimelineHit hit = rows.hitTest(g, QPointF(107, 10));
    EXPECT_EQ(hit.component, c);
    EXPECT_EQ(hit.part, kPartStart);
    EXPECT_EQ(rows.hitTest(g, QPointF(108, 10)).part, kPartWhole);
    EXPECT_EQ(rows.hitTest(g, QPointF(399, 10)).part, kPartEnd);
    EXPECT_FALSE(rows.hitTest(g, QPointF(50, 10)).isClip()) << "outside the clip nothing is hit";
    EXPECT_FALSE(rows.hitTest(g, QPointF(403, 10)).isClip()) << "the right edge belongs to the next pixel";

    hit = rows.hitTest(g, QPointF(203, 30));
    EXPECT_TRUE(hit.isKeyframe());
    EXPECT_EQ(hit.key, 2.0f);
    EXPECT_EQ(hit.row, 1);
    EXPECT_FALSE(rows.hitTest(g, QPointF(203, 23)).isKeyframe()) << "above the diamond";
    hit = rows.hitTest(g, QPointF(-47, 30));
    EXPECT_EQ(hit.key, -0.5f) << "a keyframe at a negative time is found like any other";
    EXPECT_FALSE(rows.hitTest(g, QPointF(203, 200)).isKeyframe()) << "below the last row";
}

TEST_F(TimelineRowsTest, TheMarqueeQueryTakesEveryDiamondItTouches)
{
    model::QuartzComponent* a = addBareComponent(QStringLiteral("A"), {"x"});
    model::QuartzComponent* b = addBareComponent(QStringLiteral("B"), {"y"});
    animate(a, QStringLiteral("x"), {1, 2, 3});
    animate(b, QStringLiteral("y"), {1, 2, 3});
    a->setExpanded(true);
    b->setExpanded(true);
    const TimelineRows rows = TimelineRows::build(*composition);  // B, y, A, x
    const TimelineGeometry g = at25fps(100);
    QStringList seen;
    rows.forEachKeyframeIntersecting(g, QRectF(150, 25, 100, 50), [&](model::Attribute* attr, float key, const QRectF&) {
        seen << QStringLiteral("%1@%2").arg(attr->key()).arg(key);
    });
    EXPECT_EQ(seen, QStringList({QStringLiteral("y@2"), QStringLiteral("x@2")}));
    seen.clear();
    rows.forEachKeyframeIntersecting(g, QRectF(150, 25, 100, 0), [&](model::Attribute*, float, const QRectF&) { seen << "hit"; });
    EXPECT_TRUE(seen.isEmpty()) << "a marquee without height touches nothing";
}
