#pragma once
// One QPainter kept open on an image from draw to draw. Beginning a painter
// costs a handful of allocations (its state, its brushes, the engine's
// state), and a frame makes many draws.
//
// The painter works on a second QImage over the same pixels, never on the
// image itself: Qt copies every pixel of an image being painted on when it
// is copied, and a frame's image is copied whenever it is handed out. So the
// image can be read, copied and handed out at any time, as if no painter
// were open; the next draw finds its pixels shared and paints on a copy of
// its own, so a picture handed out is never drawn over.

#include <QColor>
#include <QImage>
#include <QPainter>

namespace runtime {

class TargetPainter {
public:
    TargetPainter() = default;
    TargetPainter(const TargetPainter&) = delete;
    TargetPainter& operator=(const TargetPainter&) = delete;
    ~TargetPainter() { end(); }

    // The painter, open on `image`'s pixels, with no pen and an identity
    // transform when newly begun; null when the image cannot be painted on.
    // Every draw sets the rest of the state it relies on. Marks the pixels
    // as changing (a new cache key) and gives the image pixels of its own.
    QPainter* on(QImage& image);
    // Before the pixels are let go of.
    void end();
    bool isActive() const { return painter_.isActive(); }

    // A solid brush of `color`; Qt allocates a brush for each colour set,
    // so an unchanged colour is not set again.
    void setBrushColor(const QColor& color);

private:
    bool paints(const QImage& image) const;

    QImage canvas_;  // the image's pixels, not owned
    QPainter painter_;
    QColor brushColor_;
};

}  // namespace runtime
