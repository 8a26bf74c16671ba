#pragma once
// The table of video modes Velloran offers. Names follow one scheme
// ("1080i25 RGBA"); older documents stored other names, which
// VideoResolution resolves against this table.

#include <QString>

#include <vector>

namespace model {

// Frame-rate codes used throughout: 23.98, 24, 25, 29.97, 30, 50, 59.94, 60.
enum FrameRateCode : int {
    kRate2398 = 0, kRate24 = 1, kRate25 = 2, kRate2997 = 3, kRate30 = 4, kRate50 = 5, kRate5994 = 6, kRate60 = 7,
    kRateNone = 8,
};

struct VideoMode {
    QString name;
    QString group;
    int width = 0;
    int height = 0;
    int rateCode = kRateNone;
    bool interlaced = false;
    QString pixelFormat;   // four-character code, "rgba" for every mode we offer
    int frameRateValue = kRateNone;  // what a resolution's frameRate reports: the rate code
    qint64 offered = 0;    // 0 or 1: shown in menus
};

class VideoModeCatalogue {
public:
    static const std::vector<VideoMode>& modes();
    static const VideoMode* modeNamed(const QString& name);
    static QString defaultModeName() { return QStringLiteral("1080i25 RGBA"); }
    // Frames per second as a number (29.97 is 30000/1001).
    static double framesPerSecond(int rateCode);
    // The whole number of frames a second that the editor's tick grid uses:
    // the fractional rates round up (23.98 → 24, 29.97 → 30, 59.94 → 60).
    static int ticksPerSecond(int rateCode);
    static QString rateName(int rateCode);
};

}  // namespace model
