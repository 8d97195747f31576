#pragma once

#include "sound/SoundSource.h"

#include <algorithm>
#include <vector>

// A source over given interleaved samples, zeros outside them; it can pretend to be still
// streaming.
class BufferSource : public LSoundSourceBase {
public:
    BufferSource(std::vector<int> samples, int rate, unsigned char channels,
                 int maxAmplitude = 524272, bool streaming = false)
        : LSoundSourceBase(rate, channels, maxAmplitude), samples_(std::move(samples)),
          streaming_(streaming)
    {
    }

    void Read(int* buffer, int frames) override
    {
        const int length = GetEndSample();
        for (int f = 0; f < frames; ++f, ++position_)
            for (int c = 0; c < channels_; ++c)
                *buffer++ = position_ >= 0 && position_ < length
                                ? samples_[static_cast<size_t>(position_) * channels_ + c]
                                : 0;
    }
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return static_cast<int>(samples_.size() / channels_); }
    void Seek(int frame) override { position_ = frame; }
    bool IsStreaming() const override { return streaming_; }

private:
    std::vector<int> samples_;
    bool streaming_;
    int position_ = 0;
};

inline LSoundSource MakeBufferSource(std::vector<int> samples, int rate, unsigned char channels,
                                     int maxAmplitude = 524272, bool streaming = false)
{
    return LSoundSource(
        new BufferSource(std::move(samples), rate, channels, maxAmplitude, streaming));
}

// Reads frames from a source in blocks of at most `block` frames.
inline std::vector<int> ReadAll(LSoundSource& source, int frames, int block = 8192)
{
    std::vector<int> samples(static_cast<size_t>(frames) * source->GetChannels());
    for (int done = 0; done < frames;) {
        const int count = std::min(frames - done, block);
        source->Read(samples.data() + static_cast<size_t>(done) * source->GetChannels(), count);
        done += count;
    }
    return samples;
}
