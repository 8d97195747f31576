#include "sound/ConvertRateSource.h"

#include "sound/AudioBuffer.h"

#include <algorithm>

namespace {

constexpr int kTaps = LSRCConvertRate::kTaps;
constexpr int kCentre = kTaps / 2 + 1; // read index whose centre tap is the first new frame
constexpr int kBufferFrames = 32768;   // room for new input after the history
constexpr int kMoveAbove = kBufferFrames - 257; // fill at which the history moves to the start
constexpr int kPieceFrames = 8192;              // most frames asked of the inner source at once

int ValidRate(int rate) {
    return rate < 1 ? 44100 : rate;
}

} // namespace

LSRCConvertRate::LSRCConvertRate(LSoundSource& inner, int outputRate, bool narrow)
    : LSoundProcessBase(inner), rate_(sampleRate_, ValidRate(outputRate), kTaps, narrow),
      buffer_(static_cast<size_t>(channels_) * (kBufferFrames + kTaps)) {
    sampleRate_ = ValidRate(outputRate);
    if (outputRate < 1 || channels_ > 2) error_ = sndErrFormat;
    // The filter overshoots on steep edges.
    if (maxAmplitude_ <= 1048576) maxAmplitude_ *= 2;
}

void LSRCConvertRate::Read(int* buffer, int frames) {
    switch (channels_) {
    case 1:
        Filter<1>(buffer, frames);
        break;
    case 2:
        Filter<2>(buffer, frames);
        break;
    default:
        ClearAudioBuffer(buffer, frames, channels_);
        break;
    }
}

template <int Channels> void LSRCConvertRate::Filter(int* out, int frames) {
    const int phases = rate_.GetPhases();
    const int step = rate_.GetStep();
    for (int f = 0; f < frames; ++f) {
        readIndex_ += phase_ / phases;
        phase_ %= phases;
        while (readIndex_ >= fill_)
            ReadBuffer();
        const int* coef = rate_.GetCoefficients(phase_);
        const int* x = buffer_.data() + readIndex_ * Channels;
        for (int c = 0; c < Channels; ++c)
            *out++ = (FilterTaps<kTaps, Channels>(coef, x + c) + outputRounding_) >> outputShift_;
        phase_ += step;
    }
}

void LSRCConvertRate::ReadBuffer() {
    const int channels = channels_;
    if (fill_ > kMoveAbove) {
        std::copy_n(buffer_.data() + fill_ * channels, kTaps * channels, buffer_.data());
        readIndex_ -= fill_;
        fill_ = 0;
    }
    // The history: the last frames before the new ones, still scaled by the previous shift.
    int* history = buffer_.data() + fill_ * channels;
    if (inputShift_ != 0) {
        for (int i = 0; i < kTaps * channels; ++i)
            history[i] *= 1 << inputShift_;
    }

    int frames = kBufferFrames - fill_;
    if (inner_->IsStreaming()) {
        int available = inner_->GetEndSample() - inner_->GetPositionSample();
        if (available <= 0) available = 64;
        frames = std::min(frames, available);
    }
    frames = std::min(frames, kPieceFrames);
    inner_->Read(history + kTaps * channels, frames);

    // Scale history and new frames so that every sample fits in 16 bits.
    const int peak = GetBufferPeak(history, kTaps + frames, channels_);
    int shift = 0;
    while (shift < 15 && (peak >> shift) >= 32768)
        ++shift;
    inputShift_ = static_cast<uint8_t>(shift);
    outputShift_ = static_cast<uint8_t>(15 - shift);
    outputRounding_ = (1 << outputShift_) >> 1;
    if (shift > 0) {
        const int64_t half = (1 << shift) / 2;
        for (int i = 0; i < (kTaps + frames) * channels; ++i)
            history[i] = static_cast<int>((history[i] + half) >> shift);
    }
    fill_ += frames;
}

int LSRCConvertRate::GetPositionSample() const {
    const int64_t phases = rate_.GetPhases();
    const int64_t step = rate_.GetStep();
    // The input frame under the centre tap of the next output.
    const int64_t centre = int64_t{readIndex_} - fill_ + inner_->GetPositionSample() - kCentre;
    return static_cast<int>(centre / step * phases + (centre % step * phases + phase_) / step);
}

int LSRCConvertRate::GetEndSample() const {
    const int end = inner_->GetEndSample();
    if (!inner_->IsStreaming()) return rate_.InputToOutput(end);
    // The end still moves: only outputs whose taps are all there count.
    return rate_.InputToOutput(end - (kCentre + 1)) - 1;
}

void LSRCConvertRate::Seek(int frame) {
    const int64_t phases = rate_.GetPhases();
    const int64_t step = rate_.GetStep();
    const int64_t remainder = frame % phases * step;
    int64_t first = step * (frame / phases) + remainder / phases - (kCentre - 1);
    phase_ = static_cast<int>(remainder % phases);
    if (first < 0) {
        --first;
        phase_ += static_cast<int>(phases);
    }
    inner_->Seek(static_cast<int>(first));
    readIndex_ = kCentre;
    fill_ = 0;
    inputShift_ = 0;
    inner_->Read(buffer_.data() + kCentre * channels_, kCentre - 1);
}

LSoundSource LSPConvertRate::OpenSource(LSoundSource& source) {
    if (source->GetError() != sndErrNone || source->GetSampleRate() == rate_) return source;
    LSoundSource result = source;
    if (source->GetSampleRate() / 4 >= rate_)
        result = LSoundSource(new LSRCConvertRate(result, 2 * rate_, true));
    return LSoundSource(new LSRCConvertRate(result, rate_, false));
}
