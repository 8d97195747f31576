#include "jobs/SignalObject.h"
#include "jobs/ProcessInterfaceVoid.h"
#include "jobs/SignalObjectGroup.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

// A limit long enough never to be reached when the code is right; a wrong result then shows
// as a failure after a while instead of a hang.
constexpr unsigned int kLongWait = 30000;

TEST(SignalObject, StaysSetUntilOneResetDrainsEverySignal) {
    LSignalObject signal;
    EXPECT_FALSE(signal.IsSignaled());
    signal.Signal();
    signal.Signal();
    signal.Signal();
    EXPECT_TRUE(signal.IsSignaled());
    EXPECT_TRUE(signal.IsSignaled()) << "looking must not consume the signal";
    signal.Reset();
    EXPECT_FALSE(signal.IsSignaled());
    EXPECT_FALSE(signal.WaitSignal(10));
    signal.Reset();
    signal.Signal();
    EXPECT_TRUE(signal.WaitSignal(kLongWait));
}

TEST(SignalObject, WakesAWaiterOnAnotherThread) {
    LSignalObject signal;
    bool woke = false;
    std::thread waiter([&] { woke = signal.WaitSignal(WAIT_FOREVER); });
    signal.Signal();
    waiter.join();
    EXPECT_TRUE(woke);
}

TEST(SignalObjectGroup, HoldsAtMost255Members) {
    std::vector<std::unique_ptr<LSignalObject>> signals;
    LSignalObjectGroup group;
    for (int i = 0; i < 256; ++i) {
        signals.push_back(std::make_unique<LSignalObject>());
        group.Add(*signals.back());
    }
    EXPECT_EQ(group.Count(), 255);

    signals[255]->Signal();
    EXPECT_FALSE(group.Select(10)) << "the 256th signal is not a member";
    signals[254]->Signal();
    EXPECT_TRUE(group.Select(kLongWait));
    EXPECT_TRUE(group.IsReady(*signals[254]));
    EXPECT_FALSE(group.IsReady(*signals[0]));
}

TEST(SignalObjectGroup, ExtraSignalWakesTheWaitWithoutJoiningTheGroup) {
    LSignalObject member, extra;
    LSignalObjectGroup group;
    group.Add(member);
    extra.Signal();
    EXPECT_TRUE(group.Select(kLongWait, extra));
    EXPECT_TRUE(group.IsReady(extra));
    EXPECT_FALSE(group.IsReady(member));
    EXPECT_EQ(group.Count(), 1);
    EXPECT_FALSE(group.Select(10)) << "without the extra signal nothing is set";
}

TEST(ProcessInterfaceVoid, WaitsReportSignalOrTimeOut) {
    LProcessInterfaceVoid none;
    LSignalObject signal;
    LSignalObjectGroup group;
    group.Add(signal);
    EXPECT_EQ(none.ProcessWaitSignal(signal, 10), WAIT_TIMEOUT);
    EXPECT_EQ(none.ProcessWaitSignalObjectGroup(group, 10), WAIT_TIMEOUT);
    signal.Signal();
    EXPECT_EQ(none.ProcessWaitSignalForever(signal), WAIT_SIGNALED);
    EXPECT_EQ(none.ProcessWaitSignalObjectGroup(group, kLongWait), WAIT_SIGNALED);
    EXPECT_FALSE(none.IsToStop());
}
