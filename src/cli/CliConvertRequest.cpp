#include "cli/CliConvertRequest.h"

#include "platform/Paths.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

bool CopyField(char (&field)[260], const std::string& text) {
    if (text.size() >= sizeof field) return false;
    std::snprintf(field, sizeof field, "%s", text.c_str());
    return true;
}

} // namespace

bool CliParseConvertRequest(const CliArgs& args, const char* usage, LProcessConvert& request) {
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
            ok = false;
        } else {
            paths.push_back(args[i]);
        }
    }
    if (ok && paths.size() == 2 && CopyField(request.sourcePath, paths[0]) &&
        CopyField(request.destinationPath, paths[1])) {
        _GetFolderFromPath(request.outputFolder, request.destinationPath);
        if (request.outputFolder[0] == 0) CopyField(request.outputFolder, ".");
        _GetFileExtensionFromPath(request.outputExtension, request.destinationPath);
        return true;
    }
    std::fputs(usage, stderr);
    return false;
}
