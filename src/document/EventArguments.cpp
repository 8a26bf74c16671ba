#include "document/EventArguments.h"

#include <QStringList>

#include <cmath>

namespace document {

namespace {
constexpr double kClipDuration = 5.0;
}

QVariantMap eventArgumentsAtTime(double time, bool playing)
{
    const double elapsed = playing ? std::fmod(time, kClipDuration) : 0.0;
    return {
        {QStringLiteral("ElapsedTime"), elapsed},
        {QStringLiteral("AbsoluteElapsedTime"), elapsed},
        {QStringLiteral("RemainingTime"), kClipDuration - elapsed},
        {QStringLiteral("CurrentDuration"), kClipDuration},
        {QStringLiteral("PercentageElapsed"), elapsed / kClipDuration * 100.0},
        {QStringLiteral("CurrentName"), QStringLiteral("Current Clip")},
        {QStringLiteral("NextNames"), QStringList{QStringLiteral("One"), QStringLiteral("Two"), QStringLiteral("Three")}},
    };
}

}  // namespace document
