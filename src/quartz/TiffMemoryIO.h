#pragma once
// libtiff handles over memory. libtiff reports problems through callbacks;
// these send a handle's first error into its own message (the cause; the
// rest follow from it) and everything else to the "velloran.quartz.tiff"
// log at debug level, so nothing is printed unless asked for, and handles
// on other threads never mix their messages.

#include <QByteArray>
#include <QByteArrayView>
#include <QLoggingCategory>
#include <QString>

#include <tiffio.h>

namespace quartz::tiff::detail {

Q_DECLARE_LOGGING_CATEGORY(lcTiff)

// Decoded pixels and libtiff's own buffers stop here: a hostile header must
// not make us allocate gigabytes. The runtime's image reader has the same bound.
constexpr qint64 kMaxAllocationBytes = qint64(512) << 20;

class TiffHandle {
public:
    TiffHandle() = default;
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;
    ~TiffHandle();

    // Reads `bytes` in place; they must outlive the handle.
    bool openForReading(QByteArrayView bytes);
    // Writes into a buffer of its own, taken by finish().
    bool openForWriting(qsizetype expectedSize);
    // Closes a writing handle (libtiff writes the directory then) and gives the file.
    QByteArray finish();

    TIFF* tiff() const { return tiff_; }
    // What libtiff complained about, or `fallback` when it said nothing.
    QString error(const QString& fallback) const { return error_.isEmpty() ? fallback : error_; }

private:
    static tmsize_t read(thandle_t handle, void* buffer, tmsize_t size);
    static tmsize_t write(thandle_t handle, void* buffer, tmsize_t size);
    static toff_t seek(thandle_t handle, toff_t offset, int whence);
    static int close(thandle_t) { return 0; }
    static toff_t size(thandle_t handle);
    static int map(thandle_t handle, void** base, toff_t* size);
    static void unmap(thandle_t, void*, toff_t) {}
    static int onError(TIFF*, void* self, const char* module, const char* format, va_list arguments);
    static int onWarning(TIFF*, void* self, const char* module, const char* format, va_list arguments);
    bool open(const char* mode);

    TIFF* tiff_ = nullptr;
    QByteArrayView input_;
    QByteArray output_;
    bool writing_ = false;
    qint64 position_ = 0;
    qint64 outputSize_ = 0;  // the file's end; output_ may be larger
    QString error_;
};

}  // namespace quartz::tiff::detail
