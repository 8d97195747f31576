#include "platform/Components.h"

#include "platform/Folders.h"
#include "platform/Paths.h"
#include "platform/UserFolders.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char* kZipComponents[] = {"a52dec2", "a52dec3", "aacenc3", "aacdec2",
                                          "aacdec3", "amrenc2", "amrdec2", "mp3el2",
                                          "ffmpeg3", "ffmpeg4", "openssl"};

// Programs of the system that can stand in for a component that is not installed.
struct SystemCopy {
    const char* component;
    const char* program;
};
constexpr SystemCopy kSystemCopies[] = {{"mp3el", "lame"}};

// The first executable file called `program` in the folders of PATH, or empty.
std::string FindOnPath(const char* program) {
    const char* path = std::getenv("PATH");
    if (!path) return {};
    std::string_view folders = path;
    while (true) {
        const std::size_t end = folders.find(':');
        std::string candidate(folders.substr(0, end));
        candidate = (candidate.empty() ? std::string(".") : candidate) + "/" + program;
        struct stat info;
        if (stat(candidate.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
            access(candidate.c_str(), X_OK) == 0)
            return candidate;
        if (end == std::string_view::npos) return {};
        folders.remove_prefix(end + 1);
    }
}

bool FindSystemCopy(const char* name, char* out) {
    for (const SystemCopy& copy : kSystemCopies) {
        if (std::strcmp(copy.component, name) != 0) continue;
        const std::string found = FindOnPath(copy.program);
        if (found.empty() || found.size() >= kPathBufferSize) return false;
        std::snprintf(out, kPathBufferSize, "%s", found.c_str());
        return true;
    }
    return false;
}

} // namespace

bool GetComponentFolder(char* out) {
    char support[kPathBufferSize];
    GetUserApplicationSupportFolder(support);
    char company[kPathBufferSize];
    _MakeFilePath(company, support, "Brakwater Software");
    _MakeFilePath(out, company, "Components");
    return IsFolder(out) || CreateFolderTree(out);
}

bool GetComponentPath(const char* name, char* out, bool allowSystemCopy) {
    out[0] = '\0';
    char folder[kPathBufferSize];
    if (!GetComponentFolder(folder)) {
        std::snprintf(out, kPathBufferSize, "%s", folder);
        return false;
    }
    _MakeFilePath(out, folder, name);
    struct stat info;
    if (stat(out, &info) == 0) {
        if (S_ISREG(info.st_mode)) chmod(out, 0777);
        return true;
    }
    if (allowSystemCopy && FindSystemCopy(name, out)) return true;
    _MakeFilePath(out, folder, name);
    return false;
}

bool LIsZipComponent(const char* name) {
    for (const char* zip : kZipComponents)
        if (std::strcmp(zip, name) == 0) return true;
    return false;
}

void LGetComponentServerFileName(char* out, const char* name) {
    const char* suffix = std::strcmp(name, "ffmpeg4") == 0 ? "i" : "";
    const char* extension = LIsZipComponent(name) ? ".zip" : "";
    std::snprintf(out, kPathBufferSize, "%s%s%s", name, suffix, extension);
}
