#pragma once

#include "cli/Commands.h"
#include "platform/Settings.h"
#include "restore/ConvertJob.h"

#include <string>
#include <vector>

// Restoration steps named on the command line: when any is given, exactly these steps run
// instead of the ones chosen in the settings.
struct CliRestoreSteps {
    bool given = false;
    std::vector<std::string> keys; // "AudioRestoration" keys of the steps turned on
    int speed = 0;                 // "RecordingSpeed": 0 none, 1 45 to 33 RPM, 2 78 to 45 RPM

    // Makes this process's conversions use these steps while `override` lives (nothing when
    // no step was given).
    void Apply(LUserSettingOverride& override) const;
};

// Fills a conversion request from "SRC DEST [--restore] [--copy-to DIR]": DEST names the output
// file; its folder and extension choose where and how it is written. With `steps`, the step
// options (--dc --hpf --speed N --clickpop --noise --riaa --normalize) are taken too and imply
// --restore; without, they are refused. False, with the usage on stderr, when the words do not
// make a request.
bool CliParseConvertRequest(const CliArgs& args, const char* usage, LProcessConvert& request,
                            CliRestoreSteps* steps = nullptr);
