#include "cli/Commands.h"

#include <cstdio>

int CliPlay(const CliArgs&) {
    std::fprintf(stderr, "vinora-cli: play is not available yet\n");
    return 2;
}
