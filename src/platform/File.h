#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <sys/types.h>

// Opening files with advisory locks. Each returns a file descriptor, or -1 when the file
// cannot be opened. `waitMs` bounds the wait for the lock (see flocktimed); when the lock is
// not obtained in time the file is opened and used without it. New files get the permission
// bits 0644 (less the process's file-creation mask). Descriptors are closed on exec.

// Read only, shared lock.
int _OpenRead(const char* path, uint32_t waitMs);
// Write only, created when missing, exclusive lock, then truncated to 0 bytes.
int _OpenWrite(const char* path, uint32_t waitMs);
// Read and write, created when missing, exclusive lock.
int _OpenReadWrite(const char* path, uint32_t waitMs);
// Write only, created when missing, exclusive lock; every write goes to the end.
int _OpenAppendAlways(const char* path, uint32_t waitMs);
// Read and write, created when missing, with an exclusive lock taken without waiting: fails
// while another open file holds a lock on it.
int LReadWriteFile(const char* path);

// Owns an open file descriptor and closes it when destroyed:
//   LFile file(_OpenRead(path, 1000));
//   if (file.IsOpen()) file.Read(buffer, size);
class LFile {
public:
    LFile() = default;
    explicit LFile(int fd) : fd_(fd) {}
    ~LFile() { Close(); }
    LFile(LFile&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
    LFile& operator=(LFile&& other) noexcept;
    LFile(const LFile&) = delete;
    LFile& operator=(const LFile&) = delete;

    bool IsOpen() const { return fd_ >= 0; }
    int GetFd() const { return fd_; }

    // Reads up to `size` bytes; fewer only at the end of the file. -1 on error.
    ssize_t Read(void* data, std::size_t size);
    // Writes all `size` bytes; false when any could not be written.
    bool Write(const void* data, std::size_t size);
    // Moves the position (whence SEEK_SET, SEEK_CUR or SEEK_END); the new position or -1.
    int64_t Seek(int64_t offset, int whence = SEEK_SET);
    // Size in bytes, or -1.
    int64_t GetSize() const;
    void Close();

private:
    int fd_ = -1;
};
