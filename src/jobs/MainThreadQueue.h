#pragma once

#include <functional>

// Hands calls from any thread to the thread that owns the queue (the GUI thread in the
// program), which runs them one at a time in the order they were posted. The program's queue
// delivers through the GUI event loop; LPlainMainQueue serves tests and tools.
class LMainThreadQueue {
public:
    virtual ~LMainThreadQueue() = default;

    // Callable from any thread; `call` later runs once on the owner thread.
    virtual void Post(std::function<void()> call) = 0;

    // The queue of the process's main thread; nullptr until one is set.
    static LMainThreadQueue* Current();
    // Set at start-up (and by tests) before objects that notify the main thread are made. The
    // queue must outlive every object that remembered it.
    static void SetCurrent(LMainThreadQueue* queue);
};
