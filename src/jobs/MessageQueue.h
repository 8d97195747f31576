#pragma once

#include "jobs/LockObject.h"

#include <deque>

// One entry of an LMessageQueue.
struct LQueuedMessage {
    int message;
    unsigned int a;
    unsigned int b;
};

// A first-in first-out queue of (message, a, b) triples, safe for any number of producer and
// consumer threads.
class LMessageQueue {
public:
    void AddMessage(int message, unsigned int a, unsigned int b);
    // Takes the oldest message. False when the queue is empty; the out-parameters are then left
    // as they were.
    bool GetMessage(int& message, unsigned int& a, unsigned int& b);

private:
    LLockObject lock_{false};
    std::deque<LQueuedMessage> messages_;
};
