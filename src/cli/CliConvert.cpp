#include "cli/CliConvertRequest.h"
#include "cli/CliJobProgress.h"
#include "cli/Commands.h"

#include <cstdio>

namespace {

constexpr const char* kUsage =
    "usage: vinora-cli convert SRC DEST [--restore] [--copy-to DIR]\n"
    "  DEST ends in .wav or .mp3; --restore applies the restoration chosen in the settings\n";

} // namespace

int CliConvert(const CliArgs& args) {
    LProcessConvert request;
    if (!CliParseConvertRequest(args, kUsage, request)) return 2;
    CliJobProgress progress;
    const LProcessResult result = Process(progress, request);
    if (result == PROCESS_FAILED)
        std::fprintf(stderr, "vinora-cli convert: %s: the conversion failed (see the log)\n",
                     request.sourcePath);
    else if (result == PROCESS_STOPPED)
        std::fprintf(stderr, "vinora-cli convert: stopped\n");
    return result;
}
