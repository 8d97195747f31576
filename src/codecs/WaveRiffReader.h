#pragma once

#include "codecs/WaveFileFormat.h"
#include "codecs/WaveFileIO.h"

#include <cstdint>

// Walks the chunks of a RIFF WAVE file: first to its "fmt " chunk, then on to its "data"
// chunk, passing over every other chunk (LIST, bext, cart, fact...) by its size rounded up to
// even. Each step returns an LSoundErrorCode: sndErrNone, or sndErrFormat for anything that
// is not a readable wave header.
class LWaveRiffReader {
public:
    static constexpr uint32_t kMinFormatBytes = 16;
    static constexpr uint32_t kMaxFormatBytes = 8192;

    // A data size of 0xFFFFFFFF (or 0xFFFFFFD9, which this system's own sink writes while it
    // records) means the file is still being written.
    static bool IsUnknownDataSize(uint32_t dataBytes) {
        return dataBytes == 0xFFFFFFFFu || dataBytes == 0xFFFFFFD9u;
    }

    explicit LWaveRiffReader(const LFile& file) : file_(file) {}

    // Finds the WAVE form (other top-level chunks before it are passed over) and reads the
    // first 18 bytes of its "fmt " chunk in host order; cbSize is 0 when the chunk is shorter.
    uint8_t ReadFormat(WAVEFORMATEX& format);
    // After ReadFormat: finds the "data" chunk. Its size is handed back as it stands in the
    // file (0xFFFFFFFF while the file is still being written).
    uint8_t FindData(uint32_t& dataBytes);
    // After FindData: the file offset of the first sample.
    int64_t GetDataStart() const { return offset_; }

private:
    uint8_t FindWaveForm();
    uint8_t FindChunk(const char* id, uint32_t& size);

    const LFile& file_;
    int64_t offset_ = 0;
};
