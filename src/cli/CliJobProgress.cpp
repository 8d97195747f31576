#include "cli/CliJobProgress.h"

#include <cstdio>
#include <unistd.h>

CliJobProgress::CliJobProgress() : terminal_(isatty(STDERR_FILENO) == 1) {}

CliJobProgress::~CliJobProgress() {
    if (shown_) std::fputc('\n', stderr);
}

bool CliJobProgress::IsToStop() {
    return CliInterrupted();
}

void CliJobProgress::SetStatus(const char* text, int line) {
    if (line == 0) status_ = text;
}

void CliJobProgress::SetProgress(double fraction) {
    const int percent = static_cast<int>(fraction * 100 + 0.5);
    if (!terminal_ || percent == lastPercent_) return;
    lastPercent_ = percent;
    shown_ = true;
    std::fprintf(stderr, "\r%s: %3d%%", status_.c_str(), percent);
    std::fflush(stderr);
}
