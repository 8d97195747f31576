#include "sound/Bucket.h"

#include <algorithm>
#include <cstring>

LBucket::LBucket(unsigned long capacity)
    : size_(capacity + 1), bytes_(std::make_unique_for_overwrite<unsigned char[]>(capacity + 1))
{
}

unsigned long LBucket::Readable() const
{
    return (write_.load(std::memory_order_acquire) + size_ - read_.load(std::memory_order_relaxed)) %
           size_;
}

unsigned long LBucket::Writable() const
{
    return (read_.load(std::memory_order_acquire) + size_ - write_.load(std::memory_order_relaxed) -
            1) %
           size_;
}

unsigned long LBucket::GetBytesReadAvailable()
{
    dataAvailable_.Reset();
    return Readable();
}

unsigned long LBucket::GetBytesWriteAvailable()
{
    spaceAvailable_.Reset();
    return Writable();
}

void LBucket::Write(const void* data, unsigned long bytes)
{
    const unsigned char* in = static_cast<const unsigned char*>(data);
    const unsigned long at = write_.load(std::memory_order_relaxed);
    const unsigned long first = std::min(bytes, size_ - at);
    std::memcpy(bytes_.get() + at, in, first);
    std::memcpy(bytes_.get(), in + first, bytes - first);
    write_.store((at + bytes) % size_, std::memory_order_release);
    dataAvailable_.Signal();
}

void LBucket::Read(void* data, unsigned long bytes)
{
    unsigned char* out = static_cast<unsigned char*>(data);
    const unsigned long at = read_.load(std::memory_order_relaxed);
    const unsigned long first = std::min(bytes, size_ - at);
    std::memcpy(out, bytes_.get() + at, first);
    std::memcpy(out + first, bytes_.get(), bytes - first);
    read_.store((at + bytes) % size_, std::memory_order_release);
    spaceAvailable_.Signal();
}
