#include "play/Tones.h"

#include "platform/Log.h"
#include "play/SoundPlayDevice.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr int kRate = 44100;
constexpr int kFullScale = 524272;

struct Beep {
    double frequency;
    int ms;
};

void AppendBeep(std::vector<int>& samples, Beep beep) {
    const int frames = kRate * beep.ms / 1000;
    const int edge = kRate * 8 / 1000;
    for (int i = 0; i < frames; ++i) {
        const double fade = std::min({1.0, double(i) / edge, double(frames - 1 - i) / edge});
        const double value = kFullScale / 4.0 * fade *
                             std::sin(2 * std::numbers::pi * beep.frequency * i / kRate);
        const int sample = static_cast<int>(std::lround(value));
        samples.push_back(sample);
        samples.push_back(sample);
    }
}

void AppendGap(std::vector<int>& samples, int ms) {
    samples.insert(samples.end(), static_cast<size_t>(kRate * ms / 1000) * 2, 0);
}

class LToneSource : public LSoundSourceBase {
public:
    explicit LToneSource(std::vector<int> samples)
        : LSoundSourceBase(kRate, 2, kFullScale), samples_(std::move(samples)) {}

    void Read(int* buffer, int frames) override {
        const int end = GetEndSample();
        for (int f = 0; f < frames; ++f, ++position_) {
            const bool inside = position_ >= 0 && position_ < end;
            const size_t at = static_cast<size_t>(inside ? position_ : 0) * 2;
            *buffer++ = inside ? samples_[at] : 0;
            *buffer++ = inside ? samples_[at + 1] : 0;
        }
    }
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return static_cast<int>(samples_.size() / 2); }
    void Seek(int frame) override { position_ = frame; }

private:
    std::vector<int> samples_;
    int position_ = 0;
};

} // namespace

std::vector<int> LToneSamples(LTone tone) {
    std::vector<int> samples;
    switch (tone) {
    case LTone::Start:
        AppendBeep(samples, {880, 90});
        AppendGap(samples, 40);
        AppendBeep(samples, {1320, 120});
        break;
    case LTone::Stop:
        AppendBeep(samples, {1320, 90});
        AppendGap(samples, 40);
        AppendBeep(samples, {880, 120});
        break;
    case LTone::Pause:
        AppendBeep(samples, {660, 150});
        break;
    }
    return samples;
}

LSoundSource LOpenToneSource(LTone tone) {
    return LSoundSource(new LToneSource(LToneSamples(tone)));
}

void LTonePlayer::Play(LTone tone) {
    player_.SetDevice(LSettingGetSoundPlayDevice("Player", "Device"));
    LSoundSource source = LOpenToneSource(tone);
    if (!player_.Start(source)) LOGWARN("The recording tone could not be played");
}
