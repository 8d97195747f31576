#pragma once

#include "jobs/LockObject.h"
#include "jobs/ProcessInterface.h"

#include <atomic>
#include <mutex>
#include <sys/types.h>
#include <thread>

// A worker thread that is itself the LProcessInterface of the job it runs: the job sees stop
// requests (StopThreadSoon from any thread) through IsToStop and the waits.
//
// Lifecycle: idle -> Start -> running -> ThreadFunction returns -> finished (the thread is
// joined by the next Start or by StopThreadNow). A stop request stays set until the next Start.
//
// The destructor stops and joins the thread, but by then a derived object is already gone:
// every derived class whose ThreadFunction uses its own members must call StopThreadNow() in its
// own destructor.
class LThread : public LProcessInterface {
public:
    LThread() = default;
    ~LThread() override;
    LThread(const LThread&) = delete;
    LThread& operator=(const LThread&) = delete;

    // Starts ThreadFunction on a new thread at `priority` (see ThreadPriority.h). Does nothing
    // while the thread function still runs; a finished thread is joined first. Clears the stop
    // and finished signals. Calls are serialised; must not race with StopThreadNow.
    void Start(int priority);
    // Starts at the calling thread's own priority.
    void StartSame();
    // Asks the thread to stop and returns at once.
    void StopThreadSoon();
    // Asks the thread to stop and waits until it has ended.
    void StopThreadNow();

    bool IsRunning() const { return running_; }
    // The kernel id of the running thread, 0 when none runs.
    pid_t ThreadId() const { return threadId_; }

    // Changes the running thread's priority (remembered for the next Start otherwise).
    void SetPriority(int priority);
    // The priority of a kernel thread (gettid()); 31 when it cannot be told.
    static int GetPriority(pid_t thread);

    // Whether a stop has been requested.
    bool IsToStop() override;
    // Inside the thread: waits up to ms for a stop request and returns whether one came.
    // From any other thread: waits up to ms for the thread to finish and returns whether it has.
    bool ProcessWait(unsigned int ms) override;
    // WAIT_STOPPED when a stop is requested (even if the signal is set too), WAIT_SIGNALED when
    // the signal is set, WAIT_TIMEOUT when neither happens within ms.
    int ProcessWaitSignal(LSignalObjectRef signal, unsigned int ms) override;
    // The same over a group; the group itself is left unchanged.
    int ProcessWaitSignalObjectGroup(LSignalObjectGroup& group, unsigned int ms) override;

protected:
    // The body of the thread.
    virtual void ThreadFunction() = 0;

private:
    void ThreadCallback();

    std::thread thread_;
    std::atomic<bool> running_ = false;
    LSignalObject stop_;
    LSignalObject finished_;
    LLockObject lock_{false};

    // The priority and the kernel id of the thread, guarded together so that a priority change
    // never reaches a thread that is not (or no longer) ours.
    std::mutex priorityMutex_;
    int priority_ = 31;
    std::atomic<pid_t> threadId_ = 0;
};
