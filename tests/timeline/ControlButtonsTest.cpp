// The stop-frame and keyframe buttons: their layout, where they are placed
// and which button a point presses with the flags at the playhead.

#include "timeline/TimelineDrag.h"
#include "timeline/VLTimelineControlButtons.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

using timeline::VLTimelineControlButtons;

namespace {

QPixmap blank(int width, int height)
{
    QPixmap pixmap(width, height);
    pixmap.fill(Qt::white);
    return pixmap;
}

// Previous 10 × 8, add and remove 14 × 12, next 10 × 8, 5 points apart.
VLTimelineControlButtons buttons() { return {blank(14, 12), blank(14, 12), blank(10, 8), blank(10, 8), 5.0}; }

constexpr int kAll = timeline::kFlagBefore | timeline::kFlagAt | timeline::kFlagAfter;

}  // namespace

TEST(ControlButtons, ThreeImagesSideBySideCentredOnTheMiddleOne)
{
    const VLTimelineControlButtons b = buttons();
    EXPECT_EQ(b.size(), QSizeF(10 + 14 + 10 + 10, 12));
    EXPECT_EQ(b.previousOffset(), QPointF(0, 2));
    EXPECT_EQ(b.middleOffset(), QPointF(15, 0));
    EXPECT_EQ(b.nextOffset(), QPointF(34, 2));
    EXPECT_EQ(b.rectInView(QSizeF(900, 22), 200), QRectF(200 - 44 - 8, 5, 44, 12)) << "right-aligned in the corner";
    EXPECT_EQ(b.rectInRect(QRectF(0, 40, 200, 20)), QRectF(200 - 44 - 4, 44, 44, 12)) << "right-aligned in the row";
}

TEST(ControlButtons, APointPressesTheButtonUnderItWhenItIsLive)
{
    const VLTimelineControlButtons b = buttons();
    const QRectF r(100, 10, 44, 12);
    EXPECT_EQ(b.controlActionInRect(r, {105, 15}, kAll), VLTimelineControlButtons::kPrevious);
    EXPECT_EQ(b.controlActionInRect(r, {140, 15}, kAll), VLTimelineControlButtons::kNext);
    EXPECT_EQ(b.controlActionInRect(r, {120, 15}, kAll), VLTimelineControlButtons::kRemove) << "something at the time";
    EXPECT_EQ(b.controlActionInRect(r, {120, 15}, 0), VLTimelineControlButtons::kAdd) << "nothing at the time";
    EXPECT_EQ(b.controlActionInRect(r, {105, 15}, timeline::kFlagAfter), VLTimelineControlButtons::kNone)
        << "nothing before: previous is dead";
    EXPECT_EQ(b.controlActionInRect(r, {140, 15}, timeline::kFlagBefore), VLTimelineControlButtons::kNone)
        << "nothing after: next is dead";
    EXPECT_EQ(b.controlActionInRect(r, {99, 15}, kAll), VLTimelineControlButtons::kNone) << "outside";
    EXPECT_EQ(b.controlActionInRect(r, {120, 22}, kAll), VLTimelineControlButtons::kNone) << "just below";
    // The gaps belong to the button on their left, as the original measured.
    EXPECT_EQ(b.controlActionInRect(r, {112, 15}, kAll), VLTimelineControlButtons::kPrevious);
    EXPECT_EQ(b.controlActionInRect(r, {131, 15}, kAll), VLTimelineControlButtons::kRemove);
}

TEST(ControlButtons, DeadButtonsAreDrawnFaded)
{
    const VLTimelineControlButtons b = buttons();
    QImage image(44, 12, QImage::Format_ARGB32_Premultiplied);
    auto alphaAt = [&](int flags, QPoint p) {
        image.fill(Qt::transparent);
        QPainter painter(&image);
        b.drawAtPoint(painter, QPointF(0, 0), flags);
        painter.end();
        return qAlpha(image.pixel(p));
    };
    EXPECT_EQ(alphaAt(kAll, {2, 5}), 255);
    EXPECT_LT(alphaAt(timeline::kFlagAfter, {2, 5}), 100) << "previous without anything before";
    EXPECT_EQ(alphaAt(0, {20, 5}), 255) << "the middle button is always live";
    EXPECT_LT(alphaAt(timeline::kFlagBefore, {40, 5}), 100) << "next without anything after";
}

TEST(ControlButtons, TheTimelinesSetsAreTheSameSize)
{
    EXPECT_EQ(VLTimelineControlButtons::stopFrameButtons().size(), VLTimelineControlButtons::keyframeButtons().size());
    EXPECT_GT(VLTimelineControlButtons::keyframeButtons().size().width(), 0);
}
