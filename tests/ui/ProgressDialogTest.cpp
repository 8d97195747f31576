#include "support/QtTestApp.h"
#include "ui/ProgressDialog.h"

#include <gtest/gtest.h>

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <thread>

namespace {

// A job that reports progress until it is asked to stop or runs out of blocks.
struct CountingJob {
    int blocks = 0;
    int done = 0;
};

int Process(LProcessInterface& pi, CountingJob& job) {
    pi.SetStatus("Counting", 0);
    for (; job.done < job.blocks; ++job.done) {
        if (pi.IsToStop()) return PROCESS_STOPPED;
        pi.SetProgress(double(job.done) / job.blocks);
        if (pi.ProcessWait(5)) return PROCESS_STOPPED;
    }
    return PROCESS_DONE;
}

// A job that waits for another thread's signal.
struct SignalJob {
    LSignalObject signal;
    int result = -1;
};

int Process(LProcessInterface& pi, SignalJob& job) {
    job.result = pi.ProcessWaitSignal(job.signal, 5000);
    return PROCESS_DONE;
}

// Presses a button of the application's active modal window once it is up.
void PressLater(QDialogButtonBox::StandardButton which) {
    QTimer::singleShot(50, [which] {
        QWidget* window = QApplication::activeModalWidget();
        ASSERT_NE(window, nullptr);
        for (auto* box : window->findChildren<QDialogButtonBox*>())
            if (QPushButton* button = box->button(which)) return button->click();
        FAIL() << "no such button";
    });
}

TEST(ProgressDialogTest, RunsTheJobToItsEndOrUntilCancel) {
    QtTestApp();
    CountingJob quick{3};
    EXPECT_EQ(ProcessRunAsDialog(nullptr, "Converting Files", quick), PROCESS_DONE);
    EXPECT_EQ(quick.done, 3);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);

    CountingJob endless{1'000'000};
    PressLater(QDialogButtonBox::Cancel);
    EXPECT_EQ(ProcessRunAsDialog(nullptr, "Converting Files", endless), PROCESS_STOPPED);
    EXPECT_LT(endless.done, endless.blocks);
}

TEST(ProgressDialogTest, WaitsForASignalWhileTheWindowStaysLive) {
    QtTestApp();
    SignalJob job;
    std::thread setter([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        job.signal.Signal();
    });
    EXPECT_EQ(ProcessRunAsDialog(nullptr, "Waiting", job), PROCESS_DONE);
    setter.join();
    EXPECT_EQ(job.result, WAIT_SIGNALED);
}

} // namespace
