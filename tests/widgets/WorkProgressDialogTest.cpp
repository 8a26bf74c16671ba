// The progress dialog of long work: nothing for work that ends within half
// a second, a window-modal dialog after that; Cancel stops only work that
// may stop, and reaches work on a worker thread.

#include "widgets/WorkProgressDialog.h"

#include <QProgressDialog>
#include <QPushButton>
#include <QThread>
#include <QWidget>

#include <gtest/gtest.h>

#include <atomic>

namespace {

using widgets::WorkProgressDialog;

class WorkProgressDialogTest : public ::testing::Test {
protected:
    WorkProgressDialogTest() { window.show(); }
    ~WorkProgressDialogTest() override { WorkProgressDialog::setShowAfterForTests(WorkProgressDialog::kShowAfterMs); }
    QWidget window;
};

TEST_F(WorkProgressDialogTest, ShowsOnlyOnceTheWorkHasTakenHalfASecond)
{
    WorkProgressDialog progress(&window, QStringLiteral("Saving…"), false);
    EXPECT_TRUE(progress.update(1, 4));
    EXPECT_EQ(progress.dialog(), nullptr) << "quick work shows nothing";
    QThread::msleep(WorkProgressDialog::kShowAfterMs + 20);
    EXPECT_TRUE(progress.update(2, 4));
    ASSERT_NE(progress.dialog(), nullptr);
    EXPECT_TRUE(progress.dialog()->isVisible());
    EXPECT_EQ(progress.dialog()->windowModality(), Qt::WindowModal);
    EXPECT_EQ(progress.dialog()->parentWidget(), &window);
    EXPECT_EQ(progress.dialog()->value(), 2);
    EXPECT_EQ(progress.dialog()->maximum(), 4);
    progress.update(5, 0);
    EXPECT_EQ(progress.dialog()->maximum(), 0) << "an unknown total is a busy bar";
}

TEST_F(WorkProgressDialogTest, CancelStopsOnlyWorkThatMayStop)
{
    WorkProgressDialog::setShowAfterForTests(0);
    WorkProgressDialog saving(&window, QStringLiteral("Saving…"), false);
    saving.update(0, 2);
    ASSERT_NE(saving.dialog(), nullptr);
    EXPECT_EQ(saving.dialog()->findChild<QPushButton*>(), nullptr) << "no Cancel button";
    saving.dialog()->cancel();  // Esc
    EXPECT_TRUE(saving.update(1, 2));
    EXPECT_FALSE(saving.wasCancelled());

    WorkProgressDialog importing(&window, QStringLiteral("Importing…"), true);
    EXPECT_TRUE(importing.update(0, 2));
    ASSERT_NE(importing.dialog()->findChild<QPushButton*>(), nullptr);
    importing.dialog()->cancel();
    EXPECT_FALSE(importing.update(1, 2));
    EXPECT_FALSE(importing.update(2, 2)) << "stays cancelled";
    EXPECT_TRUE(importing.wasCancelled());
}

TEST_F(WorkProgressDialogTest, WorkOnAWorkerThreadIsFollowedAndCanBeCancelled)
{
    WorkProgressDialog::setShowAfterForTests(0);
    WorkProgressDialog reading(&window, QStringLiteral("Reading…"), true);
    std::atomic<int> steps{0};
    bool told = false;
    reading.runOnWorkerThread([&](const widgets::ProgressCallback& progress) {
        for (int i = 0; i < 200 && progress(i, 200); ++i) {
            ++steps;
            QThread::msleep(1);
        }
        told = true;
    });
    EXPECT_TRUE(told) << "returns once the work has finished";
    EXPECT_FALSE(reading.wasCancelled());
    EXPECT_EQ(steps.load(), 200);
    ASSERT_NE(reading.dialog(), nullptr) << "the window was kept alive meanwhile";

    WorkProgressDialog stopped(&window, QStringLiteral("Reading…"), true);
    steps = 0;
    QMetaObject::invokeMethod(
        &window, [&] { if (stopped.dialog()) stopped.dialog()->cancel(); }, Qt::QueuedConnection);
    stopped.runOnWorkerThread([&](const widgets::ProgressCallback& progress) {
        for (int i = 0; i < 20000 && progress(i, 20000); ++i) {
            ++steps;
            QThread::msleep(1);
        }
    });
    EXPECT_TRUE(stopped.wasCancelled());
    EXPECT_LT(steps.load(), 20000) << "the worker was told to stop";
}

}  // namespace
