#pragma once

// What the stage benchmarks share: a steady noise source of a given length and the timing of
// reading a whole stage in blocks of 8,192 frames.

#include "sound/SoundSource.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <vector>

// White noise at about -24 dB, endless but reporting the given length.
class BenchNoiseSource : public LSoundSourceBase {
public:
    BenchNoiseSource(int rate, unsigned char channels, int seconds)
        : LSoundSourceBase(rate, channels, 524272), frames_(seconds * rate)
    {
    }
    void Read(int* buffer, int frames) override
    {
        for (int i = 0; i < frames * channels_; ++i) {
            state_ = state_ * 1664525u + 1013904223u;
            buffer[i] = static_cast<int>(state_ >> 8) >> 10;
        }
        position_ += frames;
    }
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return frames_; }
    void Seek(int frame) override { position_ = frame; }

private:
    uint32_t state_ = 1;
    int position_ = 0;
    int frames_;
};

// Reads `seconds` of the stage (at its own rate) in blocks of 8,192 frames and prints how much
// faster than real time that went.
inline void BenchMeasure(const char* name, LSoundSource stage, int seconds)
{
    std::vector<int> block(static_cast<size_t>(stage->GetChannels()) * 8192);
    const int frames = seconds * stage->GetSampleRate();
    const auto start = std::chrono::steady_clock::now();
    for (int done = 0; done < frames; done += 8192)
        stage->Read(block.data(), 8192);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::printf("%-34s %8.1f x real time\n", name, seconds / elapsed.count());
}
