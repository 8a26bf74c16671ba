// When the raster target pictures a draw, and when it lets pictures go.

#include "runtime/RepeatedDrawCache.h"

#include <gtest/gtest.h>

namespace {

using Cache = runtime::RepeatedDrawCache;

Cache::Key keyAt(double x)
{
    Cache::Key key;
    key.source = 7;
    key.corners = {x, 0, x + 10, 0, x + 10, 10, x, 10};
    return key;
}

// Paints red and counts its calls.
struct Painter {
    int calls = 0;
    auto operator()()
    {
        return [this](QImage& pixels, QPoint) {
            ++calls;
            pixels.fill(Qt::red);
        };
    }
};

TEST(RepeatedDrawCache, PicturesADrawTheSecondTimeAndKeepsIt)
{
    Cache cache(10000);
    Painter paint;
    const QRect bounds(5, 6, 12, 11);
    EXPECT_EQ(cache.pictureFor(keyAt(0), bounds, paint()), nullptr) << "seen once: drawn directly";
    EXPECT_EQ(paint.calls, 0);

    const Cache::Picture* picture = cache.pictureFor(keyAt(0), bounds, paint());
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(paint.calls, 1);
    EXPECT_EQ(picture->topLeft, bounds.topLeft());
    EXPECT_EQ(picture->pixels.size(), bounds.size());
    EXPECT_EQ(picture->pixels.pixel(0, 0), qRgb(255, 0, 0));

    EXPECT_EQ(cache.pictureFor(keyAt(0), bounds, paint()), picture);
    EXPECT_EQ(paint.calls, 1) << "painted once";
}

TEST(RepeatedDrawCache, ADrawThatMovesEveryFrameIsNeverPictured)
{
    Cache cache(10000);
    Painter paint;
    for (int frame = 0; frame < 100; ++frame)
        EXPECT_EQ(cache.pictureFor(keyAt(frame * 0.25), QRect(0, 0, 10, 10), paint()), nullptr);
    EXPECT_EQ(paint.calls, 0);
    EXPECT_EQ(cache.size(), 0u);

    Cache::Key nearly = keyAt(0);
    cache.pictureFor(nearly, QRect(0, 0, 10, 10), paint());
    nearly.corners[0] += 1e-9;  // keys compare exactly
    EXPECT_EQ(cache.pictureFor(nearly, QRect(0, 0, 10, 10), paint()), nullptr);
}

TEST(RepeatedDrawCache, KeepsNoMorePixelsThanTheTargetHas)
{
    Cache cache(1000);
    Painter paint;
    const QRect tooLarge(0, 0, 40, 30);
    cache.pictureFor(keyAt(0), tooLarge, paint());
    EXPECT_EQ(cache.pictureFor(keyAt(0), tooLarge, paint()), nullptr);

    // 400 pixels each: the third pushes out the least recently used.
    const QRect bounds(0, 0, 20, 20);
    for (int i : {1, 2}) {
        cache.pictureFor(keyAt(i), bounds, paint());
        cache.pictureFor(keyAt(i), bounds, paint());
    }
    cache.pictureFor(keyAt(1), bounds, paint());  // 1 is used again, 2 is not
    cache.pictureFor(keyAt(3), bounds, paint());
    cache.pictureFor(keyAt(3), bounds, paint());
    EXPECT_EQ(cache.size(), 2u);
    const int paintedSoFar = paint.calls;
    EXPECT_NE(cache.pictureFor(keyAt(1), bounds, paint()), nullptr);
    EXPECT_NE(cache.pictureFor(keyAt(3), bounds, paint()), nullptr);
    EXPECT_EQ(paint.calls, paintedSoFar) << "1 and 3 were kept";
    EXPECT_NE(cache.pictureFor(keyAt(2), bounds, paint()), nullptr);
    EXPECT_EQ(paint.calls, paintedSoFar + 1) << "2 was let go and is painted again";
}

}  // namespace
