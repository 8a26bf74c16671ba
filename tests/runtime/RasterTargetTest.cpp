// The raster target keeps one painter open from draw to draw and blends
// cached pictures of draws that repeat. Neither may show: every frame must
// have the pixels that drawing each quad with a fresh painter gives, and a
// picture handed out must never change.

#include "runtime/RasterBackend.h"

#include <QPainter>

#include <gtest/gtest.h>

#include <vector>

namespace {

using runtime::BlendMode;
using runtime::Color;
using runtime::Image;
using runtime::QuadDraw;

constexpr QSize kSize(96, 64);  // 48 pixels per unit

// Irregular pixels with partial alpha, so that any difference in sampling,
// opacity or blending shows.
Image testPattern(int width, int height)
{
    QImage pixels(width, height, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            pixels.setPixel(x, y, qPremultiply(qRgba((x * 37) % 256, (y * 53) % 256, (x * y) % 256, 90 + (x + 3 * y) % 166)));
    return Image::fromRaster(pixels);
}

QuadDraw quad(double x, double y, double width, double height, double degrees = 0)
{
    QuadDraw q;
    q.transform.translate(float(x), float(y));
    q.transform.rotate(float(degrees), 0, 0, 1);
    q.rect = QRectF(-width / 2, -height / 2, width, height);
    return q;
}

// One of everything that sets painter state: opacities, blend modes,
// resampling and its absence, a tint, a mask, a flat colour without
// anti-aliasing, and last a quad over the whole target that shows whatever
// state a draw leaves behind.
std::vector<QuadDraw> everyKindOfDraw()
{
    const Image pattern = testPattern(23, 17);
    std::vector<QuadDraw> draws;
    QuadDraw turned = quad(-0.4, 0.1, 0.7, 0.5, 33);
    turned.image = pattern;
    turned.color = Color{1, 1, 1, 0.6};
    draws.push_back(turned);
    QuadDraw added = quad(0.3, -0.1, 0.5, 0.4, -12);
    added.image = pattern;
    added.blend = BlendMode::Add;
    draws.push_back(added);
    QuadDraw replaced = quad(0.55, 0.3, 0.4, 0.3, 20);
    replaced.color = Color{0.2, 0.9, 0.4, 0.5};
    replaced.blend = BlendMode::Replace;
    replaced.antialias = false;
    draws.push_back(replaced);
    // 23 × 17 pixels exactly, on whole pixels: a plain blit.
    QuadDraw blit = quad(-0.5 - 0.5 / 48, -0.3 - 0.5 / 48, 23.0 / 48, 17.0 / 48);
    blit.image = pattern;
    draws.push_back(blit);
    QuadDraw tinted = quad(0.1, 0.35, 0.6, 0.3, 5);
    tinted.image = pattern;
    tinted.mask = testPattern(5, 7);
    tinted.color = Color{1, 0.5, 0.25, 0.9};
    draws.push_back(tinted);
    QuadDraw flat = quad(-0.2, -0.4, 0.9, 0.2, -40);
    flat.color = Color{0.9, 0.1, 0.3, 0.7};
    draws.push_back(flat);
    QuadDraw shifted = quad(0.33, -0.41, 23.0 / 48, 17.0 / 48);  // off the pixel grid: resampled
    shifted.image = pattern;
    draws.push_back(shifted);
    QuadDraw veil = quad(0, 0, 2, 2);
    veil.color = Color{0.1, 0.2, 0.8, 0.25};
    draws.push_back(veil);
    return draws;
}

QImage background()
{
    QImage image(kSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.fillRect(QRect(0, 0, kSize.width(), kSize.height() / 2), QColor(200, 120, 40, 180));
    return image;
}

// What the target drew before it kept its painter: a fresh painter, and
// nothing cached, for every draw.
QImage drawnOneByOne(const std::vector<QuadDraw>& draws)
{
    runtime::RasterBackend backend;
    QImage image = background();
    for (const QuadDraw& draw : draws) backend.wrap(&image)->drawQuad(draw);
    return image;
}

TEST(RasterTarget, AKeptPainterDrawsWhatFreshPaintersDraw)
{
    const std::vector<QuadDraw> draws = everyKindOfDraw();
    const QImage expected = drawnOneByOne(draws);

    runtime::RasterBackend backend;
    QImage image = background();
    auto target = backend.wrap(&image);
    // The third frame blends cached pictures of the draws that repeat.
    for (int frame = 1; frame <= 3; ++frame) {
        {
            // Painted over in place, so the target's painter stays open.
            QPainter restore(&image);
            restore.setCompositionMode(QPainter::CompositionMode_Source);
            restore.drawImage(0, 0, background());
        }
        for (const QuadDraw& draw : draws) target->drawQuad(draw);
        ASSERT_EQ(image, expected) << "frame " << frame;
    }
}

TEST(RasterTarget, PicturesHandedOutAreNeverDrawnOver)
{
    runtime::RasterBackend backend;
    auto target = backend.makeRasterTarget(kSize);
    QuadDraw red = quad(0, 0, 0.5, 0.5, 10);
    red.color = Color{1, 0, 0, 1};
    target->clear(Color{0, 0, 0, 1});
    target->drawQuad(red);
    // Read while the painter is open: the draw is there, and a copy shares
    // the pixels instead of copying all of them.
    const QImage first = target->image();
    EXPECT_EQ(first.constBits(), target->image().constBits());
    EXPECT_EQ(first.pixel(48, 32), qRgb(255, 0, 0));
    const Image firstValue = target->snapshot();

    QuadDraw green = quad(0, 0, 0.5, 0.5, 10);
    green.color = Color{0, 1, 0, 1};
    target->drawQuad(green);  // no clear: drawn over a copy of the first picture
    EXPECT_EQ(target->image().pixel(48, 32), qRgb(0, 255, 0));
    EXPECT_EQ(first.pixel(48, 32), qRgb(255, 0, 0));
    EXPECT_EQ(firstValue.raster().pixel(48, 32), qRgb(255, 0, 0));
    EXPECT_NE(target->image().cacheKey(), first.cacheKey()) << "caches keyed by it would go stale";

    const QImage second = target->image();
    target->clear(Color{0, 0, 1, 1});
    target->drawQuad(red);
    EXPECT_EQ(second.pixel(48, 32), qRgb(0, 255, 0));
    EXPECT_EQ(second.pixel(1, 1), qRgb(0, 0, 0));
    EXPECT_EQ(target->image().pixel(1, 1), qRgb(0, 0, 255));
}

TEST(RasterTarget, TheCallersImageMayChangeBetweenDraws)
{
    runtime::RasterBackend backend;
    QImage canvas(kSize, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    auto target = backend.wrap(&canvas);
    QuadDraw white = quad(0, 0, 0.5, 0.5);
    white.color = Color::white();
    target->drawQuad(white);

    // The caller paints on it itself, with the target's painter still open.
    {
        QPainter own(&canvas);
        ASSERT_TRUE(own.isActive());
        own.fillRect(0, 0, 4, 4, Qt::red);
    }
    EXPECT_EQ(canvas.pixel(1, 1), qRgb(255, 0, 0));
    // And replaces it by a larger one: the next draw lands there.
    canvas = QImage(QSize(192, 128), QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    target->drawQuad(white);
    EXPECT_EQ(canvas.pixel(96, 64), qRgb(255, 255, 255));
    EXPECT_EQ(qAlpha(canvas.pixel(70, 64)), 0) << "half a unit is 48 of its 192 pixels";
}

}  // namespace
