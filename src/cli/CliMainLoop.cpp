#include "cli/CliMainLoop.h"

namespace {

volatile std::sig_atomic_t gInterrupted = 0;

extern "C" void OnCliInterrupt(int) {
    gInterrupted = 1;
}

} // namespace

CliInterruptGuard::CliInterruptGuard() {
    gInterrupted = 0;
    struct sigaction action = {};
    action.sa_handler = OnCliInterrupt;
    sigaction(SIGINT, &action, &oldInt_);
    sigaction(SIGTERM, &action, &oldTerm_);
}

CliInterruptGuard::~CliInterruptGuard() {
    sigaction(SIGINT, &oldInt_, nullptr);
    sigaction(SIGTERM, &oldTerm_, nullptr);
}

bool CliInterrupted() {
    return gInterrupted != 0;
}

LPlainMainQueue& CliMainQueue() {
    static LPlainMainQueue queue;
    return queue;
}
