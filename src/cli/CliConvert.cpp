#include "cli/CliConvertRequest.h"
#include "cli/CliJobProgress.h"
#include "cli/Commands.h"

#include <cstdio>

namespace {

constexpr const char* kUsage =
    "usage: vinora-cli convert SRC DEST [--restore] [--dc] [--hpf] [--speed 0|1|2] [--clickpop]\n"
    "                  [--noise] [--riaa] [--normalize] [--copy-to DIR]\n"
    "  DEST ends in .wav or .mp3; --restore applies the restoration chosen in the settings.\n"
    "  Step options choose the restoration for this run instead (the settings stay as they\n"
    "  are): --dc DC offset, --hpf high-pass, --speed 1 45 to 33 RPM or 2 78 to 45 RPM,\n"
    "  --clickpop clicks and pops, --noise noise reduction, --riaa RIAA equalisation,\n"
    "  --normalize to 80 %. Only the steps given run.\n";

} // namespace

int CliConvert(const CliArgs& args) {
    LProcessConvert request;
    CliRestoreSteps steps;
    if (!CliParseConvertRequest(args, kUsage, request, &steps)) return 2;
    CliJobProgress progress;
    const LProcessResult result =
        steps.given ? Process(progress, request, steps.choices) : Process(progress, request);
    if (result == PROCESS_FAILED)
        std::fprintf(stderr, "vinora-cli convert: %s: the conversion failed (see the log)\n",
                     request.sourcePath);
    else if (result == PROCESS_STOPPED)
        std::fprintf(stderr, "vinora-cli convert: stopped\n");
    return result;
}
