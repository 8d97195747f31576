#pragma once

#include "disc/WriteSectorCache.h"
#include "jobs/ProcessInterface.h"

#include <string>
#include <vector>

class LSCSI;

// The sectors appended to an open image file (named `path` in errors).
class LImageFileTarget : public LSectorTarget {
public:
    LImageFileTarget(int fd, std::string path) : fd_(fd), path_(std::move(path)) {}
    BurnErrorCode WriteSectors(const uint8_t* data, uint32_t sector, uint32_t count) override;
    int AppendFd() const override { return fd_; }
    // 37 for a full disk or a file size limit, else 32, with the path and the system's reason.
    BurnErrorCode SystemError(int error) const override;

private:
    int fd_;
    std::string path_;
};

// The sectors written to the disc from `start` on.
class LDiscWriteTarget : public LSectorTarget {
public:
    LDiscWriteTarget(LProcessInterface& job, LSCSI& device, uint32_t start)
        : job_(job), device_(device), start_(start) {}
    BurnErrorCode WriteSectors(const uint8_t* data, uint32_t sector, uint32_t count) override;

private:
    LProcessInterface& job_;
    LSCSI& device_;
    uint32_t start_;
};

// The sectors read back from the disc (from `start` on) and compared with the image: up to 5
// reads of a run before it counts as failed. Error 31 when the disc cannot be read, 30 when it
// holds other data, 1 when stopped.
class LDiscVerifyTarget : public LSectorTarget {
public:
    static constexpr int kAttempts = 5;

    LDiscVerifyTarget(LProcessInterface& job, LSCSI& device, uint32_t start, size_t sectorsPerWrite);
    BurnErrorCode WriteSectors(const uint8_t* data, uint32_t sector, uint32_t count) override;
    bool Verifies() const override { return true; }

private:
    LProcessInterface& job_;
    LSCSI& device_;
    uint32_t start_;
    std::vector<uint8_t> verify_;
};
