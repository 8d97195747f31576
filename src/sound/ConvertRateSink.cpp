#include "sound/ConvertRateSink.h"

#include <algorithm>

namespace {

constexpr int kTaps = LSinkConvertRateBase::kTaps;
constexpr int kBlockFrames = 8192;
constexpr int kLeadFrames = kTaps / 2;     // zeros before the first input frame
constexpr int kTailFrames = kTaps / 2 + 1; // zeros that push the last input frames through

bool CanConvert(const LSoundSink& target, int rate) {
    return rate >= 1 && target->GetSampleRate() >= 1 && target->GetChannels() <= 2;
}

} // namespace

// A conversion that cannot be set up keeps a 1:1 coefficient set and reports error 1.
LSinkConvertRateBase::LSinkConvertRateBase(LSoundSink& target, int rate)
    : LSoundSinkBase(std::max(rate, 1), target->GetChannels()),
      rate_(CanConvert(target, rate) ? rate : 1,
            CanConvert(target, rate) ? target->GetSampleRate() : 1, kTaps, false),
      target_(target), input_(static_cast<size_t>(channels_) * (kBlockFrames + kTaps)),
      output_(static_cast<size_t>(channels_) * kBlockFrames) {
    error_ = target->GetError();
    if (!CanConvert(target, rate)) error_ |= 1;
    Start();
}

LSinkConvertRateBase::~LSinkConvertRateBase() {
    Flush();
}

void LSinkConvertRateBase::Start() {
    phase_ = 0;
    inputIndex_ = 0;
    inputFill_ = kLeadFrames * channels_;
    std::fill_n(input_.begin(), inputFill_, 0);
}

void LSinkConvertRateBase::Write(const int* buffer, int frames) {
    position_ += frames;
    while (frames > 0) {
        const int block = std::min(frames, kBlockFrames);
        const int count = block * channels_;
        // The filter works at 16-bit scale so that its products fit in 32 bits.
        int* input = input_.data() + inputFill_;
        for (int i = 0; i < count; ++i)
            input[i] = buffer[i] >> 4;
        inputFill_ += count;
        Produce();
        buffer += count;
        frames -= block;
    }
}

void LSinkConvertRateBase::Flush() {
    std::fill_n(input_.begin() + inputFill_, kTailFrames * channels_, 0);
    inputFill_ += kTailFrames * channels_;
    Produce();
}

void LSinkConvertRateBase::Seek(int frame) {
    Flush();
    position_ = frame;
    target_->Seek(rate_.InputToOutput(frame));
    Start();
}

void LSinkConvertRateBase::Produce() {
    switch (channels_) {
    case 1:
        ProduceChannels<1>();
        break;
    case 2:
        ProduceChannels<2>();
        break;
    default:
        inputFill_ = 0;
        break;
    }
}

template <int Channels> void LSinkConvertRateBase::ProduceChannels() {
    const int phases = rate_.GetPhases();
    const int step = rate_.GetStep();
    const int frames = inputFill_ / Channels;
    const int available = frames - kTaps;
    int index = inputIndex_;
    int waiting = 0;
    int* out = output_.data();
    while (index < available) {
        if (waiting == kBlockFrames) {
            target_->Write(output_.data(), waiting);
            waiting = 0;
            out = output_.data();
        }
        const int* coef = rate_.GetCoefficients(phase_);
        const int* x = input_.data() + index * Channels;
        for (int c = 0; c < Channels; ++c)
            *out++ = (FilterTaps<kTaps, Channels>(coef, x + c) + 1024) >> 11;
        ++waiting;
        phase_ += step;
        index += phase_ / phases;
        phase_ %= phases;
    }
    if (waiting > 0) target_->Write(output_.data(), waiting);

    // Keep the input from the index on. A step of more than the filter's length can leave
    // the index past the end; the frames still to skip then carry over.
    const int kept = std::max(frames - index, 0);
    std::copy_n(input_.begin() + (frames - kept) * Channels, kept * Channels, input_.begin());
    inputFill_ = kept * Channels;
    inputIndex_ = std::max(index - frames, 0);
}

LSoundSink LSinkConvertRate::OpenSink(LSoundSink& sink) const {
    if (sink->GetSampleRate() == rate) return sink;
    return LSoundSink(new LSinkConvertRateBase(sink, rate));
}
