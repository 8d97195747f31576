#pragma once

#include "jobs/PlainMainQueue.h"

#include <csignal>

// Catches Ctrl+C (SIGINT) and SIGTERM while it exists, so that a command asked to stop can finish
// the files it writes instead of being killed; the previous handlers come back when it goes.
class CliInterruptGuard {
public:
    CliInterruptGuard();
    ~CliInterruptGuard();
    CliInterruptGuard(const CliInterruptGuard&) = delete;
    CliInterruptGuard& operator=(const CliInterruptGuard&) = delete;

private:
    struct sigaction oldInt_ = {};
    struct sigaction oldTerm_ = {};
};

// Whether Ctrl+C or SIGTERM has arrived since the newest guard was made.
bool CliInterrupted();

// The main-thread queue of vinora-cli, installed at start-up.
LPlainMainQueue& CliMainQueue();

// Runs the main-thread queue for a command that waits for threads to report, until the command
// is done or interrupted (Ctrl+C or SIGTERM while the loop exists).
class CliMainLoop {
public:
    // Runs posted calls until `done()` or an interrupt; false for an interrupt.
    template <typename Done> bool Run(Done done) {
        while (!CliInterrupted())
            if (CliMainQueue().RunUntil(done, kPollMs)) return true;
        return false;
    }

private:
    // How often the loop looks for an interrupt while nothing is posted.
    static constexpr unsigned int kPollMs = 100;

    CliInterruptGuard interrupts_;
};
