#pragma once
// A QuickTime movie with alpha, written through FFmpeg's libraries: ProRes
// 4444 (10-bit Y'CbCr with a 16-bit alpha plane, the usual exchange format
// for keyed graphics) or QuickTime Animation (lossless 8-bit ARGB, larger
// and slower to play but exact). Interlaced modes are written as
// interlaced pictures in their field order.

#include "playout/VideoTiming.h"

#include <QImage>
#include <QSize>
#include <QString>

#include <memory>

namespace playout {

enum class MovieCodec { ProRes4444, Animation };

class MovieEncoder {
public:
    MovieEncoder();
    ~MovieEncoder();
    MovieEncoder(const MovieEncoder&) = delete;
    MovieEncoder& operator=(const MovieEncoder&) = delete;

    // `threads`: the encoder's own slice threads (ProRes). `slots`: the
    // pictures that may be converted and waiting to be encoded at once.
    bool open(const QString& path, MovieCodec codec, QSize size, const VideoTiming& timing, int threads, int slots,
              QString* error);
    // Converts a premultiplied ARGB32 picture of the opened size into the
    // codec's pixel format in `slot`. One thread converts, another may
    // encode a different slot meanwhile.
    bool convert(const QImage& frame, int slot, QString* error);
    // Encodes the slot's picture as the next frame.
    bool encode(int slot, QString* error);
    // Flushes the encoder and writes the movie's index.
    bool finish(QString* error);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace playout
