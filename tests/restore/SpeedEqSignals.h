#pragma once

#include "sound/SoundSource.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

// Signals and measurements of the speed and equaliser tests.
namespace speedeq_test {

// A sine on every channel (channel c at amplitude / (c + 1)), frames 0 to length - 1, zeros
// outside.
class SineSource : public LSoundSourceBase {
public:
    SineSource(int rate, unsigned char channels, double frequency, double amplitude, int length)
        : LSoundSourceBase(rate, channels, 524272), step_(2 * std::numbers::pi * frequency / rate),
          amplitude_(amplitude), length_(length) {}
    void Read(int* buffer, int frames) override {
        for (int f = 0; f < frames; ++f, ++position_) {
            const bool inside = position_ >= 0 && position_ < length_;
            const double value = inside ? amplitude_ * std::sin(step_ * position_) : 0;
            for (int c = 0; c < channels_; ++c)
                *buffer++ = static_cast<int>(std::lround(value / (c + 1)));
        }
    }
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return length_; }
    void Seek(int frame) override { position_ = frame; }

private:
    double step_;
    double amplitude_;
    int length_;
    int position_ = 0;
};

inline LSoundSource Sine(int rate, unsigned char channels, double frequency, double amplitude,
                         int length) {
    return LSoundSource(new SineSource(rate, channels, frequency, amplitude, length));
}

// Reads frames in blocks of at most 8,192.
inline std::vector<int> ReadFrames(LSoundSource& source, int frames) {
    std::vector<int> samples(static_cast<size_t>(frames) * source->GetChannels());
    for (int done = 0; done < frames;) {
        const int block = std::min(frames - done, 8192);
        source->Read(samples.data() + static_cast<size_t>(done) * source->GetChannels(), block);
        done += block;
    }
    return samples;
}

// Amplitude of the component at a frequency in frames [first, first + count) of one channel:
// exact for a sine with a whole number of cycles in the window.
inline double ToneAmplitude(const std::vector<int>& samples, int channels, int first, int count,
                            int rate, double frequency) {
    std::complex<double> sum;
    const double step = 2 * std::numbers::pi * frequency / rate;
    for (int n = 0; n < count; ++n)
        sum += static_cast<double>(samples[static_cast<size_t>(first + n) * channels]) *
               std::polar(1.0, -step * n);
    return 2.0 * std::abs(sum) / count;
}

inline double DB(double ratio) {
    return 20 * std::log10(ratio);
}

} // namespace speedeq_test
