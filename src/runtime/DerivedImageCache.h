#pragma once
// Tinted and masked copies of images, so that a static layer drawn with a
// colour does not recolour its pixels every frame. Looking one up allocates
// nothing.

#include "runtime/Image.h"
#include "runtime/Value.h"

#include <QImage>

#include <cstdint>
#include <unordered_map>

namespace runtime {

class DerivedImageCache {
public:
    QImage tinted(const Image& image, const Color& color);
    QImage masked(const QImage& image, qint64 imageKey, const Image& mask);
    // Multiplies premultiplied pixels by a colour's red, green and blue.
    static QImage tint(const QImage& image, const Color& color);

private:
    struct Key {
        qint64 image = 0;
        qint64 mask = 0;          // masked copies
        double red = 0, green = 0, blue = 0;  // tinted copies
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };
    struct Entry {
        QImage result;
        std::uint64_t lastUse = 0;
    };
    QImage* find(const Key& key);
    void store(const Key& key, QImage image);

    std::unordered_map<Key, Entry, KeyHash> entries_;
    std::uint64_t clock_ = 0;
};

}  // namespace runtime
