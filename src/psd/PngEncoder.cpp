#include "psd/PngEncoder.h"

#include <QSaveFile>

#include <zlib.h>

#include <cstring>
#include <vector>

namespace psd {
namespace {

// Compressed data goes out in IDAT chunks of this size as it is made.
constexpr size_t kChunkBytes = size_t(1) << 18;
constexpr uint8_t kFilterUp = 2;

void put32(std::vector<uint8_t>& out, uint32_t v)
{
    const uint8_t bytes[4] = {uint8_t(v >> 24), uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)};
    out.insert(out.end(), bytes, bytes + 4);
}

bool writeChunk(QIODevice& device, const char (&type)[5], const uint8_t* data, size_t size)
{
    std::vector<uint8_t> head;
    put32(head, uint32_t(size));
    head.insert(head.end(), type, type + 4);
    uLong crc = crc32(0, head.data() + 4, 4);
    if (size > 0) crc = crc32(crc, data, uInt(size));
    std::vector<uint8_t> tail;
    put32(tail, uint32_t(crc));
    return device.write(reinterpret_cast<const char*>(head.data()), qint64(head.size())) == qint64(head.size()) &&
           (size == 0 || device.write(reinterpret_cast<const char*>(data), qint64(size)) == qint64(size)) &&
           device.write(reinterpret_cast<const char*>(tail.data()), 4) == 4;
}

bool fail(std::string* error, const std::string& message)
{
    if (error) *error = message;
    return false;
}

struct Deflater {
    z_stream stream{};
    bool started = false;
    ~Deflater()
    {
        if (started) deflateEnd(&stream);
    }
};

}  // namespace

bool writePng(const QImage& source, QIODevice& device, std::string* error)
{
    if (source.isNull()) return fail(error, "no image to write");
    const QImage image = source.format() == QImage::Format_RGBA8888 ? source
                                                                    : source.convertToFormat(QImage::Format_RGBA8888);
    const int width = image.width(), height = image.height();
    const size_t rowBytes = size_t(width) * 4;

    static const uint8_t signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    if (device.write(reinterpret_cast<const char*>(signature), 8) != 8) return fail(error, device.errorString().toStdString());
    std::vector<uint8_t> header;
    put32(header, uint32_t(width));
    put32(header, uint32_t(height));
    const uint8_t rest[5] = {8, 6, 0, 0, 0};  // 8 bits, RGBA, deflate, adaptive filters, not interlaced
    header.insert(header.end(), rest, rest + 5);
    if (!writeChunk(device, "IHDR", header.data(), header.size())) return fail(error, device.errorString().toStdString());

    Deflater z;
    // Level 1 with "up" filtered rows: transparent areas and vertical
    // gradients become runs of zeros, which the fastest level packs well.
    if (deflateInit2(&z.stream, 1, Z_DEFLATED, 15, 8, Z_DEFAULT_STRATEGY) != Z_OK) return fail(error, "cannot start zlib");
    z.started = true;
    std::vector<uint8_t> row(rowBytes + 1);
    std::vector<uint8_t> chunk(kChunkBytes);
    z.stream.next_out = chunk.data();
    z.stream.avail_out = uInt(chunk.size());
    auto flushChunk = [&] {
        const size_t filled = chunk.size() - z.stream.avail_out;
        if (filled > 0 && !writeChunk(device, "IDAT", chunk.data(), filled)) return false;
        z.stream.next_out = chunk.data();
        z.stream.avail_out = uInt(chunk.size());
        return true;
    };
    for (int y = 0; y < height; ++y) {
        const uint8_t* current = image.constScanLine(y);
        row[0] = kFilterUp;
        if (y == 0) {
            std::memcpy(row.data() + 1, current, rowBytes);  // the row above the first counts as zeros
        } else {
            const uint8_t* above = image.constScanLine(y - 1);
            for (size_t i = 0; i < rowBytes; ++i) row[i + 1] = uint8_t(current[i] - above[i]);
        }
        z.stream.next_in = row.data();
        z.stream.avail_in = uInt(row.size());
        const int flush = y + 1 == height ? Z_FINISH : Z_NO_FLUSH;
        for (;;) {
            const int rc = deflate(&z.stream, flush);
            if (rc == Z_STREAM_ERROR) return fail(error, "zlib failed");
            if (z.stream.avail_out == 0) {
                if (!flushChunk()) return fail(error, device.errorString().toStdString());
                continue;
            }
            if (flush == Z_FINISH ? rc == Z_STREAM_END : z.stream.avail_in == 0) break;
        }
    }
    if (!flushChunk() || !writeChunk(device, "IEND", nullptr, 0)) return fail(error, device.errorString().toStdString());
    return true;
}

bool savePng(const QImage& image, const QString& path, std::string* error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return fail(error, file.errorString().toStdString());
    if (!writePng(image, file, error)) {
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) return fail(error, file.errorString().toStdString());
    return true;
}

}  // namespace psd
