// Feeds arbitrary bytes to the MP3 decoder: tag skipping, the header search, the VBR header,
// side information, scale factors, Huffman data, the bit reservoir and seeking. The bytes live
// in an anonymous memory file, opened by its /proc path like any file on disk.
#include "codecs/MP3File.h"

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
    for (int done = 0; done < std::min(source->GetEndSample(), kMaxFrames); done += kBlockFrames)
        source->Read(buffer.data(), kBlockFrames);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int fd = memfd_create("mp3-fuzz", 0);
    if (fd < 0 || ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
        return 0;
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);

    LSoundSource source = LMP3File::OpenSource(path);
    std::vector<int> buffer(static_cast<size_t>(kBlockFrames) * source->GetChannels());
    ReadSome(source, buffer);
    source->Seek(source->GetEndSample() / 3);
    source->Read(buffer.data(), 1001);
    source->Seek(-5);
    source->Read(buffer.data(), 10);

    char name[260];
    LMP3File::GetCodecName(name, path);
    return 0;
}
