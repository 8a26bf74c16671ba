#pragma once
// Layer pictures as the editor keeps them: cut to what they show and
// premultiplied, ready to draw. Writers often store every layer at the full
// canvas size; a 4K layer holding a small box would otherwise cost 33 MB of
// transparent pixels in memory, in every save and in every frame drawn.

#include <QImage>
#include <QRect>

namespace psd {

// The smallest rectangle holding every pixel whose alpha is not zero; null
// for a picture that is transparent throughout. `image` is RGBA8888 or
// ARGB32 (either premultiplied or not).
QRect visibleBounds(const QImage& image);

// The visible part of a straight-alpha RGBA8888 layer as premultiplied
// ARGB32, and where it sits in the layer (`offset`, top-left). A picture
// transparent throughout keeps its size.
QImage trimmedPremultiplied(const QImage& image, QPoint* offset);

}  // namespace psd
