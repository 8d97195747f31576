#pragma once

#include "jobs/ProcessResult.h"
#include "jobs/SignalObject.h"
#include "jobs/SignalObjectGroup.h"

// Results of ProcessWaitSignal and ProcessWaitSignalObjectGroup.
enum LWaitResult : int {
    WAIT_SIGNALED = 0, // the signal (or some member of the group) is set
    WAIT_STOPPED = 1,  // a stop was requested; wins when the signal is set as well
    WAIT_TIMEOUT = 2,  // the time ran out or the wait failed
};

// What a job talks to: whether to stop, how to wait, where to report status and progress.
// The same job body runs behind a progress window, on a worker thread (LThread) or with no user
// interface at all (LProcessInterfaceVoid), depending on the interface it is handed.
//
// A job asks IsToStop() once per block and returns PROCESS_STOPPED when it is true; it waits
// only through the ProcessWait calls so that a stop request ends the wait.
class LProcessInterface {
public:
    virtual ~LProcessInterface() = default;

    virtual bool IsToStop() = 0;
    // Waits up to ms milliseconds; true means the job is to stop now.
    virtual bool ProcessWait(unsigned int ms) = 0;
    // Waits up to ms for the signal; returns an LWaitResult.
    virtual int ProcessWaitSignal(LSignalObjectRef signal, unsigned int ms) = 0;
    // Waits up to ms until some member of the group is set; returns an LWaitResult.
    virtual int ProcessWaitSignalObjectGroup(LSignalObjectGroup& group, unsigned int ms) = 0;

    virtual void SetError(const char* /*text*/) {}
    // Line 0 is the main status line (the step), line 1 the detail line.
    virtual void SetStatus(const char* /*text*/, int /*line*/) {}
    // Fraction 0.0 to 1.0 of the current step.
    virtual void SetProgress(double /*fraction*/) {}
    virtual void SetProgressIndeterminateOn() {}
    virtual void SetProgressIndeterminateOff() {}

    int ProcessWaitSignalForever(LSignalObjectRef signal) {
        return ProcessWaitSignal(signal, WAIT_FOREVER);
    }
};
