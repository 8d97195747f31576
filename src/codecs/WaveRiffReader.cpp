#include "codecs/WaveRiffReader.h"

#include "codecs/WaveBytes.h"
#include "sound/SoundSource.h"

#include <algorithm>
#include <cstring>

namespace {

int64_t RoundUpToEven(uint32_t size) {
    return (static_cast<int64_t>(size) + 1) & ~int64_t{1};
}

} // namespace

uint8_t LWaveRiffReader::FindWaveForm() {
    for (;;) {
        uint8_t header[12];
        if (ReadFileAt(file_, offset_, header, sizeof header) != sizeof header) return sndErrFormat;
        if (IsChunkId(header, "RIFF") && IsChunkId(header + 8, "WAVE")) {
            offset_ += sizeof header;
            return sndErrNone;
        }
        const int64_t size = RoundUpToEven(GetLE32(header + 4));
        if (size < 5) return sndErrFormat;
        // The 4 bytes of the form type were part of the chunk's size.
        offset_ += 8 + size;
    }
}

uint8_t LWaveRiffReader::FindChunk(const char* id, uint32_t& size) {
    for (;;) {
        uint8_t header[8];
        if (ReadFileAt(file_, offset_, header, sizeof header) != sizeof header) return sndErrFormat;
        offset_ += sizeof header;
        size = GetLE32(header + 4);
        if (IsChunkId(header, id)) return sndErrNone;
        const int64_t skip = RoundUpToEven(size);
        if (skip >= (int64_t{1} << 31)) return sndErrFormat;
        offset_ += skip;
    }
}

uint8_t LWaveRiffReader::ReadFormat(WAVEFORMATEX& format) {
    uint32_t size = 0;
    if (uint8_t error = FindWaveForm(); error != sndErrNone) return error;
    if (uint8_t error = FindChunk("fmt ", size); error != sndErrNone) return error;
    if (size < kMinFormatBytes || size > kMaxFormatBytes) return sndErrFormat;
    uint8_t chunk[kMaxFormatBytes];
    if (ReadFileAt(file_, offset_, chunk, size) != size) return sndErrFormat;
    offset_ += RoundUpToEven(size);
    if (size < sizeof format) std::memset(chunk + size, 0, sizeof format - size);
    std::memcpy(&format, chunk, sizeof format);
    LWaveFileFormat::LittleEndianToNative(format);
    return sndErrNone;
}

uint8_t LWaveRiffReader::FindData(uint32_t& dataBytes) {
    return FindChunk("data", dataBytes);
}
