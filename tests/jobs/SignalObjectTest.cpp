#include "jobs/SignalObject.h"
#include "jobs/SignalObjectGroup.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

// A limit long enough never to be reached when the code is right; a wrong result then shows
// as a failure after a while instead of a hang.
constexpr unsigned int kLongWait = 30000;

TEST(SignalObject, StaysSetUntilOneResetDrainsEverySignalAndWakesOtherThreads) {
    LSignalObject signal;
    EXPECT_FALSE(signal.IsSignaled());
    for (int i = 0; i < 3; ++i)
        signal.Signal();
    EXPECT_TRUE(signal.IsSignaled());
    EXPECT_TRUE(signal.IsSignaled()) << "looking must not consume the signal";
    signal.Reset();
    EXPECT_FALSE(signal.WaitSignal(10));

    bool woke = false;
    std::thread waiter([&] { woke = signal.WaitSignal(WAIT_FOREVER); });
    signal.Signal();
    waiter.join();
    EXPECT_TRUE(woke);
}

TEST(SignalObjectGroup, HoldsAtMost255MembersAndAnExtraSignalWakesWithoutJoining) {
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

    LSignalObject member, extra;
    LSignalObjectGroup small;
    small.Add(member);
    extra.Signal();
    EXPECT_TRUE(small.Select(kLongWait, extra));
    EXPECT_TRUE(small.IsReady(extra));
    EXPECT_FALSE(small.IsReady(member));
    EXPECT_FALSE(small.Select(10)) << "the extra signal did not join the group";
}
