#include "psd/PsdDocument.h"

#include "psd/ByteReader.h"
#include "psd/ImagePlan.h"
#include "psd/LayerRecords.h"

#include <QFile>

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
    std::vector<ImagePlan> plans;
    if (options.layerPixels) {
        // describeLayers walks the records top first and drops folder records; pair the images the same way.
        size_t next = 0;
        for (size_t i = info.records.size(); i-- > 0;) {
            const LayerRecord& record = info.records[i];
            if (record.section != SectionKind::None) continue;
            ImagePlan plan;
            plan.target = &doc.layers[next++].image;
            if (!planLayerImage(file, colorChannels, int(i), record, &plan, &message)) return failure(message);
            plans.push_back(std::move(plan));
        }
    }
    if (options.composite) {
        // An extra channel is the merged transparency when the layer count says
        // so, or in a file without layers (as flattening writers produce).
        const bool withAlpha = channels > colorChannels && (info.mergedAlpha || info.records.empty());
        ImagePlan plan;
        plan.target = &doc.composite;
        if (!planCompositeImage(file, imageDataOffset, doc.width, doc.height, channels, colorChannels, withAlpha, &plan,
                                &message))
            return failure(message);
        plans.push_back(std::move(plan));
    }
    if (!decodeImages(file, plans, options.threads, &message, options.progress)) return failure(message);
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
