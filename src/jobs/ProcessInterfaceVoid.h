#pragma once

#include "jobs/ProcessInterface.h"

// Runs a job with no user interface: it is never asked to stop and shows nothing.
class LProcessInterfaceVoid : public LProcessInterface {
public:
    bool IsToStop() override { return false; }
    // Sleeps ms and returns false.
    bool ProcessWait(unsigned int ms) override;
    int ProcessWaitSignal(LSignalObjectRef signal, unsigned int ms) override;
    int ProcessWaitSignalObjectGroup(LSignalObjectGroup& group, unsigned int ms) override;
};
