#include "model/Timecode.h"

#include "model/VideoModeCatalogue.h"

#include <QRegularExpression>
#include <QStringList>

#include <cmath>

namespace model {

namespace {
int gProjectRateCode = kRate25;
}

Timecode::Timecode(int rateCode, qint64 frames)
    : rateCode_(rateCode >= 0 && rateCode < 8 ? rateCode : kRate25), frames_(std::max<qint64>(0, frames))
{
}

int Timecode::projectRateCode() { return gProjectRateCode; }
void Timecode::setProjectRateCode(int rateCode)
{
    if (rateCode >= 0 && rateCode < 8) gProjectRateCode = rateCode;
}

bool Timecode::isDropFrame() const { return rateCode_ == kRate2997 || rateCode_ == kRate5994; }
int Timecode::framesPerLabelSecond() const { return VideoModeCatalogue::ticksPerSecond(rateCode_); }
int Timecode::droppedPerMinute() const { return rateCode_ == kRate2997 ? 2 : rateCode_ == kRate5994 ? 4 : 0; }

Timecode Timecode::fromSeconds(double seconds, int rateCode)
{
    if (!(seconds > 0)) return Timecode(rateCode, 0);
    const double frames = seconds * VideoModeCatalogue::framesPerSecond(rateCode);
    return Timecode(rateCode, qint64(std::floor(frames + 1e-6)));
}

double Timecode::secondsSinceMidnight() const { return double(frames_) / VideoModeCatalogue::framesPerSecond(rateCode_); }

QString Timecode::toString() const
{
    const int fps = framesPerLabelSecond();
    qint64 label = frames_;
    if (const int drop = droppedPerMinute()) {
        // Add back the labels that drop-frame counting skips.
        const qint64 perTenMinutes = qint64(fps) * 600 - drop * 9;
        const qint64 perMinute = qint64(fps) * 60 - drop;
        const qint64 tens = frames_ / perTenMinutes;
        const qint64 rest = frames_ % perTenMinutes;
        label += drop * 9 * tens;
        if (rest > drop) label += drop * ((rest - drop) / perMinute);
    }
    const qint64 ff = label % fps;
    const qint64 totalSeconds = label / fps;
    return QStringLiteral("%1:%2:%3%4%5")
        .arg(totalSeconds / 3600 % 24, 2, 10, QLatin1Char('0'))
        .arg(totalSeconds / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(totalSeconds % 60, 2, 10, QLatin1Char('0'))
        .arg(isDropFrame() ? QLatin1Char(';') : QLatin1Char(':'))
        .arg(ff, 2, 10, QLatin1Char('0'));
}

std::optional<Timecode> Timecode::fromString(const QString& text, int rateCode)
{
    static const QRegularExpression separators(QStringLiteral("[:;.,]"));
    const QStringList parts = text.trimmed().split(separators);
    if (parts.isEmpty() || parts.size() > 4) return std::nullopt;
    qint64 fields[4] = {0, 0, 0, 0};  // hours, minutes, seconds, frames
    const int offset = 4 - int(parts.size());
    for (int i = 0; i < parts.size(); ++i) {
        bool ok = false;
        const qint64 v = parts[i].toLongLong(&ok);
        if (!ok || v < 0) return std::nullopt;
        fields[offset + i] = v;
    }
    Timecode t(rateCode);
    const int fps = t.framesPerLabelSecond();
    if (fields[3] >= fps || fields[2] >= 60 || fields[1] >= 60) return std::nullopt;
    const qint64 totalMinutes = fields[0] * 60 + fields[1];
    qint64 frames = (totalMinutes * 60 + fields[2]) * fps + fields[3];
    if (const int drop = t.droppedPerMinute()) {
        // Labels skipped so far: every minute except each tenth.
        frames -= drop * (totalMinutes - totalMinutes / 10);
        if (fields[2] == 0 && fields[3] < drop && totalMinutes % 10 != 0) return std::nullopt;  // a dropped label
    }
    t.frames_ = frames;
    return t;
}

}  // namespace model
