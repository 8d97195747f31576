#pragma once

#include "cli/CliMainLoop.h"
#include "jobs/ProcessInterfaceVoid.h"

#include <string>

// Runs a job from the command line: progress goes to stderr as "status: NN%" when stderr is a
// terminal, and Ctrl+C or SIGTERM asks the job to stop instead of killing the program, so that
// files being written are finished properly.
class CliJobProgress : public LProcessInterfaceVoid {
public:
    CliJobProgress();
    ~CliJobProgress() override;
    CliJobProgress(const CliJobProgress&) = delete;
    CliJobProgress& operator=(const CliJobProgress&) = delete;

    bool IsToStop() override;
    void SetStatus(const char* text, int line) override;
    void SetProgress(double fraction) override;

private:
    CliInterruptGuard interrupts_;
    bool terminal_;
    bool shown_ = false;
    std::string status_;
    int lastPercent_ = -1;
};
