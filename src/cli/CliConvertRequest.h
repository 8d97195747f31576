#pragma once

#include "cli/Commands.h"
#include "restore/ConvertJob.h"

#include <string>
#include <vector>

// Restoration steps named on the command line: when any is given, exactly these steps run
// instead of the ones chosen in the settings.
struct CliRestoreSteps {
    bool given = false;
    LRestoreChoices choices;
};

// Fills a conversion request from "SRC DEST [--restore] [--copy-to DIR]": DEST names the output
// file; its folder and extension choose where and how it is written. With `steps`, the step
// options (--dc --hpf --speed N --clickpop --noise --riaa --normalize) are taken too and imply
// --restore; without, they are refused. False, with the usage on stderr, when the words do not
// make a request.
bool CliParseConvertRequest(const CliArgs& args, const char* usage, LProcessConvert& request,
                            CliRestoreSteps* steps = nullptr);
