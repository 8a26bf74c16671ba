#include "playout/MovieWriter.h"

namespace playout {

namespace {
// Converted pictures in flight; each is 16 MB of 10-bit planes at 1920×1080.
constexpr int kSlots = 3;
}  // namespace

MovieWriter::MovieWriter(QString path, MovieCodec codec, int encoderThreads)
    : path_(std::move(path)), codec_(codec), encoderThreads_(encoderThreads)
{
}

MovieWriter::~MovieWriter()
{
    if (worker_.joinable()) {
        QString ignored;
        close(&ignored);
    }
}

bool MovieWriter::open(const FrameFormat& format, QString* error)
{
    if (!encoder_.open(path_, codec_, format.size, format.timing, encoderThreads_, kSlots, error)) return false;
    closing_ = false;
    error_.clear();
    free_.clear();
    for (int slot = 0; slot < kSlots; ++slot) free_.push_back(slot);
    worker_ = std::thread([this] { encodeQueued(); });
    return true;
}

bool MovieWriter::write(const QImage& frame, qint64, QString* error)
{
    int slot = -1;
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !free_.empty() || !error_.isEmpty(); });
        if (!error_.isEmpty()) {
            if (error) *error = error_;
            return false;
        }
        slot = free_.back();
        free_.pop_back();
    }
    if (!encoder_.convert(frame, slot, error)) return false;
    {
        std::lock_guard lock(mutex_);
        queued_.push_back(slot);
    }
    changed_.notify_all();
    return true;
}

bool MovieWriter::close(QString* error)
{
    if (!worker_.joinable()) return false;
    {
        std::lock_guard lock(mutex_);
        closing_ = true;
    }
    changed_.notify_all();
    worker_.join();
    QString finishing;
    const bool finished = encoder_.finish(&finishing);
    const QString failure = !error_.isEmpty() ? error_ : finished ? QString() : finishing;
    if (!failure.isEmpty()) {
        if (error) *error = failure;
        return false;
    }
    return true;
}

void MovieWriter::encodeQueued()
{
    for (;;) {
        int slot = -1;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return !queued_.empty() || closing_; });
            if (queued_.empty()) return;
            slot = queued_.front();
            queued_.pop_front();
        }
        QString failure;
        const bool encoded = encoder_.encode(slot, &failure);
        {
            std::lock_guard lock(mutex_);
            free_.push_back(slot);
            if (!encoded) {
                error_ = failure;
                queued_.clear();
            }
        }
        changed_.notify_all();
        if (!encoded) return;
    }
}

}  // namespace playout
