#include "jobs/MessageQueue.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

TEST(MessageQueue, SeveralProducersLoseNothingAndKeepTheirOwnOrder) {
    constexpr int kProducers = 4;
    constexpr unsigned int kEach = 5000;
    LMessageQueue queue;
    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p)
        producers.emplace_back([&queue, p] {
            for (unsigned int i = 0; i < kEach; ++i)
                queue.AddMessage(p, i, i * 3);
        });

    std::vector<unsigned int> next(kProducers, 0);
    unsigned int received = 0;
    bool inOrder = true;
    while (received < kProducers * kEach) {
        int producer;
        unsigned int a, b;
        if (!queue.GetMessage(producer, a, b)) {
            std::this_thread::yield();
            continue;
        }
        ASSERT_GE(producer, 0);
        ASSERT_LT(producer, kProducers);
        inOrder = inOrder && a == next[producer] && b == a * 3;
        next[producer] = a + 1;
        ++received;
    }
    for (auto& producer : producers)
        producer.join();
    EXPECT_TRUE(inOrder);
    for (unsigned int count : next)
        EXPECT_EQ(count, kEach);

    // An empty queue leaves the caller's variables alone.
    int message = -7;
    unsigned int a = 11, b = 12;
    EXPECT_FALSE(queue.GetMessage(message, a, b));
    EXPECT_EQ(message, -7);
    EXPECT_EQ(a + b, 23u);
}
