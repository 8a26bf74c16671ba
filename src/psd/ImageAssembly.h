#pragma once
// Interleaves decoded channel rows into a straight-alpha RGBA8888 image,
// multiplying the alpha by any layer masks.

#include "psd/ChannelRows.h"

#include <QImage>
#include <QPoint>
#include <QRect>

#include <string>
#include <vector>

namespace psd::detail {

struct MaskPlane {
    ChannelRowReader* reader = nullptr;
    QRect rect;  // document pixels
    uint8_t defaultColor = 0;
};

struct AssemblyInput {
    int width = 0;
    int height = 0;
    QPoint origin;                          // document position of the image's top-left pixel
    ChannelRowReader* color[3] = {};        // R, G, B; only [0] for grayscale
    int colorCount = 3;
    ChannelRowReader* alpha = nullptr;      // none: opaque
    std::vector<MaskPlane> masks;
};

bool assembleImage(const AssemblyInput& input, QImage* out, std::string* error);

}  // namespace psd::detail
