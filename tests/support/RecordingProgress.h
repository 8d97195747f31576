#pragma once

#include "jobs/ProcessInterface.h"

#include <string>
#include <utility>
#include <vector>

// A job interface that keeps every status text and progress value it is given and can ask the
// job to stop after a number of stop queries.
class RecordingProgress : public LProcessInterface {
public:
    // IsToStop answers false this many times, then true; negative: never true.
    int stopAfter = -1;
    int stopQueries = 0;
    std::vector<std::pair<std::string, int>> statuses;
    std::vector<double> progress;

    bool IsToStop() override { return stopAfter >= 0 && stopQueries++ >= stopAfter; }
    bool ProcessWait(unsigned int) override { return IsToStop(); }
    int ProcessWaitSignal(LSignalObjectRef, unsigned int) override { return WAIT_TIMEOUT; }
    int ProcessWaitSignalObjectGroup(LSignalObjectGroup&, unsigned int) override
    {
        return WAIT_TIMEOUT;
    }
    void SetStatus(const char* text, int line) override { statuses.emplace_back(text, line); }
    void SetProgress(double fraction) override { progress.push_back(fraction); }
};
