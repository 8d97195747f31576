#include "jobs/ThreadQueuedNotify.h"
#include "jobs/PlainMainQueue.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace {

// Counts its notifications and remembers whether any arrived off the owner thread.
class CountingNotify : public LThreadQueuedNotify {
public:
    explicit CountingNotify(int& count) : count_(count) {}

    bool offOwnerThread = false;

protected:
    void EvNotify() override {
        ++count_;
        offOwnerThread = offOwnerThread || std::this_thread::get_id() != owner_;
    }

private:
    int& count_;
    std::thread::id owner_ = std::this_thread::get_id();
};

class ThreadQueuedNotifyTest : public testing::Test {
protected:
    ThreadQueuedNotifyTest() { LMainThreadQueue::SetCurrent(&queue_); }
    ~ThreadQueuedNotifyTest() override { LMainThreadQueue::SetCurrent(nullptr); }

    LPlainMainQueue queue_;
};

} // namespace

TEST_F(ThreadQueuedNotifyTest, EveryPostGivesOneCallOnTheOwnerThreadToItsOwnObject) {
    constexpr int kPosts = 500;
    int countA = 0, countB = 0;
    CountingNotify a(countA), b(countB);
    std::thread poster([&] {
        for (int i = 0; i < kPosts; ++i) {
            a.PostQueueNotify();
            if (i % 5 == 0) b.PostQueueNotify();
        }
    });
    EXPECT_TRUE(queue_.RunUntil([&] { return countA == kPosts; }, 30000));
    poster.join();
    EXPECT_EQ(queue_.RunPending(), 0);
    EXPECT_EQ(countA, kPosts);
    EXPECT_EQ(countB, kPosts / 5);
    EXPECT_FALSE(a.offOwnerThread || b.offOwnerThread);
}

TEST_F(ThreadQueuedNotifyTest, PostsPendingForADestroyedObjectAreDropped) {
    int count = 0;
    auto notify = std::make_unique<CountingNotify>(count);
    std::thread([&] {
        notify->PostQueueNotify();
        notify->PostQueueNotify();
    }).join();
    notify.reset();
    // A replacement may well reuse the address; it must not receive the old posts.
    int laterCount = 0;
    CountingNotify later(laterCount);
    queue_.RunPending();
    EXPECT_EQ(count, 0);
    EXPECT_EQ(laterCount, 0);
}
