#include "cli/Commands.h"

#include <cstdio>

int CliDevices(const CliArgs&) {
    std::fprintf(stderr, "vinora-cli: devices is not available yet\n");
    return 2;
}
