#include "psd/PsdDocument.h"

#include "psd/ByteReader.h"
#include "psd/ChannelRows.h"
#include "psd/ImageAssembly.h"
#include "psd/LayerRecords.h"

#include <QFile>

#include <memory>

namespace psd {

using namespace detail;

QString colorModeName(int mode)
{
    switch (ColorMode(mode)) {
    case ColorMode::Bitmap: return QStringLiteral("Bitmap");
    case ColorMode::Grayscale: return QStringLiteral("Grayscale");
    case ColorMode::Indexed: return QStringLiteral("Indexed");
    case ColorMode::RGB: return QStringLiteral("RGB");
    case ColorMode::CMYK: return QStringLiteral("CMYK");
    case ColorMode::Multichannel: return QStringLiteral("Multichannel");
    case ColorMode::Duotone: return QStringLiteral("Duotone");
    case ColorMode::Lab: return QStringLiteral("Lab");
    }
    return QStringLiteral("mode %1").arg(mode);
}

namespace {

constexpr int kMaxFileChannels = 56;

struct Failure {
    std::string* error;
    std::optional<Document> operator()(const std::string& message) const
    {
        if (error) *error = message;
        return std::nullopt;
    }
};

std::string describe(int index, const LayerRecord& record)
{
    return "layer record " + std::to_string(index) + " (\"" + record.name.toStdString() + "\")";
}

// Decodes one layer record's pixels into a straight RGBA image.
bool decodeLayerPixels(const FileContext& file, int colorChannels, int index, const LayerRecord& record, QImage* image,
                       std::string* error)
{
    const int w = record.rect.width(), h = record.rect.height();
    if (w == 0 || h == 0) return true;
    const std::string who = describe(index, record);
    std::vector<std::unique_ptr<ChannelRowReader>> readers;
    auto open = [&](int id, int width, int height) -> ChannelRowReader* {
        const ChannelData* channel = record.channel(id);
        if (!channel) return nullptr;
        PlaneSource source;
        if (!layerChannelSource(file, *channel, height, &source, error)) {
            *error = who + " " + *error;
            return nullptr;
        }
        auto reader = std::make_unique<ChannelRowReader>();
        if (!reader->open(file, source, width, height, who + " channel " + std::to_string(id), error)) return nullptr;
        readers.push_back(std::move(reader));
        return readers.back().get();
    };

    AssemblyInput in;
    in.width = w;
    in.height = h;
    in.origin = record.rect.topLeft();
    in.colorCount = colorChannels;
    for (int c = 0; c < colorChannels; ++c) {
        if (!record.channel(c)) {
            *error = who + " lacks colour channel " + std::to_string(c);
            return false;
        }
        if (!(in.color[c] = open(c, w, h))) return false;
    }
    if (record.channel(-1) && !(in.alpha = open(-1, w, h))) return false;
    const std::pair<int, const MaskInfo*> masks[] = {{-2, &record.userMask}, {-3, &record.realUserMask}};
    for (const auto& [id, info] : masks) {
        if (!info->present || info->disabled || !record.channel(id)) continue;
        MaskPlane plane;
        plane.rect = info->rect;
        plane.defaultColor = info->defaultColor;
        if (!(plane.reader = open(id, info->rect.width(), info->rect.height()))) return false;
        in.masks.push_back(plane);
    }
    if (!assembleImage(in, image, error)) {
        if (error->rfind("layer record", 0) != 0) *error = who + ": " + *error;
        return false;
    }
    return true;
}

// The merged image: planar channels sharing one compression code.
bool decodeComposite(const FileContext& file, int64_t begin, int width, int height, int fileChannels,
                     int colorChannels, bool withAlpha, QImage* image, std::string* error)
{
    ByteReader r(file.data, begin, file.size);
    const uint16_t code = r.u16();
    if (!r.ok()) {
        *error = "the file ends before the image data section at offset " + std::to_string(begin);
        return false;
    }
    if (code > 3) {
        *error = "image data uses unknown compression " + std::to_string(code);
        return false;
    }
    const int used = colorChannels + (withAlpha ? 1 : 0);
    const int64_t rowBytes = int64_t(width) * (file.bitsPerChannel / 8);
    const int countSize = file.large ? 4 : 2;
    const int64_t tableEnd = r.pos() + int64_t(fileChannels) * height * countSize;
    if (Compression(code) == Compression::Rle && tableEnd > file.size) {
        *error = "image data RLE row counts run past the end of the file";
        return false;
    }
    std::vector<std::unique_ptr<ChannelRowReader>> readers;
    int64_t rleData = tableEnd;
    for (int c = 0; c < used; ++c) {
        PlaneSource source;
        source.compression = Compression(code);
        source.dataEnd = file.size;
        switch (source.compression) {
        case Compression::Raw: source.dataBegin = r.pos() + c * rowBytes * height; break;
        case Compression::Rle: {
            source.rowCounts = r.pos() + int64_t(c) * height * countSize;
            source.dataBegin = rleData;
            ByteReader counts(file.data, source.rowCounts, tableEnd);
            for (int y = 0; y < height; ++y) rleData += file.large ? int64_t(counts.u32()) : int64_t(counts.u16());
            break;
        }
        case Compression::Zip:
        case Compression::ZipPredicted:
            source.dataBegin = r.pos();
            source.skipRows = c * height;
            break;
        }
        if (source.dataBegin > file.size) {
            *error = "image data channel " + std::to_string(c) + " starts past the end of the file";
            return false;
        }
        readers.push_back(std::make_unique<ChannelRowReader>());
        if (!readers.back()->open(file, source, width, height, "image data channel " + std::to_string(c), error))
            return false;
    }
    AssemblyInput in;
    in.width = width;
    in.height = height;
    in.colorCount = colorChannels;
    for (int c = 0; c < colorChannels; ++c) in.color[c] = readers[size_t(c)].get();
    if (withAlpha) in.alpha = readers[size_t(colorChannels)].get();
    return assembleImage(in, image, error);
}

// Records come bottom first, folders closing after their contents; walking
// them top first opens a group at its folder record and closes it at the divider.
std::vector<Layer> describeLayers(const std::vector<LayerRecord>& records)
{
    struct Group {
        QString name;
        bool visible;
    };
    std::vector<Group> groups;
    std::vector<Layer> layers;
    for (auto it = records.rbegin(); it != records.rend(); ++it) {
        const LayerRecord& record = *it;
        const bool visible = !(record.flags & 0x02);
        if (record.section == SectionKind::OpenFolder || record.section == SectionKind::ClosedFolder) {
            groups.push_back({record.name, visible});
            continue;
        }
        if (record.section == SectionKind::Divider) {
            if (!groups.empty()) groups.pop_back();
            continue;
        }
        Layer layer;
        layer.name = record.name;
        layer.bounds = record.rect;
        layer.opacity = record.opacity / 255.0;
        layer.visible = visible;
        layer.clipping = record.clipping != 0;
        layer.blendMode = record.blendMode;
        for (const Group& g : groups) {
            layer.groupPath.append(g.name);
            if (!g.visible) layer.hiddenByGroup = true;
        }
        layers.push_back(std::move(layer));
    }
    return layers;
}

}  // namespace

std::optional<Document> decode(QByteArrayView bytes, std::string* error, const DecodeOptions& options)
{
    const Failure failure{error};
    std::string message;
    FileContext file;
    file.data = reinterpret_cast<const unsigned char*>(bytes.data());
    file.size = bytes.size();

    ByteReader r(file.data, 0, file.size);
    if (!r.expect("8BPS")) return failure("not a Photoshop file (no \"8BPS\" signature)");
    const uint16_t version = r.u16();
    r.skip(6);
    const int channels = r.u16();
    const uint32_t height = r.u32();
    const uint32_t width = r.u32();
    const int depth = r.u16();
    const int mode = r.u16();
    if (!r.ok()) return failure("the header is truncated (" + std::to_string(file.size) + " bytes, 26 needed)");
    if (version != 1 && version != 2) return failure("unsupported file version " + std::to_string(version));
    file.large = version == 2;
    if (ColorMode(mode) != ColorMode::RGB && ColorMode(mode) != ColorMode::Grayscale)
        return failure("unsupported colour mode " + colorModeName(mode).toStdString());
    if (depth != 8 && depth != 16)
        return failure("unsupported bit depth " + std::to_string(depth) + " (8 and 16 bits per channel are supported)");
    file.bitsPerChannel = depth;
    if (width == 0 || height == 0 || width > uint32_t(kMaxDimension) || height > uint32_t(kMaxDimension))
        return failure("document size " + std::to_string(width) + "x" + std::to_string(height) +
                       " is outside 1.." + std::to_string(kMaxDimension));
    const int colorChannels = ColorMode(mode) == ColorMode::RGB ? 3 : 1;
    if (channels < colorChannels || channels > kMaxFileChannels)
        return failure("channel count " + std::to_string(channels) + " does not fit colour mode " +
                       colorModeName(mode).toStdString());

    for (const char* section : {"colour mode data", "image resources"}) {
        const int64_t offset = r.pos();
        const uint32_t length = r.u32();
        if (!r.ok() || !r.skip(length))
            return failure(std::string(section) + " at offset " + std::to_string(offset) + " runs past the end of the file");
    }
    const int64_t layerSectionOffset = r.pos();
    const uint64_t layerSectionLength = r.length(file.large);
    if (!r.ok() || layerSectionLength > uint64_t(r.remaining()))
        return failure("layer and mask section at offset " + std::to_string(layerSectionOffset) +
                       " runs past the end of the file");
    const int64_t imageDataOffset = r.pos() + int64_t(layerSectionLength);
    LayerInfo info;
    if (!parseLayerAndMaskSection(file, r.pos(), imageDataOffset, &info, &message)) return failure(message);

    Document doc;
    doc.width = int(width);
    doc.height = int(height);
    doc.bitsPerChannel = depth;
    doc.colorMode = ColorMode(mode);
    doc.largeFormat = file.large;

    doc.layers = describeLayers(info.records);
    if (options.layerPixels) {
        // describeLayers walks the records top first and drops folder records; pair the images the same way.
        size_t next = 0;
        for (size_t i = info.records.size(); i-- > 0;) {
            const LayerRecord& record = info.records[i];
            if (record.section != SectionKind::None) continue;
            if (!decodeLayerPixels(file, colorChannels, int(i), record, &doc.layers[next++].image, &message))
                return failure(message);
        }
    }

    if (options.composite) {
        // An extra channel is the merged transparency when the layer count says
        // so, or in a file without layers (as flattening writers produce).
        const bool withAlpha = channels > colorChannels && (info.mergedAlpha || info.records.empty());
        if (!decodeComposite(file, imageDataOffset, doc.width, doc.height, channels, colorChannels, withAlpha,
                             &doc.composite, &message))
            return failure(message);
    }
    return doc;
}

std::optional<Document> decodeFile(const QString& path, std::string* error, const DecodeOptions& options)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        if (error) *error = "cannot open " + path.toStdString() + ": " + f.errorString().toStdString();
        return std::nullopt;
    }
    // Mapping keeps a large file out of the heap; fall back to reading it.
    if (f.size() > 0) {
        if (const uchar* mapped = f.map(0, f.size()))
            return decode(QByteArrayView(reinterpret_cast<const char*>(mapped), f.size()), error, options);
    }
    const QByteArray bytes = f.readAll();
    return decode(bytes, error, options);
}

}  // namespace psd
