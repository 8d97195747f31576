#pragma once

#include "jobs/SignalObject.h"

#include <atomic>
#include <memory>

// A byte ring for exactly one writer thread and one reader thread. Each index is changed by one
// side only; the signals tell the other side that data or space has appeared.
class LBucket {
public:
    explicit LBucket(unsigned long capacity);

    // Both drain their signal before looking at the indices, so no wake-up is lost.
    unsigned long GetBytesReadAvailable();
    unsigned long GetBytesWriteAvailable();

    // Callers never move more than is available.
    void Write(const void* data, unsigned long bytes);
    void Read(void* data, unsigned long bytes);

    LSignalObject& DataAvailable() { return dataAvailable_; }
    LSignalObject& SpaceAvailable() { return spaceAvailable_; }

private:
    unsigned long Readable() const;
    unsigned long Writable() const;

    const unsigned long size_; // capacity + 1: one byte always stays free
    std::unique_ptr<unsigned char[]> bytes_;
    std::atomic<unsigned long> read_{0};
    std::atomic<unsigned long> write_{0};
    LSignalObject dataAvailable_;
    LSignalObject spaceAvailable_;
};
