// Which pixels of a frame can differ from the previous one, from their
// draw lists: the OpenGL target redraws and reads back only these.

#include "runtime/FrameDamage.h"

#include <gtest/gtest.h>

namespace {

constexpr QSize kSize(200, 100);

runtime::RecordedDraw clearDraw(runtime::Color color = runtime::Color::transparentBlack())
{
    return {color, {}, QRect(QPoint(0, 0), kSize)};
}

runtime::RecordedDraw quadAt(const QRect& bounds, double red = 1.0)
{
    runtime::RecordedDraw draw;
    draw.quad.rect = QRectF(bounds);
    draw.quad.color = runtime::Color{red, 0, 0, 1};
    draw.bounds = bounds;
    return draw;
}

TEST(FrameDamage, OnlyDrawsThatChangedCountOnBothTheirOldAndNewPlace)
{
    const std::vector<runtime::RecordedDraw> before{clearDraw(), quadAt({10, 10, 20, 20}), quadAt({120, 50, 30, 30})};
    EXPECT_TRUE(runtime::frameDamage(before, before, kSize).empty());

    std::vector<runtime::RecordedDraw> moved = before;
    moved[1] = quadAt({60, 10, 20, 20});
    const auto damage = runtime::frameDamage(before, moved, kSize);
    ASSERT_EQ(damage.size(), 2u);
    EXPECT_TRUE(damage[0].contains(QRect(10, 10, 20, 20)) || damage[1].contains(QRect(10, 10, 20, 20)));
    EXPECT_TRUE(damage[0].contains(QRect(60, 10, 20, 20)) || damage[1].contains(QRect(60, 10, 20, 20)));
    for (const QRect& r : damage) EXPECT_FALSE(r.intersects(QRect(120, 50, 30, 30)));

    // A colour change damages the draw's own place only.
    std::vector<runtime::RecordedDraw> recoloured = before;
    recoloured[2] = quadAt({120, 50, 30, 30}, 0.5);
    EXPECT_EQ(runtime::frameDamage(before, recoloured, kSize), std::vector<QRect>{QRect(120, 50, 30, 30)});
}

TEST(FrameDamage, AddedRemovedAndReorderedDrawsAndTheClearColour)
{
    const std::vector<runtime::RecordedDraw> before{clearDraw(), quadAt({10, 10, 20, 20}), quadAt({15, 15, 20, 20})};
    // Dropping the last draw damages where it was.
    const std::vector<runtime::RecordedDraw> fewer(before.begin(), before.end() - 1);
    EXPECT_EQ(runtime::frameDamage(before, fewer, kSize), std::vector<QRect>{QRect(15, 15, 20, 20)});
    // Swapping the overlapping two damages both (joined: they overlap).
    const std::vector<runtime::RecordedDraw> swapped{clearDraw(), before[2], before[1]};
    EXPECT_EQ(runtime::frameDamage(before, swapped, kSize), std::vector<QRect>{QRect(10, 10, 25, 25)});
    // Another clear colour changes everything.
    std::vector<runtime::RecordedDraw> grey = before;
    grey[0] = clearDraw(runtime::Color{0.5, 0.5, 0.5, 1});
    EXPECT_EQ(runtime::frameDamage(before, grey, kSize), std::vector<QRect>{QRect(QPoint(0, 0), kSize)});
    // An image swapped for another of the same size is a change.
    std::vector<runtime::RecordedDraw> withImage = before, otherImage = before;
    QImage pixels(4, 4, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(Qt::red);
    withImage[1].quad.image = runtime::Image::fromRaster(pixels);
    otherImage[1].quad.image = runtime::Image::fromRaster(pixels.copy());
    EXPECT_FALSE(runtime::frameDamage(withImage, otherImage, kSize).empty());
    EXPECT_TRUE(runtime::frameDamage(withImage, withImage, kSize).empty());
    // The same pixels set again (a new image value around them) are not.
    std::vector<runtime::RecordedDraw> setAgain = withImage;
    setAgain[1].quad.image = runtime::Image::fromRaster(pixels);
    EXPECT_TRUE(runtime::frameDamage(withImage, setAgain, kSize).empty());
}

TEST(FrameDamage, ManyScatteredChangesBecomeOneBox)
{
    std::vector<runtime::RecordedDraw> before{clearDraw()}, after{clearDraw()};
    for (int i = 0; i < 8; ++i) {
        before.push_back(quadAt({i * 24, (i % 2) * 60, 10, 10}));
        after.push_back(quadAt({i * 24, (i % 2) * 60, 10, 10}, 0.25));
    }
    const auto damage = runtime::frameDamage(before, after, kSize);
    ASSERT_EQ(damage.size(), 1u);
    EXPECT_EQ(damage[0], QRect(0, 0, 7 * 24 + 10, 70));

    const auto few = runtime::mergedDamage({QRect(0, 0, 5, 5), QRect(5, 0, 5, 5), QRect(50, 50, 5, 5)});
    EXPECT_EQ(few.size(), 2u);  // the touching two join, the far one stays apart
}

TEST(FrameDamage, QuadBoundsFollowTheProjectionAndFallBackToTheWholeTarget)
{
    // Clip space = units here: the quad's unit square lands on the right half.
    runtime::QuadDraw quad;
    quad.rect = QRectF(0, -1, 1, 2);
    const QRect bounds = runtime::quadPixelBounds(quad, QMatrix4x4(), kSize);
    EXPECT_TRUE(bounds.contains(QRect(100, 0, 100, 100)));
    EXPECT_LE(bounds.left(), 100);
    EXPECT_GE(bounds.left(), 96);  // grown by a small margin only

    // Off the target: nothing.
    quad.rect = QRectF(3, 3, 1, 1);
    EXPECT_TRUE(runtime::quadPixelBounds(quad, QMatrix4x4(), kSize).isEmpty());

    // A corner behind the eye (w ≤ 0): no box can be trusted.
    QMatrix4x4 behind;
    behind.setRow(3, QVector4D(1, 0, 0, 0));  // w = x
    quad.rect = QRectF(-1, -1, 2, 2);
    EXPECT_EQ(runtime::quadPixelBounds(quad, behind, kSize), QRect(QPoint(0, 0), kSize));
}

}  // namespace
