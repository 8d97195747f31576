#include "jobs/PlainMainQueue.h"

#include <chrono>

void LPlainMainQueue::Post(std::function<void()> call) {
    {
        std::lock_guard guard(mutex_);
        calls_.push_back(std::move(call));
    }
    posted_.notify_one();
}

int LPlainMainQueue::RunPending() {
    std::deque<std::function<void()>> batch;
    {
        std::lock_guard guard(mutex_);
        batch.swap(calls_);
    }
    for (auto& call : batch)
        call();
    return static_cast<int>(batch.size());
}

bool LPlainMainQueue::RunUntil(const std::function<bool()>& done, unsigned int ms) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    for (;;) {
        RunPending();
        if (done()) return true;
        std::unique_lock guard(mutex_);
        if (!posted_.wait_until(guard, deadline, [this] { return !calls_.empty(); })) return done();
    }
}
