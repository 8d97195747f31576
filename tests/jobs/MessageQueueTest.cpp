#include "jobs/MessageQueue.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

TEST(MessageQueue, ComesOutInOrderAndLeavesOutputsAloneWhenEmpty) {
    LMessageQueue queue;
    int message = -7;
    unsigned int a = 11, b = 12;
    EXPECT_FALSE(queue.GetMessage(message, a, b));
    EXPECT_EQ(message, -7);
    EXPECT_EQ(a, 11u);
    EXPECT_EQ(b, 12u);

    queue.AddMessage(1, 10, 100);
    queue.AddMessage(2, 20, 200);
    ASSERT_TRUE(queue.GetMessage(message, a, b));
    EXPECT_EQ(message, 1);
    EXPECT_EQ(a, 10u);
    EXPECT_EQ(b, 100u);
    queue.AddMessage(3, 30, 0xFFFFFFFF);
    ASSERT_TRUE(queue.GetMessage(message, a, b));
    EXPECT_EQ(message, 2);
    ASSERT_TRUE(queue.GetMessage(message, a, b));
    EXPECT_EQ(message, 3);
    EXPECT_EQ(b, 0xFFFFFFFFu);
    EXPECT_FALSE(queue.GetMessage(message, a, b));
    EXPECT_EQ(message, 3);
}

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
    int message;
    unsigned int a, b;
    EXPECT_FALSE(queue.GetMessage(message, a, b));
}
