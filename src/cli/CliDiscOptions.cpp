#include "cli/CliDiscOptions.h"

#include "burn/BurnMediaTypes.h"
#include "disc/Compilation.h"

#include <cstdio>
#include <cstdlib>

void CliDiscProgress::SetStatus(const char* text, int line) {
    CliJobProgress::SetStatus(text, line);
    // The drive layer's step marks (line 2) are for diagnosis, not for the user.
    if (line > 1) return;
    std::string& last = lines_[line];
    if (!*text || last == text) return;
    last = text;
    std::fprintf(stderr, "%s\n", text);
}

bool ParseDrive(const std::string& text, uint8_t& drive) {
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end || value < 0 || value > 254) return false;
    drive = uint8_t(value);
    return true;
}

bool ParseProject(const std::string& text, int& project) {
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    // An audio CD is not a data disc.
    if (end == text.c_str() || *end || value <= PROJECT_AUDIO_CD || value > PROJECT_HYBRID_DISK)
        return false;
    project = static_cast<int>(value);
    return true;
}

bool CliAddPaths(LAbstractFileSystem& compilation, const std::vector<std::string>& paths,
                 const char* command) {
    for (const std::string& path : paths) {
        std::string error;
        if (!compilation.AddPath(path, error)) {
            std::fprintf(stderr, "vinora-cli %s: %s\n", command, error.c_str());
            return false;
        }
    }
    return true;
}
