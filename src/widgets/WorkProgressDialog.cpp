#include "widgets/WorkProgressDialog.h"

#include <QCoreApplication>
#include <QProgressDialog>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace widgets {

namespace {

int& showAfterMs()
{
    static int ms = WorkProgressDialog::kShowAfterMs;
    return ms;
}

// QProgressDialog's range is int; a count of bytes or pixels is not.
int scaled(qint64 value, qint64 total)
{
    constexpr qint64 kRange = 1000000;
    return total <= kRange ? int(value) : int(value * kRange / total);
}

}  // namespace

void WorkProgressDialog::setShowAfterForTests(int ms) { showAfterMs() = ms; }

WorkProgressDialog::WorkProgressDialog(QWidget* parent, const QString& label, bool cancellable)
    : parent_(parent), label_(label), cancellable_(cancellable)
{
    clock_.start();
}

WorkProgressDialog::~WorkProgressDialog() { delete dialog_.data(); }

void WorkProgressDialog::setLabel(const QString& label)
{
    label_ = label;
    if (dialog_) dialog_->setLabelText(label);
}

void WorkProgressDialog::showIfDue(qint64 done, qint64 total)
{
    if (!dialog_) {
        if (clock_.elapsed() < showAfterMs()) return;
        dialog_ = new QProgressDialog(label_, cancellable_ ? QCoreApplication::translate("widgets", "Cancel") : QString(),
                                      0, 0, parent_);
        dialog_->setObjectName(objectName_);
        if (!cancellable_) dialog_->setCancelButton(nullptr);
        dialog_->setWindowModality(Qt::WindowModal);
        dialog_->setAutoClose(false);
        dialog_->setAutoReset(false);
        // This class decides when to show; the dialog's own timer would not wait.
        dialog_->setMinimumDuration(0);
        dialog_->show();
    }
    // Total 0 keeps the range empty: a busy bar while the amount is unknown.
    dialog_->setMaximum(scaled(total, total));
    dialog_->setValue(scaled(std::min(done, total), total));
}

bool WorkProgressDialog::update(qint64 done, qint64 total)
{
    showIfDue(done, total);
    // Until the window-modal dialog is up, the window must not take clicks
    // or keys: the document is half way through the work.
    QCoreApplication::processEvents(dialog_ ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
    if (cancellable_ && dialog_ && dialog_->wasCanceled()) cancelled_ = true;
    return !cancelled_;
}

ProgressCallback WorkProgressDialog::callback()
{
    return [this](qint64 done, qint64 total) { return update(done, total); };
}

void WorkProgressDialog::runOnWorkerThread(const std::function<void(const ProgressCallback&)>& work)
{
    std::atomic<qint64> done{0}, total{0};
    std::atomic<bool> stop{false};
    std::mutex mutex;
    std::condition_variable finishedSignal;
    bool finished = false;
    std::thread worker([&] {
        work([&](qint64 d, qint64 t) {
            done = d;
            total = t;
            return !stop.load();
        });
        std::lock_guard lock(mutex);
        finished = true;
        finishedSignal.notify_all();
    });
    for (;;) {
        {
            std::unique_lock lock(mutex);
            if (finishedSignal.wait_for(lock, std::chrono::milliseconds(15), [&] { return finished; })) break;
        }
        if (!update(done, total)) stop = true;
    }
    worker.join();
}

}  // namespace widgets
