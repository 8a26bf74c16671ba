#include "psd/ImagePlan.h"

#include "psd/ByteReader.h"
#include "psd/ImageAssembly.h"
#include "psd/TaskRunner.h"

#include <algorithm>
#include <memory>
#include <mutex>

namespace psd::detail {
namespace {

// Below this many pixels in all a document decodes on the calling thread:
// starting threads would cost more than it saves.
constexpr qint64 kParallelPixels = qint64(1) << 16;
// Raw and RLE images are cut into bands of about this many pixels, so that
// the cores stay evenly busy to the end, whatever the mix of image sizes.
constexpr qint64 kBandPixels = qint64(1) << 19;

bool setError(std::string* error, const std::string& message)
{
    if (error) *error = message;
    return false;
}

std::string describe(int index, const LayerRecord& record)
{
    return "layer record " + std::to_string(index) + " (\"" + record.name.toStdString() + "\")";
}

struct Band {
    int plan = 0;
    int firstRow = 0;
    int endRow = 0;
};

// Opens readers of its own for one band and decodes its rows into the image.
bool decodeBand(const FileContext& file, const ImagePlan& plan, const Band& band, uchar* pixels,
                qsizetype bytesPerLine, std::string* error)
{
    std::vector<std::unique_ptr<ChannelRowReader>> readers;
    auto open = [&](const PlanePlan& p) -> ChannelRowReader* {
        auto reader = std::make_unique<ChannelRowReader>();
        if (!reader->open(file, p.source, p.width, p.height, p.what, error)) return nullptr;
        readers.push_back(std::move(reader));
        return readers.back().get();
    };
    AssemblyInput in;
    in.width = plan.width;
    in.height = plan.height;
    in.origin = plan.origin;
    in.colorCount = plan.colorCount;
    for (int c = 0; c < plan.colorCount; ++c)
        if (!(in.color[c] = open(plan.color[c]))) return false;
    if (plan.alpha && !(in.alpha = open(*plan.alpha))) return false;
    for (const MaskPlan& m : plan.masks) {
        MaskPlane mask;
        mask.rect = m.rect;
        mask.defaultColor = m.defaultColor;
        if (!(mask.reader = open(m.plane))) return false;
        in.masks.push_back(mask);
    }
    prefaultRows(pixels, bytesPerLine, band.firstRow, band.endRow);
    return assembleRows(in, pixels, bytesPerLine, band.firstRow, band.endRow, error);
}

}  // namespace

bool ImagePlan::rowsIndependent() const
{
    auto independent = [](const PlanePlan& p) {
        return p.source.compression == Compression::Raw || p.source.compression == Compression::Rle;
    };
    for (int c = 0; c < colorCount; ++c)
        if (!independent(color[c])) return false;
    if (alpha && !independent(*alpha)) return false;
    return std::all_of(masks.begin(), masks.end(), [&](const MaskPlan& m) { return independent(m.plane); });
}

bool planLayerImage(const FileContext& file, int colorChannels, int index, const LayerRecord& record, ImagePlan* plan,
                    std::string* error)
{
    const int w = record.rect.width(), h = record.rect.height();
    if (w == 0 || h == 0) return true;
    plan->who = describe(index, record);
    plan->width = w;
    plan->height = h;
    plan->origin = record.rect.topLeft();
    plan->colorCount = colorChannels;
    auto planPlane = [&](const ChannelData& channel, int width, int height, PlanePlan* p) {
        if (!layerChannelSource(file, channel, height, &p->source, error)) {
            if (error) *error = plan->who + " " + *error;
            return false;
        }
        p->width = width;
        p->height = height;
        p->what = plan->who + " channel " + std::to_string(channel.id);
        return ChannelRowReader::check(file, p->source, width, height, p->what, error);
    };
    for (int c = 0; c < colorChannels; ++c) {
        const ChannelData* channel = record.channel(c);
        if (!channel) return setError(error, plan->who + " lacks colour channel " + std::to_string(c));
        if (!planPlane(*channel, w, h, &plan->color[c])) return false;
    }
    if (const ChannelData* channel = record.channel(-1)) {
        plan->alpha.emplace();
        if (!planPlane(*channel, w, h, &*plan->alpha)) return false;
    }
    const std::pair<int, const MaskInfo*> masks[] = {{-2, &record.userMask}, {-3, &record.realUserMask}};
    for (const auto& [id, info] : masks) {
        const ChannelData* channel = record.channel(id);
        if (!info->present || info->disabled || !channel) continue;
        MaskPlan mask;
        mask.rect = info->rect;
        mask.defaultColor = info->defaultColor;
        if (!planPlane(*channel, info->rect.width(), info->rect.height(), &mask.plane)) return false;
        plan->masks.push_back(std::move(mask));
    }
    return true;
}

bool planCompositeImage(const FileContext& file, int64_t begin, int width, int height, int fileChannels,
                        int colorChannels, bool withAlpha, ImagePlan* plan, std::string* error)
{
    ByteReader r(file.data, begin, file.size);
    const uint16_t code = r.u16();
    if (!r.ok()) return setError(error, "the file ends before the image data section at offset " + std::to_string(begin));
    if (code > 3) return setError(error, "image data uses unknown compression " + std::to_string(code));
    const int used = colorChannels + (withAlpha ? 1 : 0);
    const int64_t rowBytes = int64_t(width) * (file.bitsPerChannel / 8);
    const int countSize = file.large ? 4 : 2;
    const int64_t tableEnd = r.pos() + int64_t(fileChannels) * height * countSize;
    if (Compression(code) == Compression::Rle && tableEnd > file.size)
        return setError(error, "image data RLE row counts run past the end of the file");

    plan->width = width;
    plan->height = height;
    plan->colorCount = colorChannels;
    int64_t rleData = tableEnd;
    for (int c = 0; c < used; ++c) {
        PlanePlan p;
        p.width = width;
        p.height = height;
        p.what = "image data channel " + std::to_string(c);
        PlaneSource& source = p.source;
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
        if (source.dataBegin > file.size)
            return setError(error, "image data channel " + std::to_string(c) + " starts past the end of the file");
        if (!ChannelRowReader::check(file, source, width, height, p.what, error)) return false;
        if (c < colorChannels) plan->color[c] = std::move(p);
        else plan->alpha = std::move(p);
    }
    return true;
}

bool decodeImages(const FileContext& file, const std::vector<ImagePlan>& plans, int threads, std::string* error,
                  const std::function<bool(int64_t done, int64_t total)>& progress)
{
    qint64 pixels = 0;
    for (const ImagePlan& plan : plans) pixels += qint64(plan.width) * plan.height;
    const int workers = threads > 0 ? threads : (pixels < kParallelPixels ? 1 : coreCount());

    // Every image's bytes have been checked; only now is their memory taken.
    std::vector<uchar*> bits(plans.size(), nullptr);
    std::vector<qsizetype> bytesPerLine(plans.size(), 0);
    std::vector<Band> bands;
    for (size_t i = 0; i < plans.size(); ++i) {
        const ImagePlan& plan = plans[i];
        if (plan.width <= 0 || plan.height <= 0) continue;
        *plan.target = allocateImage(plan.width, plan.height);
        if (plan.target->isNull())
            return setError(error, (plan.who.empty() ? "" : plan.who + ": ") + "cannot allocate a " +
                                       std::to_string(plan.width) + "x" + std::to_string(plan.height) + " image");
        bits[i] = plan.target->bits();
        bytesPerLine[i] = plan.target->bytesPerLine();
        const qint64 size = qint64(plan.width) * plan.height;
        const int count = workers > 1 && plan.rowsIndependent()
                              ? int(std::clamp<qint64>(size / kBandPixels, 1, plan.height))
                              : 1;
        for (int b = 0; b < count; ++b)
            bands.push_back({int(i), int(qint64(plan.height) * b / count), int(qint64(plan.height) * (b + 1) / count)});
    }

    int64_t rows = 0;
    for (const Band& band : bands) rows += band.endRow - band.firstRow;
    int64_t rowsDone = 0;
    std::mutex progressMutex;
    bool stopped = false;
    std::vector<std::string> errors(bands.size());
    runTasks(int(bands.size()), workers, [&](int task) {
        const Band& band = bands[size_t(task)];
        const ImagePlan& plan = plans[size_t(band.plan)];
        std::string& message = errors[size_t(task)];
        if (decodeBand(file, plan, band, bits[size_t(band.plan)], bytesPerLine[size_t(band.plan)], &message)) {
            if (!progress) return true;
            std::lock_guard lock(progressMutex);
            rowsDone += band.endRow - band.firstRow;
            if (!stopped && !progress(rowsDone, rows)) stopped = true;
            return !stopped;
        }
        if (message.empty()) message = "cannot decode";
        if (!plan.who.empty() && message.rfind(plan.who, 0) != 0) message = plan.who + ": " + message;
        return false;
    });
    for (const std::string& message : errors)
        if (!message.empty()) return setError(error, message);
    if (stopped) return setError(error, "cancelled");
    return true;
}

}  // namespace psd::detail
