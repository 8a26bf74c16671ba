#include "model/VideoResolution.h"

#include "model/Settings.h"
#include "model/VideoModeCatalogue.h"

#include <QLoggingCategory>

namespace model {

Q_LOGGING_CATEGORY(lcResolution, "velloran.resolution")

namespace {

struct OldSchemeRow {
    std::initializer_list<const char*> names;
    const char* prefix;  // or null
    int rateCode;
    const char* progressiveSuffix;
};

// Names of the scheme older documents used, tried top to bottom.
const OldSchemeRow kOldScheme[] = {
    {{"SD NTSC 23.98", "HD 1080p23.98", "HD 720p23.98", "UHD p23.98", "4K p23.98"}, nullptr, kRate2398, "p23.98"},
    {{"HD 1080i25", "HD 1080p25", "UHD p25", "4K p25"}, "SD PAL", kRate25, "p25"},
    {{"HD 1080i29.97", "HD 1080p29.97", "UHD p29.97", "4K p29.97"}, "SD NTSC", kRate2997, "p29.97"},
    {{"HD 1080i30", "HD 1080p30", "UHD p30", "4K p30"}, nullptr, kRate30, "p30"},
    {{"HD 720p50", "HD 1080p50", "UHD p50", "4K p50"}, nullptr, kRate50, "p50"},
    {{"HD 720p60", "HD 1080p60", "UHD p60", "4K p60"}, nullptr, kRate60, "p60"},
    {{"HD 720p59.94", "HD 1080p59.94", "UHD p59.94", "4K p59.94"}, nullptr, kRate5994, "p59.94"},
    {{"HD 1080p24", "HD 720p24", "UHD p24", "4K p24"}, nullptr, kRate24, "p24"},
};

void rateForOldName(const QString& name, int& rateCode, bool& interlaced)
{
    for (const OldSchemeRow& row : kOldScheme) {
        bool matches = row.prefix && name.startsWith(QLatin1String(row.prefix));
        for (const char* candidate : row.names) matches = matches || name == QLatin1String(candidate);
        if (matches) {
            rateCode = row.rateCode;
            interlaced = !name.endsWith(QLatin1String(row.progressiveSuffix));
            return;
        }
    }
    rateCode = kRateNone;
    interlaced = false;
}

void sizeForOldName(const QString& name, int& width, int& height)
{
    width = height = 0;
    if (name.startsWith(QLatin1String("SD PAL"))) {
        width = 720;
        height = 576;
    } else if (name.startsWith(QLatin1String("SD NTSC"))) {
        width = 720;
        height = 480;
    } else if (name.startsWith(QLatin1String("HD 720"))) {
        width = 1280;
        height = 720;
    } else if (name.startsWith(QLatin1String("HD 1080"))) {
        width = 1920;
        height = 1080;
    } else if (name.startsWith(QLatin1String("UHD"))) {
        width = 3840;
        height = 2160;
    } else if (name.startsWith(QLatin1String("4K"))) {
        qCCritical(lcResolution, "Unsupported 4K format");
    }
    if (name.startsWith(QLatin1String("SD")) && name.endsWith(QLatin1String("Widescreen")))
        qCCritical(lcResolution, "Unsupported SD widescreen format");
}

}  // namespace

VideoResolution::VideoResolution(const QString& broadcastMode)
{
    const VideoMode* mode = VideoModeCatalogue::modeNamed(broadcastMode);
    if (!mode) {
        int rateCode, width, height;
        bool interlaced;
        rateForOldName(broadcastMode, rateCode, interlaced);
        sizeForOldName(broadcastMode, width, height);
        for (const VideoMode& candidate : VideoModeCatalogue::modes()) {
            if (candidate.width == width && candidate.height == height && candidate.rateCode == rateCode &&
                candidate.interlaced == interlaced && candidate.pixelFormat == QLatin1String("rgba")) {
                mode = &candidate;
                break;
            }
        }
    }
    if (!mode) return;  // empty: null title, zero size
    title_ = mode->name;
    frameRate_ = mode->frameRateValue;
    width_ = mode->width;
    height_ = mode->height;
}

VideoResolution VideoResolution::defaultVideoResolution()
{
    return VideoResolution(Settings::stringValue(Settings::kDefaultDocumentMode));
}

}  // namespace model
