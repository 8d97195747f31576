#include "platform/UserFolders.h"

#include "platform/Folders.h"
#include "platform/Paths.h"

#include <cstdio>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace {

constexpr const char* kCompanyFolder = "Brakwater Software";
constexpr const char* kProductFolder = "Vinora";

// The value of an environment variable when it holds an absolute path, else empty.
std::string AbsoluteFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    if (!value || value[0] != '/') return {};
    return value;
}

// The first line a command prints, without its line end; empty when it fails.
std::string FirstOutputLine(const char* command) {
    FILE* pipe = popen(command, "r");
    if (!pipe) return {};
    char line[kPathBufferSize] = {};
    const bool got = std::fgets(line, sizeof line, pipe) != nullptr;
    const int status = pclose(pipe);
    if (!got || status != 0) return {};
    std::string text = line;
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    return text;
}

void CopyOut(char* out, const std::string& path) {
    std::snprintf(out, kPathBufferSize, "%s", path.c_str());
}

} // namespace

std::string GetHomeFolder() {
    if (const char* home = std::getenv("HOME"); home && home[0]) return home;
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir) return entry->pw_dir;
    return "/";
}

std::string GetConfigHomeFolder() {
    std::string folder = AbsoluteFromEnvironment("XDG_CONFIG_HOME");
    return folder.empty() ? GetHomeFolder() + "/.config" : folder;
}

void GetUserApplicationSupportFolder(char* out) {
    std::string folder = AbsoluteFromEnvironment("XDG_DATA_HOME");
    CopyOut(out, folder.empty() ? GetHomeFolder() + "/.local/share" : folder);
}

void GetUserMusicFolder(char* out) {
    // xdg-user-dir answers the home folder itself when no music folder is configured.
    const std::string home = GetHomeFolder();
    const std::string music = FirstOutputLine("xdg-user-dir MUSIC 2>/dev/null");
    const bool configured =
        !music.empty() && music[0] == '/' && music != home && music != home + "/";
    CopyOut(out, configured ? music : home + "/Music");
}

bool GetApplicationDataFolder(char* out) {
    char support[kPathBufferSize], company[kPathBufferSize];
    GetUserApplicationSupportFolder(support);
    _MakeFilePath(company, support, kCompanyFolder);
    _MakeFilePath(out, company, kProductFolder);
    return CreateFolderTree(out);
}

bool GetApplicationSubFolder(char* out, const char* name) {
    char data[kPathBufferSize];
    const bool created = GetApplicationDataFolder(data);
    _MakeFilePath(out, data, name);
    return created && CreateFolder(out);
}
