#pragma once
// Frames as PNG files with alpha, "frame-00000.png" upwards in a folder.
// Compressing a 1920×1080 picture takes longer than rendering it, so the
// files are written on worker threads while the next frames render.

#include "playout/FrameSink.h"

#include <QMutex>
#include <QSemaphore>
#include <QString>
#include <QThreadPool>

namespace playout {

class PngSequenceWriter : public FrameSink {
public:
    explicit PngSequenceWriter(QString directory, int threads = 2);
    ~PngSequenceWriter() override;

    static QString fileName(qint64 index);

    bool open(const FrameFormat& format, QString* error) override;
    bool write(const QImage& frame, qint64 index, QString* error) override;
    bool close(QString* error) override;

private:
    QString firstError();

    QString directory_;
    QThreadPool pool_;
    QSemaphore waiting_;  // frames that may wait for a thread
    QMutex mutex_;
    QString error_;
};

}  // namespace playout
