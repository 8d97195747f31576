#include "sound/ConvertChannels.h"

#include <algorithm>
#include <cstdint>

LSRCConvChannels::LSRCConvChannels(LSoundSource& inner, unsigned char channels)
    : LSoundProcessBase(inner), buffer_(static_cast<size_t>(channels_) * kBlockFrames) {
    channels_ = channels;
    if (channels_ == 0) {
        channels_ = 1;
        error_ = sndErrFormat;
    }
}

void LSRCConvMonoStereo::Read(int* buffer, int frames) {
    while (frames > 0) {
        const int block = std::min(frames, kBlockFrames);
        inner_->Read(buffer_.data(), block);
        for (int f = 0; f < block; ++f) {
            *buffer++ = buffer_[f];
            *buffer++ = buffer_[f];
        }
        frames -= block;
    }
}

void LSRCConvStereoMono::Read(int* buffer, int frames) {
    while (frames > 0) {
        const int block = std::min(frames, kBlockFrames);
        inner_->Read(buffer_.data(), block);
        for (int f = 0; f < block; ++f)
            *buffer++ = static_cast<int>((int64_t{buffer_[2 * f]} + buffer_[2 * f + 1]) >> 1);
        frames -= block;
    }
}

LSoundSource LSPConvChannels::OpenSource(LSoundSource& source) {
    if (source->GetError() != sndErrNone) return source;
    const unsigned char from = source->GetChannels();
    if (from == 1 && channels_ == 2) return LSoundSource(new LSRCConvMonoStereo(source));
    if (from == 2 && channels_ == 1) return LSoundSource(new LSRCConvStereoMono(source));
    return source;
}
