#pragma once
// Progress of long work for a person at a terminal: one line on stderr,
// "velloran-cli: Saving… 42%", redrawn in place and ended when the work is.
// Logs and pipes get nothing, so scripts read stderr as before.

#include "document/WorkProgress.h"

#include <QString>
#include <QTextStream>

#include <mutex>

namespace cli {

class TerminalProgress {
public:
    // Draws only when stderr is a terminal.
    TerminalProgress(QTextStream& err, const QString& label);
    TerminalProgress(QTextStream& err, const QString& label, bool shown);
    ~TerminalProgress();
    TerminalProgress(const TerminalProgress&) = delete;
    TerminalProgress& operator=(const TerminalProgress&) = delete;

    // Never stops the work. May be called from any thread.
    document::WorkProgress callback();
    void setLabel(const QString& label);

private:
    void draw(qint64 done, qint64 total);

    QTextStream& err_;
    QString label_;
    bool shown_;
    bool drawn_ = false;
    int lastPercent_ = -1;
    std::mutex mutex_;
};

}  // namespace cli
