#pragma once
// The layer and mask information section: layer records and where each
// channel's compressed data sits in the file. Nothing is decoded here.

#include <QByteArray>
#include <QRect>
#include <QString>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace psd::detail {

struct FileContext {
    const unsigned char* data = nullptr;
    int64_t size = 0;
    bool large = false;  // PSB: wider length fields
    int bitsPerChannel = 8;
};

struct ChannelData {
    int id = 0;          // 0.. colour, -1 transparency, -2 user mask, -3 real user mask
    int64_t offset = 0;  // of the two-byte compression code
    int64_t length = 0;  // including the compression code
};

struct MaskInfo {
    bool present = false;
    QRect rect;  // document pixels
    uint8_t defaultColor = 0;
    bool disabled = false;
};

enum class SectionKind { None = 0, OpenFolder = 1, ClosedFolder = 2, Divider = 3 };

struct LayerRecord {
    QRect rect;  // document pixels
    std::vector<ChannelData> channels;
    QByteArray blendMode;
    uint8_t opacity = 255;
    uint8_t clipping = 0;
    uint8_t flags = 0;
    MaskInfo userMask;      // for channel -2
    MaskInfo realUserMask;  // for channel -3
    QString name;
    SectionKind section = SectionKind::None;

    const ChannelData* channel(int id) const
    {
        for (const ChannelData& c : channels)
            if (c.id == id) return &c;
        return nullptr;
    }
};

struct LayerInfo {
    std::vector<LayerRecord> records;  // file order: bottom layer first
    bool mergedAlpha = false;          // a negative layer count: the composite's first extra channel is transparency
    bool present = false;              // the file had a layer info block at all
};

// Parses the layer info structure (layer count, records, channel data) in [begin, end).
bool parseLayerInfo(const FileContext& file, int64_t begin, int64_t end, LayerInfo* out, std::string* error);

// Parses the whole layer and mask information section in [begin, end),
// including layers that 16-bit files keep in an "Lr16" block.
bool parseLayerAndMaskSection(const FileContext& file, int64_t begin, int64_t end, LayerInfo* out,
                              std::string* error);

// Calls visit(key, dataBegin, dataEnd) for each tagged block ("8BIM"/"8B64")
// in [begin, end); stops quietly at anything that is not a block header.
// Returns false only when a block's length runs past end.
bool forEachTaggedBlock(const FileContext& file, int64_t begin, int64_t end,
                        const std::function<void(const QByteArray& key, int64_t dataBegin, int64_t dataEnd)>& visit,
                        std::string* error);

}  // namespace psd::detail
