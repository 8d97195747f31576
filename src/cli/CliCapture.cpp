#include "cli/Commands.h"

#include <cstdio>

int CliCapture(const CliArgs&) {
    std::fprintf(stderr, "vinora-cli: capture is not available yet\n");
    return 2;
}
