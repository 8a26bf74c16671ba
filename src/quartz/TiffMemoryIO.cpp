#include "quartz/TiffMemoryIO.h"

#include <QLoggingCategory>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace quartz::tiff::detail {

// libtiff's warnings (unknown tags, odd layouts) are routine for files from
// other programs; shown on request: QT_LOGGING_RULES="velloran.quartz.tiff.debug=true".
Q_LOGGING_CATEGORY(lcTiff, "velloran.quartz.tiff", QtInfoMsg)

namespace {

QString formatMessage(const char* module, const char* format, va_list arguments)
{
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    const QString message = QString::fromLocal8Bit(text);
    return module && *module ? QStringLiteral("%1: %2").arg(QString::fromLocal8Bit(module), message) : message;
}

// Messages libtiff raises without a handle (none of ours should) reach the
// log instead of the terminal. Installed once, before the first handle.
void routeProcessWideMessages()
{
    static std::once_flag once;
    std::call_once(once, [] {
        TIFFSetErrorHandler([](const char* module, const char* format, va_list arguments) {
            qCWarning(lcTiff).noquote() << "libtiff:" << formatMessage(module, format, arguments);
        });
        TIFFSetWarningHandler([](const char* module, const char* format, va_list arguments) {
            qCDebug(lcTiff).noquote() << "libtiff:" << formatMessage(module, format, arguments);
        });
    });
}

}  // namespace

TiffHandle::~TiffHandle()
{
    if (tiff_) TIFFClose(tiff_);
}

bool TiffHandle::openForReading(QByteArrayView bytes)
{
    input_ = bytes;
    outputSize_ = bytes.size();
    return open("r");
}

bool TiffHandle::openForWriting(qsizetype expectedSize)
{
    writing_ = true;
    output_.reserve(expectedSize);
    return open("wl");
}

bool TiffHandle::open(const char* mode)
{
    routeProcessWideMessages();
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, tmsize_t(kMaxAllocationBytes));
    TIFFOpenOptionsSetErrorHandlerExtR(options, &TiffHandle::onError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, &TiffHandle::onWarning, this);
    tiff_ = TIFFClientOpenExt("memory", mode, this, &TiffHandle::read, &TiffHandle::write, &TiffHandle::seek,
                              &TiffHandle::close, &TiffHandle::size, &TiffHandle::map, &TiffHandle::unmap, options);
    TIFFOpenOptionsFree(options);
    return tiff_ != nullptr;
}

QByteArray TiffHandle::finish()
{
    if (!tiff_) return {};
    TIFFClose(tiff_);  // writes the directory through write()
    tiff_ = nullptr;
    output_.truncate(outputSize_);
    return std::move(output_);
}

tmsize_t TiffHandle::read(thandle_t handle, void* buffer, tmsize_t size)
{
    auto* self = static_cast<TiffHandle*>(handle);
    const char* data = self->writing_ ? self->output_.constData() : self->input_.data();
    const qint64 available = std::max<qint64>(0, self->outputSize_ - self->position_);
    const qint64 count = std::min<qint64>(available, size);
    if (count > 0) std::memcpy(buffer, data + self->position_, size_t(count));
    self->position_ += count;
    return tmsize_t(count);
}

tmsize_t TiffHandle::write(thandle_t handle, void* buffer, tmsize_t size)
{
    auto* self = static_cast<TiffHandle*>(handle);
    if (!self->writing_ || size < 0) return -1;
    const qint64 end = self->position_ + size;
    if (end > self->output_.size()) {
        // Grows geometrically, as libtiff appends strip after strip.
        if (end > self->output_.capacity()) self->output_.reserve(qsizetype(std::max(end, 2 * self->output_.capacity())));
        const qsizetype oldSize = self->output_.size();
        self->output_.resize(qsizetype(end));
        if (self->position_ > oldSize) std::memset(self->output_.data() + oldSize, 0, size_t(self->position_ - oldSize));
    }
    std::memcpy(self->output_.data() + self->position_, buffer, size_t(size));
    self->position_ = end;
    self->outputSize_ = std::max(self->outputSize_, end);
    return size;
}

toff_t TiffHandle::seek(thandle_t handle, toff_t offset, int whence)
{
    auto* self = static_cast<TiffHandle*>(handle);
    qint64 base = 0;
    if (whence == SEEK_CUR) base = self->position_;
    else if (whence == SEEK_END) base = self->outputSize_;
    else if (whence != SEEK_SET) return toff_t(-1);
    const qint64 target = base + qint64(offset);
    if (target < 0) return toff_t(-1);
    // Past the end is allowed; a later write fills the gap.
    self->position_ = target;
    return toff_t(target);
}

toff_t TiffHandle::size(thandle_t handle)
{
    return toff_t(static_cast<TiffHandle*>(handle)->outputSize_);
}

int TiffHandle::map(thandle_t handle, void** base, toff_t* size)
{
    auto* self = static_cast<TiffHandle*>(handle);
    if (self->writing_) return 0;
    // libtiff only reads through the mapping; the cast drops nothing it relies on.
    *base = const_cast<char*>(self->input_.data());
    *size = toff_t(self->input_.size());
    return 1;
}

int TiffHandle::onError(TIFF*, void* self, const char* module, const char* format, va_list arguments)
{
    auto* handle = static_cast<TiffHandle*>(self);
    const QString message = formatMessage(module, format, arguments);
    if (handle->error_.isEmpty()) handle->error_ = message;
    else qCDebug(lcTiff).noquote() << "libtiff, after" << handle->error_ << ":" << message;
    return 1;  // handled: libtiff calls no process-wide handler
}

int TiffHandle::onWarning(TIFF*, void*, const char* module, const char* format, va_list arguments)
{
    qCDebug(lcTiff).noquote() << "libtiff:" << formatMessage(module, format, arguments);
    return 1;
}

}  // namespace quartz::tiff::detail
