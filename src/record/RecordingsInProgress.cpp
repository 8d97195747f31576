#include "record/RecordingsInProgress.h"

#include "platform/FileOps.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "platform/UserFolders.h"
#include "restore/RecoveredRecordings.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdint>
#include <mutex>
#include <utility>

namespace {

constexpr uint32_t kLockWaitMs = 1000;

using Entries = std::vector<std::pair<std::string, std::string>>; // path, name

std::mutex& ListMutex() {
    static std::mutex mutex;
    return mutex;
}

std::string ListPath() {
    char folder[kPathBufferSize], path[kPathBufferSize];
    GetApplicationDataFolder(folder);
    _MakeFilePath(path, folder, "vnrecordings.list");
    return path;
}

Entries Load() {
    std::vector<uint8_t> bytes;
    Entries entries;
    if (!LoadFile(ListPath().c_str(), bytes, kLockWaitMs)) return entries;
    const std::string text(bytes.begin(), bytes.end());
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = text.find('\n', at);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(at, end - at);
        const std::size_t tab = line.find('\t');
        if (tab != std::string::npos)
            entries.emplace_back(line.substr(0, tab), line.substr(tab + 1));
        at = end + 1;
    }
    return entries;
}

void Save(const Entries& entries) {
    const std::string path = ListPath();
    if (entries.empty()) {
        unlink(path.c_str());
        return;
    }
    std::string text;
    for (const auto& [recording, name] : entries)
        text += recording + '\t' + name + '\n';
    if (!SaveFile(path.c_str(), text.data(), text.size(), kLockWaitMs))
        LOGWARN("The list of recordings in progress %s could not be written", path.c_str());
}

void Forget(Entries& entries, const std::string& path) {
    std::erase_if(entries, [&](const auto& entry) { return entry.first == path; });
}

// A recorder writing the file holds a shared lock on it.
bool IsHeld(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool held = flock(fd, LOCK_EX | LOCK_NB) != 0;
    close(fd);
    return held;
}

} // namespace

void LNoteRecordingStarted(const char* path, const std::string& name) {
    std::lock_guard guard(ListMutex());
    Entries entries = Load();
    Forget(entries, path);
    entries.emplace_back(path, name);
    Save(entries);
}

void LNoteRecordingEnded(const char* path) {
    std::lock_guard guard(ListMutex());
    Entries entries = Load();
    const std::size_t before = entries.size();
    Forget(entries, path);
    if (entries.size() != before) Save(entries);
}

std::vector<std::string> LRecoverAbandonedRecordings(const std::string& outputFolder) {
    std::lock_guard guard(ListMutex());
    Entries entries = Load();
    std::vector<std::string> recovered;
    Entries kept;
    for (const auto& [path, name] : entries) {
        if (access(path.c_str(), F_OK) != 0) continue;
        char moved[kPathBufferSize];
        if (IsHeld(path) ||
            !LRecoverRecording(path.c_str(), outputFolder.c_str(), name.c_str(), moved)) {
            kept.emplace_back(path, name);
            continue;
        }
        LOGWARN(
            "The recording %s was left by a program that ended while recording; it was kept as %s",
            path.c_str(), moved);
        recovered.emplace_back(moved);
    }
    if (kept.size() != entries.size()) Save(kept);
    return recovered;
}
