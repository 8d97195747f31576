#include "cli/CliConvertRequest.h"

#include "platform/Paths.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

// The on/off steps: option and choice.
struct StepOption {
    const char* option;
    bool LRestoreChoices::*step;
};
constexpr StepOption kStepOptions[] = {
    {"--dc", &LRestoreChoices::dcOffset},         {"--hpf", &LRestoreChoices::highPass},
    {"--clickpop", &LRestoreChoices::clickPop},   {"--noise", &LRestoreChoices::noiseReduce},
    {"--riaa", &LRestoreChoices::equalization},   {"--normalize", &LRestoreChoices::normalization},
};

bool CopyField(char (&field)[260], const std::string& text) {
    if (text.size() >= sizeof field) return false;
    std::snprintf(field, sizeof field, "%s", text.c_str());
    return true;
}

// Takes args[i] (and its value) when it is a step option; false when it is not one or its
// value is bad.
bool TakeStepOption(const CliArgs& args, size_t& i, CliRestoreSteps& steps) {
    if (args[i] == "--speed") {
        if (i + 1 >= args.size()) return false;
        const std::string& value = args[++i];
        if (value != "0" && value != "1" && value != "2") return false;
        steps.choices.recordSpeed = value[0] - '0';
        steps.given = true;
        return true;
    }
    for (const StepOption& step : kStepOptions) {
        if (args[i] != step.option) continue;
        steps.choices.*step.step = true;
        steps.given = true;
        return true;
    }
    return false;
}

} // namespace

bool CliParseConvertRequest(const CliArgs& args, const char* usage, LProcessConvert& request,
                            CliRestoreSteps* steps) {
    request = LProcessConvert();
    request.restore = 0;
    request.addToList = 0;
    std::vector<std::string> paths;
    bool ok = true;
    for (size_t i = 0; i < args.size() && ok; ++i) {
        if (args[i] == "--restore") {
            request.restore = 1;
        } else if (args[i] == "--copy-to" && i + 1 < args.size()) {
            request.copyToFolder = 1;
            ok = CopyField(request.copyFolder, args[++i]);
        } else if (args[i].starts_with("--")) {
            ok = steps && TakeStepOption(args, i, *steps);
        } else {
            paths.push_back(args[i]);
        }
    }
    if (steps && steps->given) request.restore = 1;
    if (ok && paths.size() == 2 && CopyField(request.sourcePath, paths[0]) &&
        CopyField(request.destinationPath, paths[1])) {
        _GetFolderFromPath(request.outputFolder, request.destinationPath);
        // A name alone lies in the current folder; a file at the root in the root.
        if (request.outputFolder[0] == 0)
            CopyField(request.outputFolder, request.destinationPath[0] == '/' ? "/" : ".");
        _GetFileExtensionFromPath(request.outputExtension, request.destinationPath);
        return true;
    }
    std::fputs(usage, stderr);
    return false;
}
