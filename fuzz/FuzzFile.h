#pragma once

// What the file-reading fuzz targets share: the input bytes as a file, and a source exercised
// by reading, seeking and reading again.

#include "sound/SoundSource.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

// Puts the bytes into an anonymous memory file of this process and returns a path that opens
// it like any file on disk; empty when that failed. Each call replaces the previous contents.
inline std::string FuzzFilePath(const uint8_t* data, size_t size)
{
    static const int fd = memfd_create("vinora-fuzz", 0);
    if (fd < 0 || ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
        return {};
    return "/proc/self/fd/" + std::to_string(fd);
}

// Reads at most `maxFrames` frames from the start in blocks, then seeks into the middle and
// before the start and reads again.
inline void FuzzExerciseSource(const LSoundSource& source, int maxFrames)
{
    constexpr int kBlockFrames = 2048;
    std::vector<int> buffer(static_cast<size_t>(kBlockFrames) * source->GetChannels());
    const int end = std::min(source->GetEndSample(), maxFrames);
    for (int done = 0; done < end; done += kBlockFrames)
        source->Read(buffer.data(), std::min(kBlockFrames, end - done));
    source->Seek(source->GetEndSample() / 3);
    source->Read(buffer.data(), 1001);
    source->Seek(-5);
    source->Read(buffer.data(), 10);
    source->IsStreaming();
}
