#pragma once
// Where a frame's picture can differ from the previous one's, found by
// comparing their draw lists: a pixel that no differing draw touches in
// either frame sees the same draws in the same order, so it keeps its
// value. A target that redraws and reads back only these rectangles
// gives the same picture as one that draws everything.

#include "runtime/Backend.h"

#include <QRect>

#include <optional>
#include <vector>

namespace runtime {

// Whether two quads give the same pixels on one target. Images compare by
// cache key, as the backends' texture caches do: the same picture set
// again on an input every frame is no change.
bool sameDraw(const QuadDraw& a, const QuadDraw& b);

struct RecordedDraw {
    std::optional<Color> clear;  // a clear of the whole target, else `quad`
    QuadDraw quad;
    QRect bounds;  // pixels it can touch (top-left origin), clipped to the target
    bool operator==(const RecordedDraw& other) const
    {
        return clear == other.clear && bounds == other.bounds && (clear || sameDraw(quad, other.quad));
    }
};

// At most this many rectangles; more are merged into their bounding box,
// since each costs a pass over the draws.
inline constexpr int kMaxDamageRects = 4;

// Rectangles that overlap or touch joined, at most kMaxDamageRects.
std::vector<QRect> mergedDamage(std::vector<QRect> rects);

// Rectangles (disjoint, inside `size`) covering every pixel either list's
// differing draws touch. Empty when the frames are the same.
std::vector<QRect> frameDamage(const std::vector<RecordedDraw>& previous, const std::vector<RecordedDraw>& current,
                               QSize size);

// The pixels a quad can touch under `projection` (units → clip space) on a
// target of `size`: its corners' box, grown for filtering and smoothing;
// the whole target when a corner is at or behind the eye.
QRect quadPixelBounds(const QuadDraw& quad, const QMatrix4x4& projection, QSize size);

}  // namespace runtime
