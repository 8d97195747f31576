#include "platform/Components.h"

#include "platform/Folders.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "platform/UserFolders.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

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

// How long a component may take to tell its version.
constexpr int kVersionWaitMs = 5000;

// A program that told its version, known by its file: one that is replaced, changed or made
// another mode is a new file.
struct RanFile {
    std::string path;
    dev_t device;
    ino_t inode;
    off_t size;
    mode_t mode;
    timespec modified;

    bool Is(const char* other, const struct stat& info) const {
        return path == other && device == info.st_dev && inode == info.st_ino &&
               size == info.st_size && mode == info.st_mode &&
               modified.tv_sec == info.st_mtim.tv_sec && modified.tv_nsec == info.st_mtim.tv_nsec;
    }
};

// The programs found to run so far: each conversion looks for its encoder, and asking it for
// its version every time would hold up every conversion.
std::mutex gRanMutex;
std::vector<RanFile> gRan;

bool RanBefore(const char* path, const struct stat& info) {
    const std::lock_guard lock(gRanMutex);
    for (const RanFile& ran : gRan)
        if (ran.Is(path, info)) return true;
    return false;
}

// Waits up to `ms` for the child to end and reaps it; false when it is still running. The
// kernel wakes the wait as the child ends, so a quick program is not held up by a polling step.
bool EndsWithin(pid_t pid, int ms, int& status) {
    const int fd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    if (fd < 0) {
        for (int waited = 0; waitpid(pid, &status, WNOHANG) == 0; waited += 10) {
            if (waited >= ms) return false;
            usleep(10'000);
        }
        return true;
    }
    pollfd ended{fd, POLLIN, 0};
    int ready;
    do {
        ready = poll(&ended, 1, ms);
    } while (ready < 0 && errno == EINTR);
    close(fd);
    return ready > 0 && waitpid(pid, &status, 0) == pid;
}

// Tells whether "PATH --version" ends with status 0 within kVersionWaitMs.
bool AnswersItsVersion(const char* path) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", O_RDWR, 0);
    char* argv[] = {const_cast<char*>(path), const_cast<char*>("--version"), nullptr};
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, path, &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) return false;
    int status = 0;
    if (!EndsWithin(pid, kVersionWaitMs, status)) {
        kill(pid, SIGKILL);
        waitpid(pid, &status, 0);
        return false;
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

std::string LFindProgramOnPath(const char* program) {
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

bool LComponentRuns(const char* path) {
    struct stat info;
    if (stat(path, &info) != 0) return false;
    if (RanBefore(path, info)) return true;
    if (!AnswersItsVersion(path)) return false;
    const std::lock_guard lock(gRanMutex);
    gRan.push_back({path, info.st_dev, info.st_ino, info.st_size, info.st_mode, info.st_mtim});
    return true;
}

namespace {

// The folder of the components installed with the program, PREFIX/libexec/vinora for a program
// in PREFIX/bin (the install rules put them there); empty when the program's own path is unknown.
std::string InstalledComponentFolder() {
    char program[kPathBufferSize];
    const ssize_t length = readlink("/proc/self/exe", program, sizeof program - 1);
    if (length <= 0) return {};
    program[length] = '\0';
    char bin[kPathBufferSize], prefix[kPathBufferSize];
    _GetFolderFromPath(bin, program);
    _GetFolderFromPath(prefix, bin);
    return std::string(prefix) + "/libexec/vinora";
}

// A component installed with the program that runs, such as "mp3el" linked to the encoder the
// package depends on.
bool FindInstalledCopy(const char* name, char* out) {
    const std::string folder = InstalledComponentFolder();
    if (folder.empty()) return false;
    const std::string path = folder + "/" + name;
    if (path.size() >= kPathBufferSize || access(path.c_str(), X_OK) != 0 ||
        !LComponentRuns(path.c_str()))
        return false;
    std::snprintf(out, kPathBufferSize, "%s", path.c_str());
    return true;
}

bool FindSystemCopy(const char* name, char* out) {
    for (const SystemCopy& copy : kSystemCopies) {
        if (std::strcmp(copy.component, name) != 0) continue;
        const std::string found = LFindProgramOnPath(copy.program);
        if (found.empty() || found.size() >= kPathBufferSize || !LComponentRuns(found.c_str()))
            return false;
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
        if (!S_ISREG(info.st_mode)) return true;
        chmod(out, 0755);
        if (LComponentRuns(out)) return true;
        LOGERROR("The component %s does not run", out);
    }
    if (allowSystemCopy && (FindInstalledCopy(name, out) || FindSystemCopy(name, out)))
        return true;
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
