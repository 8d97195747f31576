#pragma once

// What the file-reading fuzz targets share: the input bytes as a file, and a source exercised
// by reading, seeking and reading again.

#include "sound/SoundSource.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

// Puts the bytes into an anonymous memory file of this process and returns a path that opens
// it like any file on disk; empty when that failed. Each call replaces the previous contents.
inline std::string FuzzFilePath(const uint8_t* data, size_t size)
{
    static const int fd = memfd_create("vinora-fuzz", 0);
    if (fd < 0 || ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
        return {};
    return "/proc/self/fd/" + std::to_string(fd);
}

// Reads at most `maxSamples` samples (frames times channels) from the start in blocks, then
// seeks into the middle and before the start and reads again. Counting samples rather than
// frames keeps files with many channels as quick as the others. The block buffer is kept from
// input to input: a fresh one costs more than reading a short file.
inline void FuzzExerciseSource(const LSoundSource& source, int maxSamples)
{
    constexpr int kBlockSamples = 8192;
    static std::array<int, kBlockSamples> buffer;
    const int channels = std::max<int>(source->GetChannels(), 1);
    const int blockFrames = std::max(kBlockSamples / channels, 1);
    const int end = std::min(source->GetEndSample(), maxSamples / channels);
    for (int done = 0; done < end; done += blockFrames)
        source->Read(buffer.data(), std::min(blockFrames, end - done));
    source->Seek(source->GetEndSample() / 3);
    source->Read(buffer.data(), std::min(1001, blockFrames));
    source->Seek(-5);
    source->Read(buffer.data(), std::min(10, blockFrames));
    source->IsStreaming();
}
