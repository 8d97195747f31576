#include "jobs/Thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <unistd.h>

namespace {

constexpr unsigned int kLongWait = 30000;

// Runs a function given by the test as its thread body.
class FunctionThread : public LThread {
public:
    explicit FunctionThread(std::function<void(FunctionThread&)> body) : body_(std::move(body)) {}
    ~FunctionThread() override { StopThreadNow(); }

protected:
    void ThreadFunction() override { body_(*this); }

private:
    std::function<void(FunctionThread&)> body_;
};

} // namespace

TEST(Thread, WaitSignalResultsWithStopTakingPrecedence) {
    FunctionThread idle([](FunctionThread&) {});
    LSignalObject signal;
    LSignalObjectGroup group;
    group.Add(signal);

    EXPECT_EQ(idle.ProcessWaitSignalObjectGroup(group, 10), WAIT_TIMEOUT);

    signal.Signal();
    EXPECT_EQ(idle.ProcessWaitSignal(signal, kLongWait), WAIT_SIGNALED);

    idle.StopThreadSoon();
    EXPECT_EQ(idle.ProcessWaitSignal(signal, kLongWait), WAIT_STOPPED);
    EXPECT_EQ(idle.ProcessWaitSignalObjectGroup(group, kLongWait), WAIT_STOPPED);
    EXPECT_EQ(group.Count(), 1) << "the stop signal must not join the caller's group";
}

TEST(Thread, StopRequestEndsTheJobsWaits) {
    LSignalObject never;
    std::atomic<int> waitResult = -1;
    std::atomic<bool> sleepStopped = false;
    LSignalObject waiting;
    FunctionThread worker([&](FunctionThread& self) {
        waiting.Signal();
        waitResult = self.ProcessWaitSignalForever(never);
        sleepStopped = self.ProcessWait(WAIT_FOREVER);
    });
    worker.Start(31);
    ASSERT_TRUE(waiting.WaitSignal(kLongWait));
    EXPECT_TRUE(worker.IsRunning());
    worker.StopThreadNow();
    EXPECT_FALSE(worker.IsRunning());
    EXPECT_EQ(waitResult, WAIT_STOPPED);
    EXPECT_TRUE(sleepStopped);
}

TEST(Thread, StartIgnoresARunningThreadAndRerunsAFinishedOneWithClearSignals) {
    std::atomic<int> runs = 0;
    std::atomic<bool> sawStop = false;
    LSignalObject entered, release;
    FunctionThread worker([&](FunctionThread& self) {
        ++runs;
        sawStop = sawStop || self.IsToStop();
        entered.Signal();
        release.WaitSignal(WAIT_FOREVER);
    });

    worker.Start(31);
    ASSERT_TRUE(entered.WaitSignal(kLongWait));
    entered.Reset();
    worker.Start(31);
    EXPECT_FALSE(worker.ProcessWait(0)) << "still running";
    release.Signal();
    ASSERT_TRUE(worker.ProcessWait(kLongWait)) << "the thread must finish";
    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(worker.IsRunning());

    // A finished thread with a stop request left over starts afresh.
    release.Reset();
    worker.StopThreadSoon();
    worker.Start(31);
    ASSERT_TRUE(entered.WaitSignal(kLongWait));
    EXPECT_EQ(runs, 2);
    EXPECT_FALSE(sawStop);
    EXPECT_FALSE(worker.ProcessWait(0)) << "the finished signal is cleared by Start";
    release.Signal();
    EXPECT_TRUE(worker.ProcessWait(kLongWait));
}

TEST(Thread, PriorityChangesReachOnlyTheThreadItself) {
    const int callerBefore = LThread::GetPriority(gettid());
    std::atomic<int> seenInside = -1;
    LSignalObject entered, changed;
    FunctionThread worker([&](FunctionThread& self) {
        entered.Signal();
        self.ProcessWaitSignalForever(changed);
        seenInside = LThread::GetPriority(gettid());
    });
    worker.Start(31);
    ASSERT_TRUE(entered.WaitSignal(kLongWait));
    ASSERT_NE(worker.ThreadId(), 0);
    // The lowest priority is always allowed, whatever the test runs at.
    worker.SetPriority(0);
    EXPECT_EQ(LThread::GetPriority(worker.ThreadId()), 0);
    changed.Signal();
    ASSERT_TRUE(worker.ProcessWait(kLongWait));
    EXPECT_EQ(seenInside, 0);
    EXPECT_EQ(worker.ThreadId(), 0);
    EXPECT_EQ(LThread::GetPriority(gettid()), callerBefore);
}
