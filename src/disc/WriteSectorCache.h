#pragma once

#include "burn/BurnErrorCode.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// Where a WriteSectorCache's runs of sectors go: an image file, a disc, or a disc being read
// back and compared.
class LSectorTarget {
public:
    virtual ~LSectorTarget() = default;
    // Writes `count` whole sectors of `data` at the image's sector `sector`; when verifying,
    // compares them with what the disc holds there instead.
    virtual BurnErrorCode WriteSectors(const uint8_t* data, uint32_t sector, uint32_t count) = 0;
    virtual bool Verifies() const { return false; }
    // An open file the target appends to, so that files can be copied into it by the kernel;
    // -1 when there is none.
    virtual int AppendFd() const { return -1; }
    // The error of a failed system call on the target.
    virtual BurnErrorCode SystemError(int error) const;
};

// Gathers image data and hands it to its target in runs of whole sectors: the write buffer
// holds one run, and a flush sends what it holds, its last sector padded with zeros. Sectors
// are counted from the image's start. After a failure Error() says why.
class WriteSectorCache {
public:
    WriteSectorCache(LSectorTarget& target, size_t sectorsPerWrite);

    // Appends data; false when a run failed.
    bool WriteDataToCache(const void* data, size_t size);
    // Appends up to `size` bytes of the open file `fd` from `offset`; a last part sector is
    // padded with zeros. The bytes taken (fewer when the file is shorter), or -1 when a run
    // failed.
    int64_t CopyFromFile(int fd, uint64_t offset, uint64_t size);
    // Appends zero sectors.
    bool WriteZeroSectors(uint64_t sectors);
    // Appends zero sectors up to `sector`; false when the data is past it already (Error()
    // then has code 0), or a run failed.
    bool PadToSector(uint64_t sector);
    // Moves past sectors without writing or comparing them: a verify that must not judge them.
    bool SkipToSector(uint64_t sector);
    // Sends what is gathered, its last sector padded with zeros.
    bool FlushSectorCache();
    // The sector at which the next data lands, once the gathered data is padded to a sector.
    uint64_t NextSector() const;
    const BurnErrorCode& Error() const { return error_; }
    // The run that failed last: its first and last sector.
    uint32_t FailedFirst() const { return failedFirst_; }
    uint32_t FailedLast() const { return failedLast_; }
    bool Verifies() const { return target_.Verifies(); }
    // Whether CopyFromFile hands files to the kernel to copy into the target.
    bool CopiesInKernel() const { return target_.AppendFd() >= 0; }

private:
    bool Send(const uint8_t* data, uint64_t sectors);
    int64_t KernelCopy(int fd, uint64_t offset, uint64_t size, bool& unsupported);

    LSectorTarget& target_;
    std::vector<uint8_t> buffer_;
    std::vector<uint8_t> chunk_;
    size_t fill_ = 0;
    uint64_t nextSector_ = 0;
    BurnErrorCode error_;
    uint32_t failedFirst_ = 0;
    uint32_t failedLast_ = 0;
};
