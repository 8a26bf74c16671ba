#pragma once
// Builds small Photoshop files byte by byte, so tests can reach cases no
// writer at hand produces (predicted ZIP, Lr16 blocks, masks with a default
// colour) and damage them on purpose.

#include <QByteArray>
#include <QRect>
#include <QString>

#include <zlib.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace psdtest {

enum Compression { Raw = 0, Rle = 1, Zip = 2, ZipPredicted = 3 };

struct Channel {
    int id = 0;
    std::vector<uint8_t> samples;  // width x height samples, big-endian pairs for 16 bits
};

struct Mask {
    QRect rect;
    uint8_t defaultColor = 0;
    uint8_t flags = 0;
};

struct Layer {
    QRect rect;
    QByteArray pascalName = "layer";
    QString unicodeName;  // written as "luni" when set
    uint8_t opacity = 255;
    uint8_t clipping = 0;
    uint8_t flags = 0;
    int section = -1;  // "lsct" kind when >= 0
    std::optional<Mask> mask;
    std::vector<Channel> channels;
};

struct Document {
    int version = 1;
    int width = 4;
    int height = 3;
    int depth = 8;
    int mode = 3;
    int channels = 3;
    Compression layerCompression = Rle;
    Compression compositeCompression = Raw;
    bool rleRuns = false;  // RLE with repeat packets, not only literal ones
    bool negativeLayerCount = false;
    bool layersInLr16 = false;  // as Photoshop stores 16-bit layers
    std::vector<Layer> layers;  // bottom first
    std::vector<std::vector<uint8_t>> composite;  // one plane per file channel
};

class Bytes {
public:
    QByteArray data;
    void u8(unsigned v) { data.append(char(v)); }
    void u16(unsigned v) { u8(v >> 8), u8(v); }
    void u32(uint32_t v) { u16(v >> 16), u16(v & 0xffff); }
    void u64(uint64_t v) { u32(uint32_t(v >> 32)), u32(uint32_t(v)); }
    void len(uint64_t v, bool wide) { wide ? u64(v) : u32(uint32_t(v)); }
    void raw(const QByteArray& b) { data.append(b); }
    void raw(const std::vector<uint8_t>& b) { data.append(reinterpret_cast<const char*>(b.data()), qsizetype(b.size())); }
};

// PackBits with literal packets only: valid, if not small.
inline std::vector<uint8_t> packBits(const uint8_t* row, int64_t n)
{
    std::vector<uint8_t> out;
    for (int64_t i = 0; i < n; i += 128) {
        const int64_t k = std::min<int64_t>(128, n - i);
        out.push_back(uint8_t(k - 1));
        out.insert(out.end(), row + i, row + i + k);
    }
    return out;
}

// PackBits as image editors write it: runs of three or more equal samples
// as repeat packets, the rest as literal packets.
inline std::vector<uint8_t> packBitsWithRuns(const uint8_t* row, int64_t n)
{
    std::vector<uint8_t> out;
    auto runAt = [&](int64_t i) {
        int64_t run = 1;
        while (i + run < n && run < 128 && row[i + run] == row[i]) ++run;
        return run;
    };
    int64_t i = 0;
    while (i < n) {
        const int64_t run = runAt(i);
        if (run >= 3) {
            out.push_back(uint8_t(257 - run));
            out.push_back(row[i]);
            i += run;
            continue;
        }
        const int64_t start = i;
        while (i < n && i - start < 128 && runAt(i) < 3) ++i;
        out.push_back(uint8_t(i - start - 1));
        out.insert(out.end(), row + start, row + i);
    }
    return out;
}

inline std::vector<uint8_t> deflate(const std::vector<uint8_t>& in)
{
    uLongf size = compressBound(uLong(in.size()));
    std::vector<uint8_t> out(size);
    compress(out.data(), &size, in.data(), uLong(in.size()));
    out.resize(size);
    return out;
}

inline std::vector<uint8_t> predict(std::vector<uint8_t> plane, int64_t rowBytes, int depth)
{
    for (int64_t row = 0; row + rowBytes <= int64_t(plane.size()); row += rowBytes) {
        if (depth == 8) {
            for (int64_t x = rowBytes - 1; x > 0; --x) plane[size_t(row + x)] -= plane[size_t(row + x - 1)];
        } else {
            for (int64_t x = rowBytes - 2; x > 0; x -= 2) {
                const unsigned cur = (plane[size_t(row + x)] << 8) | plane[size_t(row + x + 1)];
                const unsigned prev = (plane[size_t(row + x - 2)] << 8) | plane[size_t(row + x - 1)];
                const unsigned d = (cur - prev) & 0xffff;
                plane[size_t(row + x)] = uint8_t(d >> 8);
                plane[size_t(row + x + 1)] = uint8_t(d);
            }
        }
    }
    return plane;
}

// One plane's compressed bytes: RLE row counts first, then the rows.
inline std::vector<uint8_t> encodePlane(const std::vector<uint8_t>& samples, int64_t rowBytes, int rows,
                                        Compression c, int depth, bool large, bool rleRuns = false)
{
    switch (c) {
    case Raw: return samples;
    case Rle: {
        std::vector<uint8_t> counts, body;
        for (int y = 0; y < rows; ++y) {
            const auto packed = rleRuns ? packBitsWithRuns(samples.data() + y * rowBytes, rowBytes)
                                        : packBits(samples.data() + y * rowBytes, rowBytes);
            const size_t n = packed.size();
            if (large) counts.insert(counts.end(), {uint8_t(n >> 24), uint8_t(n >> 16), uint8_t(n >> 8), uint8_t(n)});
            else counts.insert(counts.end(), {uint8_t(n >> 8), uint8_t(n)});
            body.insert(body.end(), packed.begin(), packed.end());
        }
        counts.insert(counts.end(), body.begin(), body.end());
        return counts;
    }
    case Zip: return deflate(samples);
    case ZipPredicted: return deflate(predict(samples, rowBytes, depth));
    }
    return {};
}

inline QByteArray layerInfo(const Document& d)
{
    const bool large = d.version == 2;
    const int bps = d.depth / 8;
    Bytes b;
    b.u16(uint16_t(d.negativeLayerCount ? -int(d.layers.size()) : int(d.layers.size())));
    std::vector<std::vector<std::vector<uint8_t>>> encoded;
    for (const Layer& l : d.layers) {
        std::vector<std::vector<uint8_t>> channels;
        for (const Channel& c : l.channels) {
            const QRect r = (c.id <= -2 && l.mask) ? l.mask->rect : l.rect;
            std::vector<uint8_t> e = {0, uint8_t(d.layerCompression)};
            const auto body = encodePlane(c.samples, int64_t(r.width()) * bps, r.height(), d.layerCompression, d.depth, large, d.rleRuns);
            e.insert(e.end(), body.begin(), body.end());
            channels.push_back(e);
        }
        encoded.push_back(channels);

        b.u32(uint32_t(l.rect.top())), b.u32(uint32_t(l.rect.left()));
        b.u32(uint32_t(l.rect.top() + l.rect.height())), b.u32(uint32_t(l.rect.left() + l.rect.width()));
        b.u16(uint16_t(l.channels.size()));
        for (size_t i = 0; i < l.channels.size(); ++i) {
            b.u16(uint16_t(l.channels[i].id));
            b.len(channels[i].size(), large);
        }
        b.raw(QByteArray("8BIMnorm"));
        b.u8(l.opacity), b.u8(l.clipping), b.u8(l.flags), b.u8(0);
        Bytes extra;
        if (l.mask) {
            extra.u32(20);
            const QRect& m = l.mask->rect;
            extra.u32(uint32_t(m.top())), extra.u32(uint32_t(m.left()));
            extra.u32(uint32_t(m.top() + m.height())), extra.u32(uint32_t(m.left() + m.width()));
            extra.u8(l.mask->defaultColor), extra.u8(l.mask->flags), extra.u16(0);
        } else {
            extra.u32(0);
        }
        extra.u32(0);  // blending ranges
        extra.u8(unsigned(l.pascalName.size()));
        extra.raw(l.pascalName);
        while (extra.data.size() % 4) extra.u8(0);
        if (!l.unicodeName.isEmpty()) {
            extra.raw(QByteArray("8BIMluni"));
            extra.u32(uint32_t(4 + 2 * l.unicodeName.size() + (l.unicodeName.size() % 2 ? 2 : 0)));
            extra.u32(uint32_t(l.unicodeName.size()));
            for (QChar ch : l.unicodeName) extra.u16(ch.unicode());
            if (l.unicodeName.size() % 2) extra.u16(0);
        }
        if (l.section >= 0) {
            extra.raw(QByteArray("8BIMlsct"));
            extra.u32(4);
            extra.u32(uint32_t(l.section));
        }
        b.u32(uint32_t(extra.data.size()));
        b.raw(extra.data);
    }
    for (const auto& layer : encoded)
        for (const auto& c : layer) b.raw(c);
    if (b.data.size() % 2) b.u8(0);
    return b.data;
}

inline QByteArray build(const Document& d)
{
    const bool large = d.version == 2;
    Bytes b;
    b.raw(QByteArray("8BPS"));
    b.u16(unsigned(d.version));
    b.raw(QByteArray(6, '\0'));
    b.u16(unsigned(d.channels));
    b.u32(uint32_t(d.height)), b.u32(uint32_t(d.width));
    b.u16(unsigned(d.depth)), b.u16(unsigned(d.mode));
    b.u32(0);  // colour mode data
    b.u32(0);  // image resources

    Bytes section;
    const QByteArray info = d.layers.empty() ? QByteArray() : layerInfo(d);
    if (d.layersInLr16) {
        section.len(0, large);
        section.u32(0);  // global mask info
        section.raw(QByteArray("8BIMLr16"));
        section.len(uint64_t(info.size()), large);
        section.raw(info);
    } else {
        section.len(uint64_t(info.size()), large);
        section.raw(info);
        section.u32(0);
    }
    b.len(uint64_t(section.data.size()), large);
    b.raw(section.data);

    b.u16(d.compositeCompression);
    const int64_t rowBytes = int64_t(d.width) * (d.depth / 8);
    if (d.compositeCompression == Rle) {
        std::vector<uint8_t> counts, body;
        for (const auto& plane : d.composite) {
            const auto e = encodePlane(plane, rowBytes, d.height, Rle, d.depth, large, d.rleRuns);
            const size_t table = size_t(d.height) * (large ? 4 : 2);
            counts.insert(counts.end(), e.begin(), e.begin() + long(table));
            body.insert(body.end(), e.begin() + long(table), e.end());
        }
        b.raw(counts);
        b.raw(body);
    } else if (d.compositeCompression == Raw) {
        for (const auto& plane : d.composite) b.raw(plane);
    } else {
        std::vector<uint8_t> all;
        for (const auto& plane : d.composite) all.insert(all.end(), plane.begin(), plane.end());
        b.raw(encodePlane(all, rowBytes, int(d.composite.size()) * d.height, d.compositeCompression, d.depth, large));
    }
    return b.data;
}

// A plane filled by f(x, y).
template <typename F>
std::vector<uint8_t> plane(int width, int height, F f)
{
    std::vector<uint8_t> p;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) p.push_back(uint8_t(f(x, y)));
    return p;
}

// An RGB document with one 3x2 layer with transparency and a flat composite.
inline Document smallRgbDocument()
{
    Document d;
    Layer l;
    l.rect = QRect(1, 1, 3, 2);
    l.pascalName = "Small";
    for (int id : {0, 1, 2, -1}) l.channels.push_back({id, plane(3, 2, [&](int x, int y) { return 40 * (id + 2) + x * 10 + y; })});
    d.layers.push_back(l);
    for (int c = 0; c < 3; ++c) d.composite.push_back(plane(4, 3, [&](int x, int y) { return c * 60 + x + y * 4; }));
    return d;
}

}  // namespace psdtest
