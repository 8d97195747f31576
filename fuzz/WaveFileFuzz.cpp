// Feeds arbitrary bytes to the wave file reader: the RIFF chunk walk, the PCM and IMA ADPCM
// sources and the codec name lookup. The bytes live in an anonymous memory file, opened by its
// /proc path like any file on disk.
#include "codecs/WaveFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

// Reads at most this many frames of one input, so long streams stay quick.
constexpr int kMaxFrames = 1 << 16;
constexpr int kBlockFrames = 8192;

void ReadSome(const LSoundSource& source, std::vector<int>& buffer) {
    const int end = std::min(source->GetEndSample(), kMaxFrames);
    for (int done = 0; done < end; done += kBlockFrames)
        source->Read(buffer.data(), std::min(kBlockFrames, end - done));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int fd = memfd_create("wave-fuzz", 0);
    if (fd < 0 || ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
        return 0;
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);

    LSoundSource source = LWaveFile::OpenSource(path);
    std::vector<int> buffer(static_cast<size_t>(kBlockFrames) * source->GetChannels());
    ReadSome(source, buffer);
    source->Seek(source->GetEndSample() / 3);
    source->Read(buffer.data(), 1001);
    source->Seek(-5);
    source->Read(buffer.data(), 10);
    source->IsStreaming();

    char name[260];
    LGetWaveFileCodecName(name, path);
    return 0;
}
