#include "disc/WriteSectorCache.h"

#include "disc/BufferVector.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

// File contents are read in chunks of this size when the kernel cannot copy them.
constexpr size_t kFileChunk = 65536;

} // namespace

BurnErrorCode LSectorTarget::SystemError(int error) const {
    return BurnErrorCode(32, std::strerror(error));
}

WriteSectorCache::WriteSectorCache(LSectorTarget& target, size_t sectorsPerWrite)
    : target_(target), buffer_(sectorsPerWrite * kSectorSize), chunk_(kFileChunk) {}

bool WriteSectorCache::Send(const uint8_t* data, uint64_t sectors) {
    const uint64_t run = buffer_.size() / kSectorSize;
    while (sectors > 0) {
        const uint64_t now = std::min(sectors, run);
        BurnErrorCode error = target_.WriteSectors(data, static_cast<uint32_t>(nextSector_),
                                                   static_cast<uint32_t>(now));
        if (error.code != 0) {
            error_ = error;
            failedFirst_ = static_cast<uint32_t>(nextSector_);
            failedLast_ = static_cast<uint32_t>(nextSector_ + now - 1);
            return false;
        }
        nextSector_ += now;
        data += now * kSectorSize;
        sectors -= now;
    }
    return true;
}

bool WriteSectorCache::WriteDataToCache(const void* data, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(data);
    while (size > 0) {
        // Whole runs go straight to the target when nothing is gathered.
        if (fill_ == 0 && size >= buffer_.size()) {
            const size_t run = size / buffer_.size() * buffer_.size();
            if (!Send(bytes, run / kSectorSize)) return false;
            bytes += run;
            size -= run;
            continue;
        }
        const size_t take = std::min(size, buffer_.size() - fill_);
        std::memcpy(buffer_.data() + fill_, bytes, take);
        fill_ += take;
        bytes += take;
        size -= take;
        if (fill_ == buffer_.size() && !FlushSectorCache()) return false;
    }
    return true;
}

// Copies by copy_file_range into the target's file. `unsupported` when the kernel cannot copy
// between these files: the bytes copied are then cut back to whole sectors (the file position
// moved back over a part sector), and the caller reads the rest itself.
int64_t WriteSectorCache::KernelCopy(int fd, uint64_t offset, uint64_t size, bool& unsupported) {
    const int out = target_.AppendFd();
    uint64_t done = 0;
    while (done < size) {
        loff_t from = static_cast<loff_t>(offset + done);
        const ssize_t copied = copy_file_range(fd, &from, out, nullptr, size - done, 0);
        if (copied > 0) {
            done += static_cast<uint64_t>(copied);
            continue;
        }
        if (copied == 0) break;
        if (errno == EINTR) continue;
        // A full disk is the target's failure; anything else means the kernel cannot copy
        // between these files.
        if (errno == ENOSPC || errno == EDQUOT || errno == EFBIG) {
            error_ = target_.SystemError(errno);
            return -1;
        }
        unsupported = true;
        break;
    }
    const size_t part = done % kSectorSize;
    if (unsupported && part != 0) {
        if (lseek(out, -static_cast<off_t>(part), SEEK_CUR) < 0) {
            error_ = target_.SystemError(errno);
            return -1;
        }
        done -= part;
    }
    nextSector_ += done / kSectorSize;
    // The last part sector: its bytes are in the file already; only its padding is written.
    if (!unsupported && part != 0) {
        const uint8_t zeros[kSectorSize] = {};
        const ssize_t pad = static_cast<ssize_t>(kSectorSize - part);
        if (::write(out, zeros, static_cast<size_t>(pad)) != pad) {
            error_ = target_.SystemError(errno ? errno : ENOSPC);
            return -1;
        }
        ++nextSector_;
    }
    return static_cast<int64_t>(done);
}

int64_t WriteSectorCache::CopyFromFile(int fd, uint64_t offset, uint64_t size) {
    if (!FlushSectorCache()) return -1;
    uint64_t done = 0;
    if (target_.AppendFd() >= 0) {
        bool unsupported = false;
        const int64_t copied = KernelCopy(fd, offset, size, unsupported);
        if (copied < 0 || !unsupported) return copied;
        done = static_cast<uint64_t>(copied);
    }
    while (done < size) {
        const size_t want = static_cast<size_t>(std::min<uint64_t>(chunk_.size(), size - done));
        const ssize_t got = ::pread(fd, chunk_.data(), want, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        if (!WriteDataToCache(chunk_.data(), static_cast<size_t>(got))) return -1;
        done += static_cast<uint64_t>(got);
    }
    if (!FlushSectorCache()) return -1;
    return static_cast<int64_t>(done);
}

bool WriteSectorCache::WriteZeroSectors(uint64_t sectors) {
    if (!FlushSectorCache()) return false;
    std::fill(buffer_.begin(), buffer_.end(), 0);
    const uint64_t run = buffer_.size() / kSectorSize;
    for (uint64_t left = sectors; left > 0;) {
        const uint64_t now = std::min(left, run);
        if (!Send(buffer_.data(), now)) return false;
        left -= now;
    }
    return true;
}

bool WriteSectorCache::PadToSector(uint64_t sector) {
    if (!FlushSectorCache()) return false;
    if (nextSector_ > sector) return false;
    return WriteZeroSectors(sector - nextSector_);
}

bool WriteSectorCache::SkipToSector(uint64_t sector) {
    if (!FlushSectorCache()) return false;
    if (nextSector_ > sector) return false;
    nextSector_ = sector;
    return true;
}

bool WriteSectorCache::FlushSectorCache() {
    if (fill_ == 0) return true;
    const size_t sectors = (fill_ + kSectorSize - 1) / kSectorSize;
    std::memset(buffer_.data() + fill_, 0, sectors * kSectorSize - fill_);
    if (!Send(buffer_.data(), sectors)) return false;
    fill_ = 0;
    return true;
}

uint64_t WriteSectorCache::NextSector() const {
    return nextSector_ + (fill_ + kSectorSize - 1) / kSectorSize;
}
