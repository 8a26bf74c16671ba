#include "runtime/patches/Download.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QTimer>
#include <QUrl>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace runtime {

struct Download::State {
    mutable std::mutex mutex;
    mutable std::condition_variable done;
    std::optional<Result> result;

    void finish(Result r)
    {
        {
            std::lock_guard lock(mutex);
            result = std::move(r);
        }
        done.notify_all();
    }
};

namespace {

Download::Result readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {{}, QStringLiteral("cannot read %1: %2").arg(path, file.errorString())};
    if (file.size() > Download::kMaxBytes) return {{}, QStringLiteral("%1 is larger than 64 MB").arg(path)};
    return {file.readAll(), {}};
}

// Runs in the worker thread: its own event loop and network manager.
Download::Result fetch(const QUrl& url, int timeoutMs)
{
    QNetworkAccessManager manager;
    // The loopback address never goes through a proxy the environment names.
    const QString host = url.host();
    if (host == QLatin1String("127.0.0.1") || host == QLatin1String("localhost") || host == QLatin1String("::1"))
        manager.setProxy(QNetworkProxy::NoProxy);
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setTransferTimeout(timeoutMs);
    QNetworkReply* reply = manager.get(request);
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received, qint64) {
        if (received > Download::kMaxBytes) reply->abort();
    });
    QTimer::singleShot(timeoutMs, &loop, [reply] { reply->abort(); });
    if (!reply->isFinished()) loop.exec();
    Download::Result result;
    if (reply->error() != QNetworkReply::NoError) result.error = QStringLiteral("%1: %2").arg(url.toString(), reply->errorString());
    else result.data = reply->readAll();
    delete reply;
    return result;
}

}  // namespace

Download::Download(const QString& location, const QString& directory, int timeoutMs) : state_(std::make_shared<State>())
{
    const QUrl url(location);
    const QString scheme = url.scheme().toLower();
    if (location.trimmed().isEmpty()) {
        state_->finish({{}, QStringLiteral("no location")});
    } else if (scheme == QLatin1String("http") || scheme == QLatin1String("https")) {
        std::thread([state = state_, url, timeoutMs] { state->finish(fetch(url, timeoutMs)); }).detach();
    } else {
        // A file: read on the worker too, a network drive can be slow.
        QString path = scheme == QLatin1String("file") ? url.toLocalFile() : location;
        if (QDir::isRelativePath(path) && !directory.isEmpty()) path = QDir(directory).filePath(path);
        std::thread([state = state_, path] { state->finish(readFile(path)); }).detach();
    }
}

Download::~Download() = default;

std::optional<Download::Result> Download::result() const
{
    std::lock_guard lock(state_->mutex);
    return state_->result;
}

Download::Result Download::wait() const
{
    std::unique_lock lock(state_->mutex);
    state_->done.wait(lock, [this] { return state_->result.has_value(); });
    return *state_->result;
}

}  // namespace runtime
