#include "cli/Commands.h"

#include <cstdio>

int CliSettings(const CliArgs&)
{
    std::fprintf(stderr, "vinora-cli settings: not available yet\n");
    return 2;
}
