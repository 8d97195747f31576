#include "jobs/MessageQueue.h"

#include <mutex>

void LMessageQueue::AddMessage(int message, unsigned int a, unsigned int b) {
    std::lock_guard guard(lock_);
    messages_.push_back({message, a, b});
}

bool LMessageQueue::GetMessage(int& message, unsigned int& a, unsigned int& b) {
    LQueuedMessage head;
    {
        std::lock_guard guard(lock_);
        if (messages_.empty()) return false;
        head = messages_.front();
        messages_.pop_front();
    }
    message = head.message;
    a = head.a;
    b = head.b;
    return true;
}
