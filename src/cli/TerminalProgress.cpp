#include "cli/TerminalProgress.h"

#include <unistd.h>

namespace cli {

TerminalProgress::TerminalProgress(QTextStream& err, const QString& label)
    : TerminalProgress(err, label, isatty(STDERR_FILENO) != 0)
{
}

TerminalProgress::TerminalProgress(QTextStream& err, const QString& label, bool shown)
    : err_(err), label_(label), shown_(shown)
{
}

TerminalProgress::~TerminalProgress()
{
    if (!drawn_) return;
    err_ << "\n";
    err_.flush();
}

void TerminalProgress::setLabel(const QString& label)
{
    std::lock_guard lock(mutex_);
    label_ = label;
    lastPercent_ = -1;
}

void TerminalProgress::draw(qint64 done, qint64 total)
{
    std::lock_guard lock(mutex_);
    if (!shown_) return;
    const int percent = total > 0 ? int(std::clamp<qint64>(done * 100 / total, 0, 100)) : 0;
    // A terminal redrawn for every row of a large picture would slow the work.
    if (drawn_ && percent == lastPercent_) return;
    lastPercent_ = percent;
    drawn_ = true;
    // "\x1b[K" clears what a longer earlier label left on the line.
    err_ << "\rvelloran-cli: " << label_;
    if (total > 0) err_ << " " << percent << "%";
    err_ << "\x1b[K";
    err_.flush();
}

document::WorkProgress TerminalProgress::callback()
{
    return [this](qint64 done, qint64 total) {
        draw(done, total);
        return true;
    };
}

}  // namespace cli
