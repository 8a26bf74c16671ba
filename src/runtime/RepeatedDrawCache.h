#pragma once
// Pictures of resampled draws as they land on one target, for draws that
// come back unchanged frame after frame: a still logo turned by a few
// degrees, a title at a fractional position. Blending such a picture onto
// the target gives the very pixels that drawing the quad again would, at
// the cost of a plain blit: no resampling, and none of the parallel span
// fills with which Qt's raster engine spreads large transformed draws over
// its thread pool, allocating tasks each time.
//
// A draw is pictured the second time it is seen (among the last draws made
// directly), so a layer that moves every frame is never pictured for nothing.

#include <QImage>
#include <QPoint>

#include <array>
#include <cstdint>
#include <vector>

namespace runtime {

class RepeatedDrawCache {
public:
    // What decides a draw's picture; compared exactly.
    struct Key {
        qint64 source = 0;                // pixels drawn (0 for a flat colour)
        std::array<double, 8> corners{};  // where they land: x, y of each, in target pixels
        std::array<double, 4> color{};    // flat colour, or white at the opacity
        bool antialias = true;
        bool operator==(const Key&) const = default;
    };
    struct Picture {
        QImage pixels;    // premultiplied; blended with Source Over
        QPoint topLeft;   // in target pixels
    };

    // `targetPixels` bounds the pixels kept (a rotated full-frame layer fits).
    explicit RepeatedDrawCache(qint64 targetPixels) : pixelBudget_(targetPixels) {}

    // The picture for `key`: the cached one, or one made now by
    // `paint(QImage&, QPoint topLeft)` over `bounds` when the same draw was
    // seen recently. Null: draw it directly.
    template <class Paint>
    const Picture* pictureFor(const Key& key, const QRect& bounds, Paint&& paint)
    {
        if (const Picture* cached = find(key)) return cached;
        if (!seenBefore(key) || !fits(bounds)) {
            remember(key);
            return nullptr;
        }
        Picture picture{QImage(bounds.size(), QImage::Format_ARGB32_Premultiplied), bounds.topLeft()};
        if (picture.pixels.isNull()) return nullptr;
        picture.pixels.fill(Qt::transparent);
        paint(picture.pixels, picture.topLeft);
        return store(key, std::move(picture));
    }

    std::size_t size() const { return entries_.size(); }

private:
    struct Entry {
        Key key;
        Picture picture;
        std::uint64_t lastUse = 0;
    };
    static constexpr std::size_t kMaxEntries = 32;
    static constexpr std::size_t kRemembered = 32;

    const Picture* find(const Key& key);
    bool seenBefore(const Key& key) const;
    void remember(const Key& key);
    bool fits(const QRect& bounds) const;
    const Picture* store(const Key& key, Picture picture);

    qint64 pixelBudget_;
    qint64 pixelsKept_ = 0;
    std::uint64_t clock_ = 0;
    std::vector<Entry> entries_;
    // Draws made directly of late, oldest overwritten first.
    std::array<Key, kRemembered> remembered_;
    std::size_t rememberedCount_ = 0;
};

}  // namespace runtime
