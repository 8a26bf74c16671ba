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

// A straight RGBA8888 image of the given size, its pixels not yet
// written (nor faulted in); null when memory runs out.
QImage allocateImage(int width, int height);

// Makes the memory of rows [firstRow, endRow) present before they are
// written, where the system can do that faster than page by page.
void prefaultRows(uchar* pixels, qsizetype bytesPerLine, int firstRow, int endRow);

// Fills rows [firstRow, endRow) of an input.width x input.height image
// whose pixels start at `pixels`. Different row ranges of one image may be
// filled on different threads, each with readers of its own (the pixels are
// passed bare so that no thread touches the QImage itself).
bool assembleRows(const AssemblyInput& input, uchar* pixels, qsizetype bytesPerLine, int firstRow, int endRow,
                  std::string* error);

}  // namespace psd::detail
