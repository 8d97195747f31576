#include "jobs/ThreadQueuedNotify.h"

LThreadQueuedNotify::LThreadQueuedNotify()
    : queue_(LMainThreadQueue::Current()), target_(std::make_shared<Target>(this)) {}

LThreadQueuedNotify::~LThreadQueuedNotify() {
    target_->object = nullptr;
}

void LThreadQueuedNotify::PostQueueNotify() {
    if (!queue_) return;
    queue_->Post([target = target_] {
        if (LThreadQueuedNotify* object = target->object) object->EvNotify();
    });
}
