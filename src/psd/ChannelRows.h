#pragma once
// Row-by-row decoding of one channel plane (raw, PackBits RLE, ZIP with or
// without prediction) into 8-bit samples. Rows are decoded on demand so that
// a layer is assembled without planar copies of its channels.

#include "psd/LayerRecords.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace psd::detail {

enum class Compression { Raw = 0, Rle = 1, Zip = 2, ZipPredicted = 3 };

struct PlaneSource {
    Compression compression = Compression::Raw;
    int64_t dataBegin = 0;  // first sample byte (after the row counts for RLE)
    int64_t dataEnd = 0;    // the plane's data lies in [dataBegin, dataEnd)
    int64_t rowCounts = 0;  // RLE: offset of this plane's row byte counts
    int skipRows = 0;       // ZIP: rows of earlier planes in the same stream
};

// Reads the compression code of a layer channel and locates its data.
bool layerChannelSource(const FileContext& file, const ChannelData& channel, int height, PlaneSource* source,
                        std::string* error);

// Unpacks PackBits into exactly dstSize bytes; false when the source ends first.
bool unpackBits(const uint8_t* src, int64_t srcSize, uint8_t* dst, int64_t dstSize);

class ChannelRowReader {
public:
    ChannelRowReader();
    ~ChannelRowReader();
    ChannelRowReader(const ChannelRowReader&) = delete;
    ChannelRowReader& operator=(const ChannelRowReader&) = delete;

    // Checks that the plane's data lies in the file and can hold width x
    // height samples, allocating nothing. `what` names the plane in errors.
    static bool check(const FileContext& file, const PlaneSource& source, int width, int height,
                      const std::string& what, std::string* error);

    // Checks the plane (as check() does) before anything of its size is
    // allocated, then gets ready to give its rows.
    bool open(const FileContext& file, const PlaneSource& source, int width, int height, const std::string& what,
              std::string* error);

    // The 8-bit samples of row y, or null with an error. Raw and RLE rows
    // come in any order; ZIP rows must be asked for in increasing order
    // (skipped rows are decoded anyway).
    const uint8_t* row(int y, std::string* error);

private:
    bool fail(std::string* error, const std::string& message);
    bool inflateRow(std::string* error);
    const uint8_t* toEightBit(const uint8_t* bytes);

    struct Zip;
    const FileContext* file_ = nullptr;
    PlaneSource source_;
    std::string what_;
    int width_ = 0;
    int height_ = 0;
    int64_t rowBytes_ = 0;
    std::vector<int64_t> rleOffsets_;  // height + 1 entries
    std::vector<uint8_t> bytes_;       // one row as stored (after unpacking)
    std::vector<uint8_t> samples_;     // one row in 8 bits
    std::unique_ptr<Zip> zip_;
    int nextZipRow_ = 0;
};

}  // namespace psd::detail
