#pragma once

#include "codecs/WaveFileIO.h"
#include "sound/SampleFormat.h"
#include "sound/SoundSource.h"

#include <cstdint>
#include <vector>

// A source over the PCM samples of a wave file. It owns the file. The frame count is -1 while
// the data chunk's size is unknown (a file still being written); the end then follows the
// file as it grows, until the writer stores the true size.
class LSRCPCMFileBase : public LSoundSourceBase {
public:
    using ConvertFunction = void (*)(int*, const void*, int);

    LSRCPCMFileBase(LFile&& file, int64_t dataStart, int sampleRate, unsigned char channels,
                    uint32_t dataBytes, int bytesPerSample, ConvertFunction convert);

    void Read(int* buffer, int frames) override;
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override;
    void Seek(int frame) override { position_ = frame; }
    bool IsStreaming() const override { return frameCount_ < 0; }

private:
    static constexpr int kBlockFrames = 8192;
    void ReadBlock(int* buffer, int frames);

    LFile file_;
    int64_t dataStart_;
    int position_ = 0;
    mutable int frameCount_;
    int bytesPerSample_;
    int bytesPerFrame_;
    ConvertFunction convert_;
    std::vector<uint8_t> stored_;
};

template <typename Format> class LSRCPCMFile : public LSRCPCMFileBase {
public:
    LSRCPCMFile(LFile&& file, int64_t dataStart, int sampleRate, unsigned char channels,
                uint32_t dataBytes)
        : LSRCPCMFileBase(std::move(file), dataStart, sampleRate, channels, dataBytes,
                          Format::kBytes, ConvertSamplesIn<Format>) {}
};
