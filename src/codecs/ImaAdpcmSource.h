#pragma once

#include "codecs/ImaAdpcm.h"
#include "codecs/WaveFileIO.h"
#include "sound/SoundSource.h"

#include <cstdint>
#include <vector>

// A mono source over the IMA ADPCM blocks of a wave file. Each block starts with a 4-byte
// header (first sample, step index, one reserved byte) followed by 4-bit codes, low nibble
// first, so a block of n bytes holds (n - 4) * 2 + 1 samples.
class LIMASoundSource : public LSoundSourceBase {
public:
    static constexpr unsigned kMinBlockAlign = 4;
    static constexpr unsigned kMaxBlockAlign = 32768;

    // A data size of 0xFFFFFFFF means the rest of the file. The block align must be within
    // kMinBlockAlign..kMaxBlockAlign.
    LIMASoundSource(LFile&& file, int64_t dataStart, uint32_t dataBytes, int sampleRate,
                    unsigned blockAlign);

    void Read(int* buffer, int frames) override;
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return end_; }
    void Seek(int frame) override;

private:
    static constexpr int kReadBytes = 512;
    static constexpr int kDiscardFrames = 8192;

    // Decodes up to `frames` samples from the file's current place; fewer when the file ends.
    int Decode(int* buffer, int frames);
    bool NextByte(uint8_t& byte);
    void StartAt(int64_t offset);

    LFile file_;
    int64_t dataStart_;
    int64_t dataEnd_;
    unsigned blockAlign_;
    int samplesPerBlock_;
    int position_ = 0;
    int end_ = 0;

    LIMAADPCM decoder_;
    int samplesLeftInBlock_ = 0;
    uint8_t pendingByte_ = 0;
    bool highNibblePending_ = false;

    int64_t readOffset_ = 0;
    uint8_t bytes_[kReadBytes];
    int byteCount_ = 0;
    int byteIndex_ = 0;
    std::vector<int> discard_;
};

// Opens the IMA ADPCM source of a wave file whose samples start at `dataStart`. Only mono is
// read: other channel counts give an error source with sndErrClosed, a block align out of range
// one with sndErrFormat.
LSoundSource LIMAWaveOpenSource(LFile& file, int64_t dataStart, uint32_t dataBytes, int sampleRate,
                                unsigned char channels, unsigned blockAlign);
