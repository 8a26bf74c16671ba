#include "playout/PngSequenceWriter.h"

#include "psd/PngEncoder.h"

#include <QDir>
#include <QMutexLocker>

#include <algorithm>

namespace playout {

PngSequenceWriter::PngSequenceWriter(QString directory, int threads)
    : directory_(std::move(directory)), waiting_(std::max(1, threads) * 2)
{
    pool_.setMaxThreadCount(std::max(1, threads));
}

PngSequenceWriter::~PngSequenceWriter()
{
    pool_.waitForDone();
}

QString PngSequenceWriter::fileName(qint64 index)
{
    return QStringLiteral("frame-%1.png").arg(index, 5, 10, QLatin1Char('0'));
}

bool PngSequenceWriter::open(const FrameFormat&, QString* error)
{
    if (!QDir().mkpath(directory_)) {
        if (error) *error = QStringLiteral("cannot make the folder %1").arg(directory_);
        return false;
    }
    return true;
}

bool PngSequenceWriter::write(const QImage& frame, qint64 index, QString* error)
{
    if (const QString failed = firstError(); !failed.isEmpty()) {
        if (error) *error = failed;
        return false;
    }
    // Rendering runs ahead of compression by a few frames only, so that
    // waiting pictures do not pile up in memory.
    waiting_.acquire();
    const QString path = QDir(directory_).filePath(fileName(index));
    pool_.start([this, picture = frame, path] {
        std::string reason;
        if (!psd::savePng(picture, path, &reason)) {
            QMutexLocker lock(&mutex_);
            if (error_.isEmpty()) error_ = QStringLiteral("cannot write %1: %2").arg(path, QString::fromStdString(reason));
        }
        waiting_.release();
    });
    return true;
}

bool PngSequenceWriter::close(QString* error)
{
    pool_.waitForDone();
    const QString failed = firstError();
    if (!failed.isEmpty() && error) *error = failed;
    return failed.isEmpty();
}

QString PngSequenceWriter::firstError()
{
    QMutexLocker lock(&mutex_);
    return error_;
}

}  // namespace playout
