#pragma once
// Timecode "HH:MM:SS:FF" at one of the broadcast frame rates. The
// fractional NTSC rates 29.97 and 59.94 count drop-frame ("HH:MM:SS;FF"):
// frame labels 0 and 1 (0–3 at 59.94) are skipped at the start of every
// minute except each tenth, so the label stays in step with the clock.
// 23.98 counts 24 labels a second without dropping.

#include <QString>

#include <optional>

namespace model {

class Timecode {
public:
    explicit Timecode(int rateCode, qint64 frames = 0);

    // The frame that contains the time (times are quantised down to whole
    // frames; a hair below a frame boundary counts as that boundary).
    static Timecode fromSeconds(double seconds, int rateCode);
    // Accepts "HH:MM:SS:FF" and "HH:MM:SS;FF" (also "." or "," before the
    // frames), and fewer fields from the right ("SS:FF", "MM:SS:FF").
    static std::optional<Timecode> fromString(const QString& text, int rateCode);

    QString toString() const;
    double secondsSinceMidnight() const;
    qint64 frames() const { return frames_; }
    int rateCode() const { return rateCode_; }
    bool isDropFrame() const;

    // The rate the editor's project uses for timecode text; the open
    // composition sets it from its video resolution.
    static int projectRateCode();
    static void setProjectRateCode(int rateCode);

private:
    int framesPerLabelSecond() const;
    int droppedPerMinute() const;
    int rateCode_;
    qint64 frames_;
};

}  // namespace model
