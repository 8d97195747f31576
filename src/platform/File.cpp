#include "platform/File.h"

#include "platform/FileLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t kNewFileMode = 0644;

int OpenLocked(const char* path, int flags, int lock, uint32_t waitMs) {
    const int fd = open(path, flags | O_CLOEXEC, kNewFileMode);
    if (fd >= 0) flocktimed(fd, lock, waitMs);
    return fd;
}

} // namespace

int _OpenRead(const char* path, uint32_t waitMs) {
    return OpenLocked(path, O_RDONLY, LOCK_SH, waitMs);
}

int _OpenWrite(const char* path, uint32_t waitMs) {
    // Truncate only once the lock is held, so a reader holding it never sees the file shrink.
    const int fd = OpenLocked(path, O_WRONLY | O_CREAT, LOCK_EX, waitMs);
    if (fd >= 0 && ftruncate(fd, 0) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

int _OpenReadWrite(const char* path, uint32_t waitMs) {
    return OpenLocked(path, O_RDWR | O_CREAT, LOCK_EX, waitMs);
}

int _OpenAppendAlways(const char* path, uint32_t waitMs) {
    return OpenLocked(path, O_WRONLY | O_CREAT | O_APPEND, LOCK_EX, waitMs);
}

int LReadWriteFile(const char* path) {
    const int fd = open(path, O_RDWR | O_CREAT | O_CLOEXEC, kNewFileMode);
    if (fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

LFile& LFile::operator=(LFile&& other) noexcept {
    if (this != &other) {
        Close();
        fd_ = other.fd_;
        other.fd_ = -1;
    }
    return *this;
}

ssize_t LFile::Read(void* data, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = read(fd_, static_cast<char*>(data) + done, size - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return -1;
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(done);
}

bool LFile::Write(const void* data, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t put = write(fd_, static_cast<const char*>(data) + done, size - done);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        done += static_cast<std::size_t>(put);
    }
    return true;
}

int64_t LFile::Seek(int64_t offset, int whence) {
    return lseek(fd_, offset, whence);
}

int64_t LFile::GetSize() const {
    struct stat info;
    return fstat(fd_, &info) == 0 ? info.st_size : -1;
}

void LFile::Close() {
    if (fd_ >= 0) {
        close(fd_);
        fd_ = -1;
    }
}
