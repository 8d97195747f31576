#pragma once

#include "jobs/MainThreadQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>

// A main-thread queue without a window system: the owner thread runs what was posted when it
// calls RunPending or RunUntil. Posts that are never run are dropped with the queue.
class LPlainMainQueue : public LMainThreadQueue {
public:
    void Post(std::function<void()> call) override;

    // Runs the calls posted so far (calls they post wait for the next round); returns how many.
    int RunPending();
    // Runs calls as they arrive until `done()` is true or ms milliseconds have passed; returns
    // the last value of `done()`. Sleeps while nothing is posted.
    bool RunUntil(const std::function<bool()>& done, unsigned int ms);

private:
    std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<std::function<void()>> calls_;
};
