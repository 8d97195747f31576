#include "jobs/ProcessInterfaceVoid.h"

#include <chrono>
#include <thread>

bool LProcessInterfaceVoid::ProcessWait(unsigned int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
    return false;
}

int LProcessInterfaceVoid::ProcessWaitSignal(LSignalObjectRef signal, unsigned int ms) {
    return signal.WaitSignal(ms) ? WAIT_SIGNALED : WAIT_TIMEOUT;
}

int LProcessInterfaceVoid::ProcessWaitSignalObjectGroup(LSignalObjectGroup& group,
                                                        unsigned int ms) {
    return group.Select(ms) ? WAIT_SIGNALED : WAIT_TIMEOUT;
}
