#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Gathers image data and writes it to a file in runs of whole sectors.
class WriteSectorCache {
public:
    WriteSectorCache(int fd, size_t sectorsPerWrite);

    // Appends data; false when a write failed.
    bool WriteDataToCache(const void* data, size_t size);
    // Appends up to `size` bytes of the open file `fd` from its start, copied by the kernel
    // where it can, the last sector padded with zeros; the bytes copied (fewer when the file
    // is shorter), or -1 when a write failed.
    int64_t CopyFromFile(int fd, uint64_t size);
    // Appends zero sectors.
    bool WriteZeroSectors(uint64_t sectors);
    // Writes what is gathered, its last sector padded with zeros.
    bool FlushSectorCache();
    // The sector at which the next data lands, once the gathered data is padded to a sector.
    uint64_t NextSector() const;

private:
    bool WriteAll(const uint8_t* data, size_t size);

    int fd_;
    std::vector<uint8_t> buffer_;
    size_t fill_ = 0;
    uint64_t nextSector_ = 0;
};
