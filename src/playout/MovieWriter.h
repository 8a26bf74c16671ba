#pragma once
// Frames into a QuickTime movie. The caller's thread converts each picture
// to the codec's pixel format; a thread of its own encodes it, so that on
// two cores rendering and conversion run beside the encoder.

#include "playout/FrameSink.h"
#include "playout/MovieEncoder.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace playout {

class MovieWriter : public FrameSink {
public:
    MovieWriter(QString path, MovieCodec codec, int encoderThreads = 2);
    ~MovieWriter() override;

    bool open(const FrameFormat& format, QString* error) override;
    bool write(const QImage& frame, qint64 index, QString* error) override;
    bool close(QString* error) override;

private:
    void encodeQueued();

    QString path_;
    MovieCodec codec_;
    int encoderThreads_;
    MovieEncoder encoder_;
    std::thread worker_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<int> free_;   // slots ready to take a picture
    std::deque<int> queued_;  // slots converted, in frame order
    bool closing_ = false;
    QString error_;  // the encoder's first failure
};

}  // namespace playout
