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

} // namespace

TEST(ThreadQueuedNotify, EveryPostGivesOneCallOnTheOwnerThreadToItsOwnLivingObject) {
    LPlainMainQueue queue;
    LMainThreadQueue::SetCurrent(&queue);
    constexpr int kPosts = 500;
    int countA = 0, countB = 0;
    CountingNotify a(countA), b(countB);
    std::thread poster([&] {
        for (int i = 0; i < kPosts; ++i) {
            a.PostQueueNotify();
            if (i % 5 == 0) b.PostQueueNotify();
        }
    });
    EXPECT_TRUE(queue.RunUntil([&] { return countA == kPosts; }, 30000));
    poster.join();
    EXPECT_EQ(queue.RunPending(), 0);
    EXPECT_EQ(countA, kPosts);
    EXPECT_EQ(countB, kPosts / 5);
    EXPECT_FALSE(a.offOwnerThread || b.offOwnerThread);

    // Posts pending for a destroyed object are dropped, even when a replacement reuses its
    // address.
    int goneCount = 0, laterCount = 0;
    auto gone = std::make_unique<CountingNotify>(goneCount);
    std::thread([&] {
        gone->PostQueueNotify();
        gone->PostQueueNotify();
    }).join();
    gone.reset();
    CountingNotify later(laterCount);
    queue.RunPending();
    EXPECT_EQ(goneCount, 0);
    EXPECT_EQ(laterCount, 0);
    LMainThreadQueue::SetCurrent(nullptr);
}
