#include "jobs/UserInteraction.h"

#include "jobs/ConsoleUserInteraction.h"

#include <atomic>

namespace {

std::atomic<LUserInteraction*> current = nullptr;

} // namespace

LUserInteraction& UserInteraction() {
    static LConsoleUserInteraction console;
    LUserInteraction* interaction = current;
    return interaction ? *interaction : console;
}

void SetUserInteraction(LUserInteraction* interaction) {
    current = interaction;
}
