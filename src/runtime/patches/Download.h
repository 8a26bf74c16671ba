#pragma once
// Fetches a file or an http(s) resource off the rendering thread, so that a
// frame never waits for it: the patch starts a download and looks, frame by
// frame, whether it has arrived. Local paths (relative to the composition's
// folder) and file URLs are read; http and https go through Qt Network with
// a time-out.

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

namespace runtime {

class Download {
public:
    struct Result {
        QByteArray data;
        QString error;  // empty on success
    };

    // `location`: a URL or a path; relative paths resolve against `directory`.
    Download(const QString& location, const QString& directory, int timeoutMs = kDefaultTimeoutMs);
    ~Download();  // does not wait for a network reply (the worker finishes on its own)
    Download(const Download&) = delete;
    Download& operator=(const Download&) = delete;

    // The outcome once it is there; nullopt while under way.
    std::optional<Result> result() const;
    // Waits for the outcome (tests and tools; never while rendering).
    Result wait() const;

    static constexpr int kDefaultTimeoutMs = 10000;
    static constexpr qint64 kMaxBytes = 64ll << 20;

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace runtime
