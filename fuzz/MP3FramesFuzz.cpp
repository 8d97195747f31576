// Feeds arbitrary bytes to the Layer III frame decoder straight from memory: frames one after
// the other, each a four-byte header, two CRC bytes when the header says so, and the body
// (side information, scale factors, Huffman data). The decoder keeps its bit reservoir and
// filter state from frame to frame; frames that switch version or sample rate are passed over
// as the reader does.
#include "codecs/mp3/MP3FrameDecoder.h"
#include "codecs/mp3/MP3Header.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Enough frames for the reservoir to reach back across several of them.
    constexpr int kMaxFrames = 12;
    static MP3FrameDecoder decoder;
    static int out[1152 * 2];
    uint8_t body[MP3FrameDecoder::kMaxFrameBody + 8];
    decoder.Reset();

    MP3Header reference;
    size_t at = 0;
    for (int frame = 0; frame < kMaxFrames && at + 4 <= size; ++frame) {
        MP3Header header;
        if (!header.Parse(data + at))
            return 0;
        if (frame == 0)
            reference = header;
        at += header.protectionAbsent ? 4 : 6;
        const int length = header.GetFrameLength() - (header.protectionAbsent ? 4 : 6);
        if (length > MP3FrameDecoder::kMaxFrameBody || at > size)
            return 0;
        // A frame cut short by the end of the input is filled with zeros.
        std::memset(body, 0, sizeof body);
        std::memcpy(body, data + at, std::min(size - at, size_t(length)));
        at += size_t(length);
        if (header.Matches(reference))
            decoder.DecodeFrame(header, body, length, out);
        else
            decoder.SkipFrame(header, body, length);
    }
    return 0;
}
