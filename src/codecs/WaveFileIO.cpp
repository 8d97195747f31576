#include "codecs/WaveFileIO.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

size_t ReadFileAt(const LFile& file, int64_t offset, void* data, size_t size, bool& failed) {
    size_t done = 0;
    while (done < size) {
        const ssize_t n = ::pread(file.GetFd(), static_cast<char*>(data) + done, size - done,
                                  static_cast<off_t>(offset + static_cast<int64_t>(done)));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) failed = true;
        if (n <= 0) break;
        done += static_cast<size_t>(n);
    }
    return done;
}

size_t ReadFileAt(const LFile& file, int64_t offset, void* data, size_t size) {
    bool failed = false;
    return ReadFileAt(file, offset, data, size, failed);
}

bool WriteFileAt(const LFile& file, int64_t offset, const void* data, size_t size) {
    size_t done = 0;
    while (done < size) {
        const ssize_t n = ::pwrite(file.GetFd(), static_cast<const char*>(data) + done, size - done,
                                   static_cast<off_t>(offset + static_cast<int64_t>(done)));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

bool TruncateFile(const LFile& file, int64_t length) {
    return ::ftruncate(file.GetFd(), static_cast<off_t>(length)) == 0;
}

LFile OpenSharedReadWrite(const char* path) {
    LFile file(::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    if (file.IsOpen() && ::flock(file.GetFd(), LOCK_SH | LOCK_NB) != 0) file.Close();
    return file;
}
