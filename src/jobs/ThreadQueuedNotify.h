#pragma once

#include "jobs/MainThreadQueue.h"

#include <atomic>
#include <memory>

// Base of objects that are told on their owner thread (normally the main thread) that another
// thread has something for them: PostQueueNotify() from any thread makes EvNotify() run once on
// the owner thread, one call per post.
//
// The object remembers LMainThreadQueue::Current() when it is made and should be made and
// destroyed on the owner thread. Posts still pending when it is destroyed are dropped.
class LThreadQueuedNotify {
public:
    LThreadQueuedNotify();
    virtual ~LThreadQueuedNotify();
    LThreadQueuedNotify(const LThreadQueuedNotify&) = delete;
    LThreadQueuedNotify& operator=(const LThreadQueuedNotify&) = delete;

    // Any thread. Does nothing when there was no main-thread queue at construction.
    void PostQueueNotify();

protected:
    // Runs on the owner thread.
    virtual void EvNotify() = 0;

private:
    // Shared with every pending post; cleared by the destructor so late posts find no target.
    struct Target {
        explicit Target(LThreadQueuedNotify* notify) : object(notify) {}
        std::atomic<LThreadQueuedNotify*> object;
    };

    LMainThreadQueue* queue_;
    std::shared_ptr<Target> target_;
};
