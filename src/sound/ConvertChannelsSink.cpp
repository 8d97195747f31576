#include "sound/ConvertChannelsSink.h"

#include <algorithm>
#include <cstdint>

LSinkConvertChannelsBase::LSinkConvertChannelsBase(LSoundSink& target, unsigned char channels)
    : LSoundSinkBase(target->GetSampleRate(), channels), target_(target),
      buffer_(static_cast<size_t>(target->GetChannels()) * kBlockFrames) {
    error_ = target->GetError();
}

void LSinkConvertChannelsBase::Seek(int frame) {
    target_->Seek(frame);
    position_ = target_->GetPosition();
}

void LSinkConvertMonoToStereo::Write(const int* buffer, int frames) {
    position_ += frames;
    while (frames > 0) {
        const int block = std::min(frames, kBlockFrames);
        for (int f = 0; f < block; ++f, buffer += 2)
            buffer_[f] = static_cast<int>((int64_t{buffer[0]} + buffer[1]) >> 1);
        target_->Write(buffer_.data(), block);
        frames -= block;
    }
}

void LSinkConvertStereoToMono::Write(const int* buffer, int frames) {
    position_ += frames;
    while (frames > 0) {
        const int block = std::min(frames, kBlockFrames);
        for (int f = 0; f < block; ++f) {
            buffer_[2 * f] = buffer[f];
            buffer_[2 * f + 1] = buffer[f];
        }
        target_->Write(buffer_.data(), block);
        buffer += block;
        frames -= block;
    }
}

LSoundSink LSinkConvertChannels::OpenSink(LSoundSink& sink, unsigned char channels) {
    const unsigned char target = sink->GetChannels();
    if (target == channels) return sink;
    if (target == 1 && channels == 2) return LSoundSink(new LSinkConvertMonoToStereo(sink));
    if (target == 2 && channels == 1) return LSoundSink(new LSinkConvertStereoToMono(sink));
    return LSoundSink();
}
