#pragma once

#include "jobs/MainThreadQueue.h"

// The main-thread queue of the desktop program: posted calls run on the GUI thread through
// Qt's event loop, in the order they were posted.
class LQtMainThreadQueue : public LMainThreadQueue {
public:
    void Post(std::function<void()> call) override;
};
