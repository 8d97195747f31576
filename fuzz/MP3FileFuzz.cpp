// Feeds arbitrary bytes to the MP3 decoder: tag skipping, the header search, the VBR header,
// side information, scale factors, Huffman data, the bit reservoir and seeking.
#include "FuzzFile.h"

#include "codecs/MP3File.h"

#include <array>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = FuzzFilePath(data, size);
    if (path.empty())
        return 0;
    // Frames cost far more than anything else here, and the decoder itself has a target of its
    // own, fed from memory: this one decodes as few frames as reach every path of the reader.
    // One MPEG-1 frame (two of MPEG-2) straight into the caller's buffer, then a seek into the
    // stream, which decodes the frames before its target again, and half an MPEG-1 frame from
    // there (more than is left of an MPEG-2 frame, which makes the reader decode into its own
    // buffer), then a seek before the start. The codec name is left out: it only opens the same
    // source again.
    constexpr int kFrames = 1152;
    constexpr int kMaxChannels = 2;
    static std::array<int, kFrames * kMaxChannels> buffer;
    const LSoundSource source = LMP3File::OpenSource(path.c_str());
    source->Read(buffer.data(), kFrames);
    source->Seek(source->GetEndSample() / 3);
    source->Read(buffer.data(), kFrames / 2);
    source->Seek(-5);
    source->Read(buffer.data(), 10);
    source->IsStreaming();
    return 0;
}
