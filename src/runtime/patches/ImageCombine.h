#pragma once
// Images combined pixel by pixel on premultiplied colours: Porter–Duff
// compositing, blend modes, masks and dissolves.

#include "runtime/Image.h"
#include "runtime/PixelColor.h"

#include <functional>
#include <optional>
#include <vector>

namespace runtime {

// Gets one pixel of each input, in order; a null input reads transparent.
using PixelCombiner = std::function<PixelColor(const PixelColor* pixels)>;

// Without an extent the result is infinite.
Image combineImages(const std::vector<Image>& inputs, const std::optional<QRect>& extent, const PixelCombiner& combine);

// Extents of results, in the optional form combineImages takes (none:
// infinite). Null images count as empty.
std::optional<QRect> unitedExtent(const std::vector<Image>& images);
std::optional<QRect> intersectedExtent(const std::vector<Image>& images);
std::optional<QRect> extentOf(const Image& image);

}  // namespace runtime
