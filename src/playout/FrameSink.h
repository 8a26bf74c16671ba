#pragma once
// Where rendered frames go: a PNG sequence or a movie. Frames arrive in
// order, as premultiplied ARGB32 pictures of one size.

#include "playout/VideoTiming.h"

#include <QImage>
#include <QSize>
#include <QString>

namespace playout {

struct FrameFormat {
    QSize size;
    VideoTiming timing;
    qint64 frameCount = 0;
};

class FrameSink {
public:
    virtual ~FrameSink() = default;
    virtual bool open(const FrameFormat& format, QString* error) = 0;
    // `index` counts from 0 in the output. The sink may keep the picture
    // (it is shared, not copied) but never draws on it.
    virtual bool write(const QImage& frame, qint64 index, QString* error) = 0;
    // Finishes everything written; false when any of it failed.
    virtual bool close(QString* error) = 0;
};

}  // namespace playout
