#pragma once
// Decoding a document's images in two steps. First every image is planned:
// where each of its planes lies and whether its data can hold the pixels,
// with nothing allocated. Then all images are allocated at once and decoded
// on the available cores, large raw and RLE images cut into bands of rows.

#include "psd/ChannelRows.h"

#include <QImage>
#include <QPoint>
#include <QRect>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace psd::detail {

struct PlanePlan {
    PlaneSource source;
    int width = 0;
    int height = 0;
    std::string what;  // names the plane in errors
};

struct MaskPlan {
    PlanePlan plane;
    QRect rect;  // document pixels
    uint8_t defaultColor = 0;
};

struct ImagePlan {
    std::string who;  // names the image in errors that no plane names; empty for the composite
    int width = 0;
    int height = 0;
    QPoint origin;  // document position of the top-left pixel
    int colorCount = 3;
    PlanePlan color[3];
    std::optional<PlanePlan> alpha;
    std::vector<MaskPlan> masks;
    QImage* target = nullptr;  // where the decoded image goes

    // Raw and RLE rows decode in any order; a ZIP plane must be read from its start.
    bool rowsIndependent() const;
};

// Plans a layer record's image; an empty record gives a plan of no pixels.
bool planLayerImage(const FileContext& file, int colorChannels, int index, const LayerRecord& record, ImagePlan* plan,
                    std::string* error);

// Plans the merged image at `begin` (the image data section): planar
// channels sharing one compression code.
bool planCompositeImage(const FileContext& file, int64_t begin, int width, int height, int fileChannels,
                        int colorChannels, bool withAlpha, ImagePlan* plan, std::string* error);

// Allocates every plan's image and decodes them on up to `threads` threads
// (0: one per core, a small document on the calling thread alone). The
// result, and the error when several images are damaged, are the same for
// any thread count: the first failure in plan order and row order.
// `progress` as in DecodeOptions.
bool decodeImages(const FileContext& file, const std::vector<ImagePlan>& plans, int threads, std::string* error,
                  const std::function<bool(int64_t done, int64_t total)>& progress = {});

}  // namespace psd::detail
