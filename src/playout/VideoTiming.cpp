#include "playout/VideoTiming.h"

#include "model/VideoModeCatalogue.h"
#include "model/VideoResolution.h"

#include <algorithm>
#include <cmath>

namespace playout {

namespace {
// Times typed in decimals ("3.04") land a rounding error away from the step
// they mean; this much slack keeps them on it, far below any step length.
constexpr double kSlack = 1e-6;
}  // namespace

VideoTiming::VideoTiming(int rateNumerator, int rateDenominator, FieldOrder order)
    : numerator_(rateNumerator > 0 ? rateNumerator : 25), denominator_(rateDenominator > 0 ? rateDenominator : 1),
      order_(order)
{
}

VideoTiming VideoTiming::forResolution(const model::VideoResolution& resolution)
{
    if (!resolution.isValid()) return VideoTiming();
    if (const model::VideoMode* mode = model::VideoModeCatalogue::modeNamed(resolution.title())) return forMode(*mode);
    return forRateCode(resolution.frameRate(), false, resolution.height());
}

VideoTiming VideoTiming::forMode(const model::VideoMode& mode)
{
    return forRateCode(mode.rateCode, mode.interlaced, mode.height);
}

VideoTiming VideoTiming::forRateCode(int rateCode, bool interlaced, int height)
{
    // The NTSC-derived rates are whole rates slowed by 1000/1001.
    int numerator = 25, denominator = 1;
    switch (rateCode) {
    case model::kRate2398: numerator = 24000, denominator = 1001; break;
    case model::kRate24: numerator = 24; break;
    case model::kRate25: numerator = 25; break;
    case model::kRate2997: numerator = 30000, denominator = 1001; break;
    case model::kRate30: numerator = 30; break;
    case model::kRate50: numerator = 50; break;
    case model::kRate5994: numerator = 60000, denominator = 1001; break;
    case model::kRate60: numerator = 60; break;
    default: break;
    }
    return VideoTiming(numerator, denominator, interlaced ? fieldOrderForHeight(height) : FieldOrder::Progressive);
}

FieldOrder VideoTiming::fieldOrderForHeight(int height)
{
    return height == 480 || height == 486 ? FieldOrder::LowerFirst : FieldOrder::UpperFirst;
}

double VideoTiming::stepTime(qint64 step) const
{
    return double(step) * denominator_ / (double(numerator_) * stepsPerFrame());
}

qint64 VideoTiming::stepAtOrBefore(double time) const
{
    if (!std::isfinite(time)) return 0;
    return qint64(std::floor(time * stepsPerSecond() + kSlack));
}

qint64 VideoTiming::firstFrameAtOrAfter(double time) const
{
    if (!std::isfinite(time)) return 0;
    return qint64(std::ceil(time * framesPerSecond() - kSlack));
}

qint64 VideoTiming::frameCount(double from, double to) const
{
    return std::max<qint64>(0, firstFrameAtOrAfter(to) - firstFrameAtOrAfter(from));
}

int VideoTiming::fieldParity(qint64 step) const
{
    const bool first = step % 2 == 0;
    switch (order_) {
    case FieldOrder::UpperFirst: return first ? 0 : 1;
    case FieldOrder::LowerFirst: return first ? 1 : 0;
    case FieldOrder::Progressive: break;
    }
    return 0;
}

}  // namespace playout
