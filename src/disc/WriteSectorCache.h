#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Gathers image data and writes it to a file in runs of whole sectors. After a failed write,
// Error() holds the system's error number.
class WriteSectorCache {
public:
    WriteSectorCache(int fd, size_t sectorsPerWrite);

    // Appends data; false when a write failed.
    bool WriteDataToCache(const void* data, size_t size);
    // Appends up to `size` bytes of the open file `fd` from `offset`, copied by the kernel
    // where it can; a last part sector is padded with zeros. The bytes copied (fewer when the
    // file is shorter), or -1 when a write failed.
    int64_t CopyFromFile(int fd, uint64_t offset, uint64_t size);
    // Appends zero sectors.
    bool WriteZeroSectors(uint64_t sectors);
    // Appends zero sectors up to `sector`; false when the data is past it already, or a write
    // failed.
    bool PadToSector(uint64_t sector);
    // Writes what is gathered, its last sector padded with zeros.
    bool FlushSectorCache();
    // The sector at which the next data lands, once the gathered data is padded to a sector.
    uint64_t NextSector() const;
    int Error() const { return error_; }

private:
    bool WriteAll(const uint8_t* data, size_t size);

    int fd_;
    std::vector<uint8_t> buffer_;
    size_t fill_ = 0;
    uint64_t nextSector_ = 0;
    int error_ = 0;
};
