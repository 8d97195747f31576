#include "codecs/AiffFile.h"

#include "codecs/WaveBytes.h"

#include <bit>
#include <cstring>

namespace {

constexpr size_t kAiffHeaderSize = 54;

} // namespace

void LConvert32to80(unsigned char* out, unsigned int rate) {
    std::memset(out, 0, 10);
    if (rate == 0) return;
    // The exponent (biased by 16383) puts the binary point after the top set bit, which the
    // extended format stores explicitly as the mantissa's first bit.
    const int shift = std::countl_zero(rate);
    PutBE16(out, static_cast<uint16_t>(16383 + 31 - shift));
    PutBE32(out + 2, rate << shift);
}

size_t WriteHeaderAIFF(const LRawFileDataSoundSinkBase& sink, bool final, uint8_t* out) {
    const uint32_t dataBytes = sink.GetDataBytes();
    PutChunkId(out, "FORM");
    PutBE32(out + 4, dataBytes + 46);
    PutChunkId(out + 8, "AIFF");
    PutChunkId(out + 12, "COMM");
    PutBE32(out + 16, 18);
    PutBE16(out + 20, sink.GetChannels());
    PutBE32(out + 22, static_cast<uint32_t>(sink.GetPosition()));
    PutBE16(out + 26, static_cast<uint16_t>(sink.GetBytesPerSample() * 8));
    LConvert32to80(out + 28, static_cast<unsigned int>(sink.GetSampleRate()));
    PutChunkId(out + 38, "SSND");
    PutBE32(out + 42, final ? dataBytes + 8 : 0xFFFFFFFFu);
    PutBE32(out + 46, 0);
    PutBE32(out + 50, 0);
    return kAiffHeaderSize;
}

LSoundSink LAifFile::OpenSinkPCM16(const char* path, int sampleRate, unsigned char channels) {
    if (sampleRate < 1) return LSoundSink();
    return LSoundSink(
        new LRawFileDataSoundSink<LSFBE16>(path, sampleRate, channels, 0, WriteHeaderAIFF));
}
