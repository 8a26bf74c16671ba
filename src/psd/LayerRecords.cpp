#include "psd/LayerRecords.h"

#include "psd/ByteReader.h"
#include "psd/PsdDocument.h"

#include <QStringDecoder>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace psd::detail {
namespace {

constexpr int kMaxChannelsPerLayer = 56;
// Bounds, channel count, blend signature and key, four bytes of
// opacity/clipping/flags/filler and the extra-data length.
constexpr int64_t kMinRecordBytes = 16 + 2 + 4 + 4 + 4 + 4;

bool setError(std::string* error, const std::string& message)
{
    if (error) *error = message;
    return false;
}

std::string at(int64_t offset) { return " at offset " + std::to_string(offset); }

// PSB widens these blocks' length fields to eight bytes.
bool hasWideLength(const QByteArray& key)
{
    static const char* const keys[] = {"LMsk", "Lr16", "Lr32", "Layr", "Mt16", "Mt32", "Mtrn",
                                       "Alph", "FMsk", "lnk2", "FEid", "FXid", "PxSD"};
    for (const char* k : keys)
        if (key == k) return true;
    return false;
}

// ImageMagick 6 writes the blend key byte-reversed on little-endian hosts ("mron").
QByteArray normalisedBlendKey(QByteArray key)
{
    static const char* const known[] = {"pass", "norm", "diss", "dark", "mul ", "idiv", "lbrn", "dkCl", "lite", "scrn",
                                        "div ", "lddg", "lgCl", "over", "sLit", "hLit", "vLit", "lLit", "pLit", "hMix",
                                        "diff", "smud", "fsub", "fdiv", "hue ", "sat ", "colr", "lum "};
    auto isKnown = [&](const QByteArray& k) {
        for (const char* c : known)
            if (k == c) return true;
        return false;
    };
    if (isKnown(key)) return key;
    QByteArray reversed = key;
    std::reverse(reversed.begin(), reversed.end());
    return isKnown(reversed) ? reversed : key;
}

bool isBlockSignature(const unsigned char* p) { return std::memcmp(p, "8BIM", 4) == 0 || std::memcmp(p, "8B64", 4) == 0; }

// Validates a rectangle read as top, left, bottom, right.
bool readRect(ByteReader& r, QRect* rect, const std::string& what, std::string* error)
{
    const int64_t offset = r.pos();
    const int64_t top = r.i32(), left = r.i32(), bottom = r.i32(), right = r.i32();
    if (!r.ok()) return setError(error, what + " bounds are truncated" + at(offset));
    const int64_t w = right - left, h = bottom - top;
    if (w < 0 || h < 0) return setError(error, what + " has inverted bounds" + at(offset));
    if (w > kMaxDimension || h > kMaxDimension)
        return setError(error, what + " is " + std::to_string(w) + "x" + std::to_string(h) + " pixels, above the limit of " +
                                   std::to_string(kMaxDimension) + at(offset));
    *rect = QRect(int(left), int(top), int(w), int(h));
    return true;
}

QString decodePascalName(const unsigned char* p, int n)
{
    // Old writers use a legacy code page; anything that is not valid UTF-8 is read as Latin-1.
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QByteArrayView bytes(reinterpret_cast<const char*>(p), n);
    QString s = utf8(bytes);
    if (utf8.hasError()) s = QString::fromLatin1(bytes);
    return s;
}

bool parseMask(ByteReader& r, LayerRecord* layer, const std::string& what, std::string* error)
{
    const int64_t offset = r.pos();
    const uint32_t size = r.u32();
    if (!r.ok() || !r.has(size)) return setError(error, what + " mask data runs past its record" + at(offset));
    const int64_t end = r.pos() + size;
    if (size >= 18) {
        MaskInfo& m = layer->userMask;
        if (!readRect(r, &m.rect, what + " mask", error)) return false;
        m.defaultColor = r.u8();
        const uint8_t flags = r.u8();
        m.disabled = flags & 0x02;
        m.present = true;
        if (size >= 36) {
            if (flags & 0x10) {  // mask parameters follow
                const uint8_t params = r.u8();
                r.skip(((params & 1) ? 1 : 0) + ((params & 2) ? 8 : 0) + ((params & 4) ? 1 : 0) + ((params & 8) ? 8 : 0));
            }
            if (r.ok() && end - r.pos() >= 18) {
                MaskInfo& real = layer->realUserMask;
                const uint8_t realFlags = r.u8();
                real.defaultColor = r.u8();
                if (!readRect(r, &real.rect, what + " real mask", error)) return false;
                real.disabled = realFlags & 0x02;
                real.present = true;
            }
        }
    }
    return r.seek(end);
}

void readUnicodeName(ByteReader r, QString* name)
{
    const uint32_t count = r.u32();
    if (!r.ok() || !r.has(int64_t(count) * 2)) return;
    QString s;
    s.reserve(int(count));
    for (uint32_t i = 0; i < count; ++i) s.append(QChar(char16_t(r.u16())));
    while (s.endsWith(QChar(0))) s.chop(1);
    *name = s;
}

bool parseRecord(const FileContext& file, ByteReader& r, int index, LayerRecord* layer, std::string* error)
{
    const std::string what = "layer record " + std::to_string(index);
    const int64_t start = r.pos();
    if (!readRect(r, &layer->rect, what, error)) return false;
    const int channelCount = r.u16();
    if (channelCount > kMaxChannelsPerLayer)
        return setError(error, what + " has " + std::to_string(channelCount) + " channels, more than " +
                                   std::to_string(kMaxChannelsPerLayer) + at(start));
    if (!r.has(int64_t(channelCount) * (file.large ? 10 : 6)))
        return setError(error, what + " channel list is truncated" + at(r.pos()));
    layer->channels.resize(channelCount);
    for (ChannelData& c : layer->channels) {
        c.id = r.i16();
        const uint64_t length = r.length(file.large);
        if (length > uint64_t(file.size)) return setError(error, what + " channel " + std::to_string(c.id) +
                                                                     " claims more data than the file holds" + at(r.pos()));
        c.length = int64_t(length);
    }
    if (!r.expect("8BIM") && !r.expect("8B64"))
        return setError(error, what + " lacks its blend mode signature" + at(r.pos()));
    if (!r.has(12)) return setError(error, what + " is truncated" + at(r.pos()));
    layer->blendMode = normalisedBlendKey(QByteArray(reinterpret_cast<const char*>(r.data()), 4));
    r.skip(4);
    layer->opacity = r.u8();
    layer->clipping = r.u8();
    layer->flags = r.u8();
    r.skip(1);
    const uint32_t extraLength = r.u32();
    if (!r.ok() || !r.has(extraLength)) return setError(error, what + " extra data runs past the layer info" + at(r.pos()));
    const int64_t extraEnd = r.pos() + extraLength;

    ByteReader extra(file.data, r.pos(), extraEnd);
    if (!parseMask(extra, layer, what, error)) return false;
    const uint32_t blendingRanges = extra.u32();
    if (!extra.ok() || !extra.skip(blendingRanges))
        return setError(error, what + " blending ranges run past its record" + at(extra.pos()));
    const int nameLength = extra.u8();
    if (!extra.has(nameLength)) return setError(error, what + " name runs past its record" + at(extra.pos()));
    layer->name = decodePascalName(extra.data(), nameLength);
    // The name field, length byte included, is padded to a multiple of four.
    const int nameField = (1 + nameLength + 3) & ~3;
    extra.skip(std::min<int64_t>(nameField - 1, extra.remaining()));

    if (!forEachTaggedBlock(
            file, extra.pos(), extraEnd,
            [&](const QByteArray& key, int64_t begin, int64_t end) {
                ByteReader block(file.data, begin, end);
                if (key == "luni") {
                    readUnicodeName(block, &layer->name);
                } else if (key == "lsct" || key == "lsdk") {
                    const uint32_t kind = block.u32();
                    if (block.ok() && kind <= 3) layer->section = SectionKind(kind);
                }
            },
            error)) {
        if (error) *error = what + ": " + *error;
        return false;
    }
    return r.seek(extraEnd);
}

}  // namespace

bool forEachTaggedBlock(const FileContext& file, int64_t begin, int64_t end,
                        const std::function<void(const QByteArray&, int64_t, int64_t)>& visit, std::string* error)
{
    int64_t pos = begin;
    while (end - pos >= 12) {
        if (!isBlockSignature(file.data + pos)) {
            // Writers differ on padding blocks to two or four bytes; step over a little of it.
            int64_t aligned = pos;
            while (aligned < pos + 4 && end - aligned >= 12 && !isBlockSignature(file.data + aligned)) ++aligned;
            if (end - aligned < 12 || !isBlockSignature(file.data + aligned)) return true;
            pos = aligned;
        }
        ByteReader r(file.data, pos + 4, end);
        const QByteArray key(reinterpret_cast<const char*>(r.data()), 4);
        r.skip(4);
        const uint64_t length = r.length(file.large && hasWideLength(key));
        if (!r.ok() || length > uint64_t(r.remaining()))
            return setError(error, "block \"" + key.toStdString() + "\"" + at(pos) + " runs past its section");
        visit(key, r.pos(), r.pos() + int64_t(length));
        pos = r.pos() + int64_t(length);
    }
    return true;
}

bool parseLayerInfo(const FileContext& file, int64_t begin, int64_t end, LayerInfo* out, std::string* error)
{
    ByteReader r(file.data, begin, end);
    out->present = true;
    if (r.remaining() < 2) return true;
    const int16_t rawCount = r.i16();
    const int count = std::abs(int(rawCount));
    out->mergedAlpha = rawCount < 0;
    if (count > kMaxLayerCount)
        return setError(error, "layer count " + std::to_string(count) + " exceeds the limit of " +
                                   std::to_string(kMaxLayerCount) + at(begin));
    if (count * kMinRecordBytes > r.remaining())
        return setError(error, "layer info" + at(begin) + " claims " + std::to_string(count) + " layers but holds only " +
                                   std::to_string(r.remaining()) + " bytes");
    out->records.assign(count, LayerRecord{});
    for (int i = 0; i < count; ++i)
        if (!parseRecord(file, r, i, &out->records[i], error)) return false;

    // Channel image data follows the records, layer by layer, channel by channel.
    int64_t pos = r.pos();
    for (int i = 0; i < count; ++i) {
        for (ChannelData& c : out->records[i].channels) {
            if (c.length > end - pos)
                return setError(error, "layer record " + std::to_string(i) + " channel " + std::to_string(c.id) +
                                           " image data" + at(pos) + " runs past the end of the layer info (" +
                                           std::to_string(end) + ")");
            c.offset = pos;
            pos += c.length;
        }
    }
    return true;
}

bool parseLayerAndMaskSection(const FileContext& file, int64_t begin, int64_t end, LayerInfo* out, std::string* error)
{
    ByteReader r(file.data, begin, end);
    if (r.remaining() == 0) return true;
    const int64_t lengthOffset = r.pos();
    const uint64_t infoLength = r.length(file.large);
    if (!r.ok() || infoLength > uint64_t(r.remaining()))
        return setError(error, "layer info length" + at(lengthOffset) + " runs past the layer and mask section");
    const int64_t infoEnd = r.pos() + int64_t(infoLength);
    if (infoLength > 0 && !parseLayerInfo(file, r.pos(), infoEnd, out, error)) return false;
    r.seek(infoEnd);

    // Global layer mask info, then tagged blocks; deeper files keep their layers in one of those.
    const uint32_t globalMask = r.u32();
    if (!r.ok() || !r.skip(globalMask)) return true;
    bool ok = true;
    const bool found = forEachTaggedBlock(
        file, r.pos(), end,
        [&](const QByteArray& key, int64_t blockBegin, int64_t blockEnd) {
            if (!ok || !out->records.empty()) return;
            if (key == "Lr16" || key == "Lr32" || key == "Layr") ok = parseLayerInfo(file, blockBegin, blockEnd, out, error);
        },
        error);
    return ok && found;
}

}  // namespace psd::detail
