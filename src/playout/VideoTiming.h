#pragma once
// The clock of a video mode: its exact frame rate as a fraction, and for an
// interlaced mode its two fields a frame, each rendered at its own time
// (the field rate) and woven in the mode's field order. A "step" is what
// the player renders at one time: a field of an interlaced mode, otherwise
// a frame.

#include <QtGlobal>

namespace model {
class VideoResolution;
struct VideoMode;
}  // namespace model

namespace playout {

enum class FieldOrder {
    Progressive,
    UpperFirst,  // the first field in time holds the top picture line (line 0)
    LowerFirst,
};

class VideoTiming {
public:
    VideoTiming() = default;
    // `rateNumerator / rateDenominator` frames a second.
    VideoTiming(int rateNumerator, int rateDenominator, FieldOrder order);

    // Unknown modes play at 25 progressive frames a second.
    static VideoTiming forResolution(const model::VideoResolution& resolution);
    static VideoTiming forMode(const model::VideoMode& mode);
    static VideoTiming forRateCode(int rateCode, bool interlaced, int height);
    // Upper field first for 576 and 1080 lines (as their broadcast
    // standards send them), lower field first for 480 lines.
    static FieldOrder fieldOrderForHeight(int height);

    int rateNumerator() const { return numerator_; }
    int rateDenominator() const { return denominator_; }
    double framesPerSecond() const { return double(numerator_) / denominator_; }
    FieldOrder fieldOrder() const { return order_; }
    bool interlaced() const { return order_ != FieldOrder::Progressive; }

    int stepsPerFrame() const { return interlaced() ? 2 : 1; }
    double stepsPerSecond() const { return framesPerSecond() * stepsPerFrame(); }
    double stepDuration() const { return 1.0 / stepsPerSecond(); }
    // Exact to the fraction: step * denominator / (numerator * steps a frame).
    double stepTime(qint64 step) const;
    double frameTime(qint64 frame) const { return stepTime(frame * stepsPerFrame()); }
    // The last step whose time is not later than `time` (a hair of slack
    // keeps a time given in decimals on its own step).
    qint64 stepAtOrBefore(double time) const;
    // The first frame that starts at or after `time`.
    qint64 firstFrameAtOrAfter(double time) const;
    // Frames that start in [from, to): duration × rate for a whole template.
    qint64 frameCount(double from, double to) const;

    // Which lines of the frame a step fills: 0 for the even lines (the top
    // line first), 1 for the odd lines. Progressive steps fill every line.
    int fieldParity(qint64 step) const;

private:
    int numerator_ = 25;
    int denominator_ = 1;
    FieldOrder order_ = FieldOrder::Progressive;
};

}  // namespace playout
