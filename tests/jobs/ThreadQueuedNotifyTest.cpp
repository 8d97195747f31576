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

TEST_F(ThreadQueuedNotifyTest, EveryPostFromAnotherThreadGivesOneCallOnTheOwnerThread) {
    constexpr int kPosts = 500;
    int count = 0;
    CountingNotify notify(count);
    std::thread poster([&] {
        for (int i = 0; i < kPosts; ++i)
            notify.PostQueueNotify();
    });
    EXPECT_TRUE(queue_.RunUntil([&] { return count == kPosts; }, 30000));
    poster.join();
    EXPECT_EQ(queue_.RunPending(), 0);
    EXPECT_EQ(count, kPosts);
    EXPECT_FALSE(notify.offOwnerThread);
}

TEST_F(ThreadQueuedNotifyTest, EachObjectSeesOnlyItsOwnPosts) {
    int countA = 0, countB = 0;
    CountingNotify a(countA), b(countB);
    std::thread([&] {
        a.PostQueueNotify();
        b.PostQueueNotify();
        a.PostQueueNotify();
    }).join();
    EXPECT_EQ(countA + countB, 0) << "nothing runs before the owner drains its queue";
    EXPECT_EQ(queue_.RunPending(), 3);
    EXPECT_EQ(countA, 2);
    EXPECT_EQ(countB, 1);
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
