#include "psd/ChannelRows.h"

#include "psd/ByteReader.h"

#include <zlib.h>

#include <cstring>

namespace psd::detail {
namespace {

// Deflate cannot expand data by more than this factor; a plane claiming more
// samples than its compressed bytes could hold is corrupt.
constexpr int64_t kMaxDeflateRatio = 1032;

bool setError(std::string* error, const std::string& message)
{
    if (error) *error = message;
    return false;
}

}  // namespace

struct ChannelRowReader::Zip {
    z_stream stream{};
    bool initialised = false;
    ~Zip()
    {
        if (initialised) inflateEnd(&stream);
    }
};

bool unpackBits(const uint8_t* src, int64_t srcSize, uint8_t* dst, int64_t dstSize)
{
    int64_t in = 0, out = 0;
    while (out < dstSize) {
        if (in >= srcSize) return false;
        const int8_t header = int8_t(src[in++]);
        if (header >= 0) {
            const int64_t n = int64_t(header) + 1;
            if (in + n > srcSize) return false;
            std::memcpy(dst + out, src + in, size_t(std::min(n, dstSize - out)));
            in += n;
            out += n;
        } else if (header != -128) {
            const int64_t n = 1 - int64_t(header);
            if (in >= srcSize) return false;
            std::memset(dst + out, src[in++], size_t(std::min(n, dstSize - out)));
            out += n;
        }
    }
    return true;  // a last packet that overshoots the row is clipped, as other readers do
}

bool layerChannelSource(const FileContext& file, const ChannelData& channel, int height, PlaneSource* source,
                        std::string* error)
{
    ByteReader r(file.data, channel.offset, channel.offset + channel.length);
    const uint16_t code = r.u16();
    if (!r.ok()) return setError(error, "channel " + std::to_string(channel.id) + " has no compression code at offset " +
                                            std::to_string(channel.offset));
    if (code > 3)
        return setError(error, "channel " + std::to_string(channel.id) + " uses unknown compression " + std::to_string(code));
    source->compression = Compression(code);
    source->rowCounts = r.pos();
    source->dataBegin = r.pos();
    source->dataEnd = r.end();
    if (source->compression == Compression::Rle) {
        const int64_t table = int64_t(height) * (file.large ? 4 : 2);
        if (table > r.remaining())
            return setError(error, "channel " + std::to_string(channel.id) + " RLE row counts run past its data at offset " +
                                       std::to_string(r.pos()));
        source->dataBegin += table;
    }
    return true;
}

ChannelRowReader::ChannelRowReader() = default;
ChannelRowReader::~ChannelRowReader() = default;

bool ChannelRowReader::fail(std::string* error, const std::string& message) { return setError(error, what_ + " " + message); }

namespace {

// Everything that can be known about a plane without decoding it: its data
// lies in the file and can hold width x height samples. With `rleOffsets`
// the RLE rows' positions are recorded on the way (height + 1 entries).
bool validatePlane(const FileContext& file, const PlaneSource& source, int width, int height, const std::string& what,
                   std::vector<int64_t>* rleOffsets, std::string* error)
{
    auto fail = [&](const std::string& message) { return setError(error, what + " " + message); };
    const int64_t rowBytes = int64_t(width) * (file.bitsPerChannel / 8);
    const int64_t available = source.dataEnd - source.dataBegin;
    if (source.dataBegin < 0 || source.dataEnd > file.size || available < 0) return fail("data lies outside the file");

    switch (source.compression) {
    case Compression::Raw:
        if (rowBytes * height > available)
            return fail("needs " + std::to_string(rowBytes * height) + " bytes of raw data at offset " +
                        std::to_string(source.dataBegin) + " but has " + std::to_string(available));
        return true;
    case Compression::Rle: {
        const int countSize = file.large ? 4 : 2;
        ByteReader counts(file.data, source.rowCounts, file.size);
        if (!counts.has(int64_t(height) * countSize))
            return fail("RLE row counts at offset " + std::to_string(source.rowCounts) + " run past the file");
        // Each PackBits packet of two bytes gives at most 128 samples.
        const int64_t minRow = rowBytes > 0 ? 2 * ((rowBytes + 127) / 128) : 0;
        if (rleOffsets) rleOffsets->resize(size_t(height) + 1);
        int64_t pos = source.dataBegin;
        for (int y = 0; y < height; ++y) {
            const int64_t n = file.large ? int64_t(counts.u32()) : int64_t(counts.u16());
            if (n < minRow)
                return fail("RLE row " + std::to_string(y) + " has " + std::to_string(n) + " bytes, too few for a row of " +
                            std::to_string(rowBytes));
            if (rleOffsets) (*rleOffsets)[size_t(y)] = pos;
            pos += n;
            if (pos > source.dataEnd)
                return fail("RLE row " + std::to_string(y) + " at offset " + std::to_string(pos - n) +
                            " runs past the end of its data (" + std::to_string(source.dataEnd) + ")");
        }
        if (rleOffsets) (*rleOffsets)[size_t(height)] = pos;
        return true;
    }
    case Compression::Zip:
    case Compression::ZipPredicted: {
        const int64_t total = rowBytes * (int64_t(height) + source.skipRows);
        if (total > available * kMaxDeflateRatio + 64)
            return fail("claims " + std::to_string(total) + " bytes from only " + std::to_string(available) +
                        " bytes of ZIP data at offset " + std::to_string(source.dataBegin));
        return true;
    }
    }
    return fail("uses an unknown compression");
}

}  // namespace

bool ChannelRowReader::check(const FileContext& file, const PlaneSource& source, int width, int height,
                             const std::string& what, std::string* error)
{
    return validatePlane(file, source, width, height, what, nullptr, error);
}

bool ChannelRowReader::open(const FileContext& file, const PlaneSource& source, int width, int height,
                            const std::string& what, std::string* error)
{
    file_ = &file;
    source_ = source;
    what_ = what;
    width_ = width;
    height_ = height;
    const int bytesPerSample = file.bitsPerChannel / 8;
    rowBytes_ = int64_t(width) * bytesPerSample;
    if (!validatePlane(file, source, width, height, what, &rleOffsets_, error)) return false;

    switch (source.compression) {
    case Compression::Raw:
        break;
    case Compression::Rle:
        bytes_.resize(size_t(rowBytes_));
        break;
    case Compression::Zip:
    case Compression::ZipPredicted: {
        const int64_t available = source.dataEnd - source.dataBegin;
        zip_ = std::make_unique<Zip>();
        zip_->stream.next_in = const_cast<Bytef*>(file.data + source.dataBegin);
        zip_->stream.avail_in = uInt(std::min<int64_t>(available, 0x7fffffff));
        if (inflateInit(&zip_->stream) != Z_OK) return fail(error, "cannot start ZIP decompression");
        zip_->initialised = true;
        bytes_.resize(size_t(rowBytes_));
        for (int i = 0; i < source.skipRows; ++i)
            if (!inflateRow(error)) return false;
        break;
    }
    }
    if (bytesPerSample != 1) samples_.resize(size_t(width));
    return true;
}

bool ChannelRowReader::inflateRow(std::string* error)
{
    z_stream& s = zip_->stream;
    s.next_out = bytes_.data();
    s.avail_out = uInt(rowBytes_);
    while (s.avail_out > 0) {
        const int rc = inflate(&s, Z_SYNC_FLUSH);
        if (rc == Z_STREAM_END && s.avail_out > 0) return fail(error, "ZIP data ends before the plane is complete");
        if (rc != Z_OK && rc != Z_STREAM_END) return fail(error, std::string("ZIP data is corrupt (") + (s.msg ? s.msg : "zlib error") + ")");
        if (rc == Z_OK && s.avail_in == 0 && s.avail_out > 0) return fail(error, "ZIP data ends before the plane is complete");
    }
    if (source_.compression == Compression::ZipPredicted) {
        // Each sample was stored as the difference to its left neighbour.
        if (file_->bitsPerChannel == 8) {
            for (int64_t x = 1; x < rowBytes_; ++x) bytes_[size_t(x)] = uint8_t(bytes_[size_t(x)] + bytes_[size_t(x - 1)]);
        } else {
            uint16_t prev = 0;
            for (int64_t x = 0; x + 1 < rowBytes_; x += 2) {
                prev = uint16_t(prev + ((bytes_[size_t(x)] << 8) | bytes_[size_t(x + 1)]));
                bytes_[size_t(x)] = uint8_t(prev >> 8);
                bytes_[size_t(x + 1)] = uint8_t(prev);
            }
        }
    }
    return true;
}

const uint8_t* ChannelRowReader::toEightBit(const uint8_t* bytes)
{
    if (file_->bitsPerChannel == 8) return bytes;
    for (int x = 0; x < width_; ++x) {
        const uint32_t v = (uint32_t(bytes[2 * x]) << 8) | bytes[2 * x + 1];
        samples_[size_t(x)] = uint8_t((v * 255 + 32767) / 65535);
    }
    return samples_.data();
}

const uint8_t* ChannelRowReader::row(int y, std::string* error)
{
    if (y < 0 || y >= height_) {
        fail(error, "row " + std::to_string(y) + " is outside the plane");
        return nullptr;
    }
    switch (source_.compression) {
    case Compression::Raw:
        return toEightBit(file_->data + source_.dataBegin + int64_t(y) * rowBytes_);
    case Compression::Rle: {
        const int64_t begin = rleOffsets_[size_t(y)], end = rleOffsets_[size_t(y) + 1];
        uint8_t* target = bytes_.data();
        if (!unpackBits(file_->data + begin, end - begin, target, rowBytes_)) {
            fail(error, "RLE row " + std::to_string(y) + " at offset " + std::to_string(begin) + " ends before the row is full");
            return nullptr;
        }
        return toEightBit(target);
    }
    case Compression::Zip:
    case Compression::ZipPredicted:
        if (y < nextZipRow_) {
            fail(error, "rows were read out of order");
            return nullptr;
        }
        while (nextZipRow_ <= y) {
            if (!inflateRow(error)) return nullptr;
            ++nextZipRow_;
        }
        return toEightBit(bytes_.data());
    }
    return nullptr;
}

}  // namespace psd::detail
