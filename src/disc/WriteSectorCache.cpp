#include "disc/WriteSectorCache.h"

#include "disc/BufferVector.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

WriteSectorCache::WriteSectorCache(int fd, size_t sectorsPerWrite)
    : fd_(fd), buffer_(sectorsPerWrite * kSectorSize) {}

bool WriteSectorCache::WriteAll(const uint8_t* data, size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(fd_, data, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            error_ = written < 0 ? errno : ENOSPC;
            return false;
        }
        data += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

bool WriteSectorCache::WriteDataToCache(const void* data, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(data);
    while (size > 0) {
        // Whole runs go straight to the file when nothing is gathered.
        if (fill_ == 0 && size >= buffer_.size()) {
            const size_t run = size / buffer_.size() * buffer_.size();
            if (!WriteAll(bytes, run)) return false;
            nextSector_ += run / kSectorSize;
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

int64_t WriteSectorCache::CopyFromFile(int fd, uint64_t offset, uint64_t size) {
    if (!FlushSectorCache()) return -1;
    uint64_t done = 0;
    bool kernel = true;
    while (done < size) {
        if (kernel) {
            loff_t from = static_cast<loff_t>(offset + done);
            const ssize_t copied = copy_file_range(fd, &from, fd_, nullptr, size - done, 0);
            if (copied > 0) {
                done += static_cast<uint64_t>(copied);
                continue;
            }
            if (copied == 0) break;
            if (errno == EINTR) continue;
            // A full disk is the target's failure; anything else means the kernel cannot copy
            // between these files, so the buffer copies from here on.
            if (errno == ENOSPC || errno == EDQUOT || errno == EFBIG) {
                error_ = errno;
                return -1;
            }
            kernel = false;
        }
        const size_t want = static_cast<size_t>(std::min<uint64_t>(buffer_.size(), size - done));
        const ssize_t got = ::pread(fd, buffer_.data(), want, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        if (!WriteAll(buffer_.data(), static_cast<size_t>(got))) return -1;
        done += static_cast<uint64_t>(got);
    }
    nextSector_ += done / kSectorSize;
    // The last part sector: its bytes are in the file already; only its padding is written.
    if (const size_t part = done % kSectorSize; part != 0) {
        const size_t pad = kSectorSize - part;
        std::memset(buffer_.data(), 0, pad);
        if (!WriteAll(buffer_.data(), pad)) return -1;
        ++nextSector_;
    }
    return static_cast<int64_t>(done);
}

bool WriteSectorCache::WriteZeroSectors(uint64_t sectors) {
    if (!FlushSectorCache()) return false;
    std::fill(buffer_.begin(), buffer_.end(), 0);
    const uint64_t run = buffer_.size() / kSectorSize;
    for (uint64_t left = sectors; left > 0;) {
        const uint64_t now = std::min(left, run);
        if (!WriteAll(buffer_.data(), now * kSectorSize)) return false;
        nextSector_ += now;
        left -= now;
    }
    return true;
}

bool WriteSectorCache::PadToSector(uint64_t sector) {
    if (!FlushSectorCache()) return false;
    if (nextSector_ > sector) return false;
    return WriteZeroSectors(sector - nextSector_);
}

bool WriteSectorCache::FlushSectorCache() {
    if (fill_ == 0) return true;
    const size_t sectors = (fill_ + kSectorSize - 1) / kSectorSize;
    std::memset(buffer_.data() + fill_, 0, sectors * kSectorSize - fill_);
    if (!WriteAll(buffer_.data(), sectors * kSectorSize)) return false;
    nextSector_ += sectors;
    fill_ = 0;
    return true;
}

uint64_t WriteSectorCache::NextSector() const {
    return nextSector_ + (fill_ + kSectorSize - 1) / kSectorSize;
}
