#include "jobs/MainThreadQueue.h"

#include <atomic>

namespace {

std::atomic<LMainThreadQueue*> currentQueue = nullptr;

} // namespace

LMainThreadQueue* LMainThreadQueue::Current() {
    return currentQueue;
}

void LMainThreadQueue::SetCurrent(LMainThreadQueue* queue) {
    currentQueue = queue;
}
