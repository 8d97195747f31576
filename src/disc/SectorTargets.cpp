#include "disc/SectorTargets.h"

#include "disc/BufferVector.h"
#include "disc/HybridDataDisk.h"
#include "disc/SCSICommands.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

BurnErrorCode LImageFileTarget::WriteSectors(const uint8_t* data, uint32_t /*sector*/,
                                             uint32_t count) {
    size_t size = size_t{count} * kSectorSize;
    while (size > 0) {
        const ssize_t written = ::write(fd_, data, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return SystemError(written < 0 ? errno : ENOSPC);
        data += written;
        size -= static_cast<size_t>(written);
    }
    return {};
}

BurnErrorCode LImageFileTarget::SystemError(int error) const {
    return LImageWriteError(path_, error);
}

BurnErrorCode LDiscWriteTarget::WriteSectors(const uint8_t* data, uint32_t sector, uint32_t count) {
    if (job_.IsToStop()) return BurnErrorCode(kSCSIStopped);
    return ProcessSCSIWriteSectors(job_, device_, data, start_ + sector, count, kSectorSize);
}

LDiscVerifyTarget::LDiscVerifyTarget(LProcessInterface& job, LSCSI& device, uint32_t start,
                                     size_t sectorsPerWrite)
    : job_(job), device_(device), start_(start), verify_(sectorsPerWrite * kSectorSize) {}

BurnErrorCode LDiscVerifyTarget::WriteSectors(const uint8_t* data, uint32_t sector,
                                              uint32_t count) {
    const size_t size = size_t{count} * kSectorSize;
    BurnErrorCode error;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (job_.IsToStop()) return BurnErrorCode(kSCSIStopped);
        const int result =
            ProcessSCSIReadSectors(job_, device_, verify_.data(), start_ + sector, count, kSectorSize);
        if (result == PROCESS_STOPPED) return BurnErrorCode(kSCSIStopped);
        if (result != PROCESS_DONE) {
            error = LSCSIError(31, device_);
            continue;
        }
        if (std::memcmp(verify_.data(), data, size) == 0) return {};
        error = BurnErrorCode(30);
    }
    return error;
}
