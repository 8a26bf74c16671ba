#pragma once
// Long work in a window: a window-modal progress dialog over it that appears
// only once the work has taken half a second, so quick work never flashes a
// dialog. Work on this thread calls update() between its steps (the window's
// events are handled there); work that would hold this thread too long
// without a step runs on a worker thread through runOnWorkerThread.

#include <QElapsedTimer>
#include <QPointer>
#include <QProgressDialog>
#include <QString>

#include <functional>

namespace widgets {

// The same signature as document::WorkProgress, which this module cannot name.
using ProgressCallback = std::function<bool(qint64 done, qint64 total)>;

class WorkProgressDialog {
public:
    static constexpr int kShowAfterMs = 500;
    static QString dialogObjectName() { return QStringLiteral("workProgressDialog"); }
    // Tests show the dialog at once (0) so that short work shows it too.
    static void setShowAfterForTests(int ms);

    // `cancellable`: the dialog has a Cancel button and update() answers
    // false once it was pressed.
    WorkProgressDialog(QWidget* parent, const QString& label, bool cancellable);
    ~WorkProgressDialog();
    WorkProgressDialog(const WorkProgressDialog&) = delete;
    WorkProgressDialog& operator=(const WorkProgressDialog&) = delete;

    bool update(qint64 done, qint64 total);
    ProgressCallback callback();
    bool wasCancelled() const { return cancelled_; }
    void setLabel(const QString& label);
    // The dialog's object name, for tests to find it by (dialogObjectName()
    // unless set).
    void setObjectName(const QString& name) { objectName_ = name; }

    // Runs `work` on a worker thread and returns when it has finished; the
    // callback it is handed may be called from any thread.
    void runOnWorkerThread(const std::function<void(const ProgressCallback&)>& work);

    // Null until the dialog has been shown.
    QProgressDialog* dialog() const { return dialog_; }

private:
    void showIfDue(qint64 done, qint64 total);

    QPointer<QWidget> parent_;
    QString label_;
    QString objectName_ = dialogObjectName();
    bool cancellable_;
    bool cancelled_ = false;
    QElapsedTimer clock_;
    QPointer<QProgressDialog> dialog_;
};

}  // namespace widgets
