#include "timeline/TimeTooltip.h"

#include "model/Timecode.h"

#include <QApplication>

#include <cmath>

namespace timeline {

TimeTooltip::TimeTooltip() : QLabel(nullptr, Qt::ToolTip | Qt::FramelessWindowHint)
{
    setObjectName(QStringLiteral("TimeTooltip"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setForegroundRole(QPalette::ToolTipText);
    setBackgroundRole(QPalette::ToolTipBase);
    setAutoFillBackground(true);
    setMargin(3);
    QFont mono = font();
    mono.setFamily(QStringLiteral("DejaVu Sans Mono"));
    mono.setStyleHint(QFont::Monospace);
    setFont(mono);
}

QPointer<TimeTooltip>& TimeTooltip::instance()
{
    static QPointer<TimeTooltip> tooltip;
    return tooltip;
}

TimeTooltip* TimeTooltip::shared()
{
    QPointer<TimeTooltip>& tooltip = instance();
    if (!tooltip) {
        tooltip = new TimeTooltip;
        // The application owns it: it goes when the application quits.
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, tooltip, [] { delete instance().data(); });
    }
    return tooltip;
}

void TimeTooltip::finishShared()
{
    if (TimeTooltip* tooltip = instance()) tooltip->finish();
}

QString TimeTooltip::textForTime(double seconds, int rateCode)
{
    const QString text = model::Timecode::fromSeconds(std::abs(seconds), rateCode).toString();
    return seconds < 0 ? QStringLiteral("-") + text : text;
}

void TimeTooltip::showTime(double seconds, int rateCode, const QPoint& globalAnchor)
{
    setText(textForTime(seconds, rateCode));
    adjustSize();
    move(globalAnchor.x() - width() / 2, globalAnchor.y() - height() - 4);
    if (isVisible()) return;
    show();
    raise();
}

void TimeTooltip::finish()
{
    hide();
}

}  // namespace timeline
