#include "jobs/Thread.h"

#include "jobs/ThreadPriority.h"

#include <system_error>
#include <unistd.h>

LThread::~LThread() {
    StopThreadNow();
}

void LThread::Start(int priority) {
    std::lock_guard guard(lock_);
    if (thread_.joinable()) {
        if (running_) return;
        thread_.join();
    }
    stop_.Reset();
    finished_.Reset();
    running_ = true;
    {
        std::lock_guard priorityGuard(priorityMutex_);
        priority_ = priority;
    }
    try {
        thread_ = std::thread(&LThread::ThreadCallback, this);
    } catch (const std::system_error&) {
        // No thread could be made: behave as a thread that finished at once.
        running_ = false;
        finished_.Signal();
    }
}

void LThread::StartSame() {
    Start(GetPriority(gettid()));
}

void LThread::ThreadCallback() {
    {
        std::lock_guard guard(priorityMutex_);
        threadId_ = gettid();
        ThreadPriority::Apply(threadId_, priority_);
    }
    ThreadFunction();
    {
        std::lock_guard guard(priorityMutex_);
        threadId_ = 0;
    }
    running_ = false;
    finished_.Signal();
}

void LThread::StopThreadSoon() {
    stop_.Signal();
}

void LThread::StopThreadNow() {
    if (!thread_.joinable()) return;
    StopThreadSoon();
    thread_.join();
}

void LThread::SetPriority(int priority) {
    std::lock_guard guard(priorityMutex_);
    priority_ = priority;
    if (threadId_ != 0) ThreadPriority::Apply(threadId_, priority);
}

int LThread::GetPriority(pid_t thread) {
    return ThreadPriority::Read(thread);
}

bool LThread::IsToStop() {
    return stop_.IsSignaled();
}

bool LThread::ProcessWait(unsigned int ms) {
    if (threadId_ == gettid()) return stop_.WaitSignal(ms);
    return finished_.WaitSignal(ms);
}

int LThread::ProcessWaitSignal(LSignalObjectRef signal, unsigned int ms) {
    LSignalObjectGroup group;
    group.Add(signal);
    return ProcessWaitSignalObjectGroup(group, ms);
}

int LThread::ProcessWaitSignalObjectGroup(LSignalObjectGroup& group, unsigned int ms) {
    if (!group.Select(ms, stop_)) return WAIT_TIMEOUT;
    return group.IsReady(stop_) ? WAIT_STOPPED : WAIT_SIGNALED;
}
