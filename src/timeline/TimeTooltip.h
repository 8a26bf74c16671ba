#pragma once
// The small frameless window that shows the time while something is
// dragged on the timeline, in the timecode of the composition's rate. There
// is one for the whole application, made on first use and deleted when the
// application quits; every timeline shares it.

#include <QLabel>
#include <QPoint>
#include <QPointer>

namespace timeline {

class TimeTooltip : public QLabel {
    Q_OBJECT
public:
    static TimeTooltip* shared();
    // Hides the shared tooltip if there is one, without making it.
    static void finishShared();

    // Shows the time centred above `globalAnchor` (the dragged point).
    void showTime(double seconds, int rateCode, const QPoint& globalAnchor);
    void finish();
    // The text for a time, "HH:MM:SS:FF" ("HH:MM:SS;FF" when drop-frame).
    static QString textForTime(double seconds, int rateCode);

private:
    TimeTooltip();
    static QPointer<TimeTooltip>& instance();
};

}  // namespace timeline
