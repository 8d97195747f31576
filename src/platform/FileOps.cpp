#include "platform/FileOps.h"

#include "platform/AtomicFile.h"
#include "platform/File.h"
#include "platform/FileLock.h"
#include "platform/Paths.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <strings.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t kCopyChunk = 8192;
// How long a copy waits for another program to finish writing either file.
constexpr uint32_t kCopyLockWaitMs = 500;

bool SameFile(const char* a, const char* b) {
    struct stat infoA, infoB;
    return stat(a, &infoA) == 0 && stat(b, &infoB) == 0 && infoA.st_dev == infoB.st_dev &&
           infoA.st_ino == infoB.st_ino;
}

// Copies `from` whole into `to` (which keeps its old content when anything fails) with the
// given mode, synced to the disk when `sync`.
bool CopyWhole(const char* from, const char* to, mode_t mode, bool sync) {
    if (SameFile(from, to)) return false;
    LFile source(_OpenRead(from, kCopyLockWaitMs));
    if (!source.IsOpen()) return false;
    LAtomicFile target(to);
    if (!target.IsOpen()) return false;
    char chunk[kCopyChunk];
    for (;;) {
        const ssize_t got = source.Read(chunk, sizeof chunk);
        if (got < 0) return false;
        if (got == 0) break;
        if (!target.File().Write(chunk, static_cast<std::size_t>(got))) return false;
    }
    return target.Commit(mode, sync);
}

} // namespace

bool AppendFile(const char* path, const void* data, std::size_t length, uint32_t waitMs) {
    LFile file(_OpenAppendAlways(path, waitMs));
    return file.IsOpen() && file.Write(data, length);
}

bool LoadFile(const char* path, std::vector<uint8_t>& data, uint32_t waitMs) {
    LFile file(_OpenRead(path, waitMs));
    if (!file.IsOpen()) return false;
    const int64_t size = file.GetSize();
    if (size < 0) return false;
    data.resize(static_cast<std::size_t>(size));
    const ssize_t got = file.Read(data.data(), data.size());
    if (got < 0) return false;
    data.resize(static_cast<std::size_t>(got));
    return true;
}

bool SaveFile(const char* path, const void* data, std::size_t length, uint32_t waitMs) {
    // The lock keeps other writers of the old file out while the new one is made. A missing file
    // is not created for it: a save that fails then leaves nothing behind.
    LFile old(open(path, O_RDWR | O_CLOEXEC));
    if (old.IsOpen()) flocktimed(old.GetFd(), LOCK_EX, waitMs);
    LAtomicFile file(path);
    return file.IsOpen() && file.File().Write(data, length) && file.Commit(kFileMode, true);
}

bool CopyFile(const char* from, const char* to) {
    return CopyWhole(from, to, kFileMode, true);
}

bool MoveFile(const char* from, const char* to) {
    if (std::rename(from, to) == 0) return true;
    if (errno != EXDEV) return false;
    // Across file systems: the copy is on the disk before the source goes.
    struct stat info;
    if (stat(from, &info) != 0 || !CopyWhole(from, to, info.st_mode & 0777, true)) return false;
    return unlink(from) == 0;
}

bool RenameNoReplace(const char* from, const char* to) {
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
    if (errno == EEXIST) {
        // The "existing" file is the source itself under another case: a plain rename is safe.
        if (std::strcmp(from, to) != 0 && strcasecmp(from, to) == 0 && SameFile(from, to))
            return std::rename(from, to) == 0;
        return false;
    }
    if (errno != EINVAL && errno != ENOSYS) return false;
    // A file system without the flag: a new link fails rather than replace.
    if (link(from, to) != 0) return false;
    return unlink(from) == 0;
}

bool SyncFile(const char* path) {
    LFile file(open(path, O_RDONLY | O_CLOEXEC));
    return file.IsOpen() && fsync(file.GetFd()) == 0;
}

bool TestFolderWritable(const char* folder) {
    char path[kPathBufferSize];
    _MakeFilePath(path, folder, "__wt");
    // Only a file this test made is removed: when the folder holds a "__wt" already (someone
    // else's), a name of our own is tried instead.
    int fd = open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0 && errno == EEXIST) {
        _MakeFilePath(path, folder, "__wtXXXXXX");
        fd = mkostemp(path, O_CLOEXEC);
    }
    if (fd < 0) return false;
    close(fd);
    unlink(path);
    return true;
}

bool GetTempFile(const char* folder, char* out, const char* ext) {
    char path[kPathBufferSize];
    _MakeFilePath(path, folder, "0XXXXXX", ext);
    const int fd = mkostemps(path, static_cast<int>(std::strlen(ext)), O_CLOEXEC);
    if (fd < 0) {
        out[0] = '\0';
        return false;
    }
    fchmod(fd, kFileMode);
    close(fd);
    std::memcpy(out, path, kPathBufferSize);
    return true;
}

bool IsNameTaken(const char* path) {
    struct stat info;
    return lstat(path, &info) == 0;
}

bool IsSameFile(const char* a, const char* b) {
    return std::strcmp(a, b) == 0 || SameFile(a, b);
}

time_t GetFileModifiedTime(const char* path) {
    struct stat info;
    return stat(path, &info) == 0 ? info.st_mtime : -1;
}

time_t GetFileCreateTime(const char* path) {
    struct statx info;
    if (statx(AT_FDCWD, path, 0, STATX_BTIME, &info) != 0 || !(info.stx_mask & STATX_BTIME))
        return -1;
    return static_cast<time_t>(info.stx_btime.tv_sec);
}
