#pragma once

#include "support/BufferSource.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

// Test tones and measurements of level and frequency on interleaved internal samples.

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

inline LSoundSource MakeSineSource(int rate, unsigned char channels, double frequency,
                                   double amplitude, int length) {
    return LSoundSource(new SineSource(rate, channels, frequency, amplitude, length));
}

// Reads frames from a source in blocks of at most 8,192.
inline std::vector<int> ReadFrames(LSoundSource& source, int frames) {
    return ReadAll(source, frames);
}

// One channel of interleaved samples, frames first to first + count - 1.
inline std::vector<double> ChannelValues(const std::vector<int>& samples, int channels, int channel,
                                         int first, int count) {
    std::vector<double> values(count);
    for (int i = 0; i < count; ++i)
        values[i] = samples[static_cast<size_t>(first + i) * channels + channel];
    return values;
}

// The component at a frequency as a complex amplitude (a single-bin DFT): its magnitude is
// the sine's amplitude, exact for a whole number of cycles in the window.
inline std::complex<double> ToneFit(const std::vector<double>& values, int rate, double frequency) {
    std::complex<double> sum;
    const double step = 2 * std::numbers::pi * frequency / rate;
    for (size_t n = 0; n < values.size(); ++n)
        sum += values[n] * std::polar(1.0, -step * static_cast<double>(n));
    return 2.0 * sum / static_cast<double>(values.size());
}

inline double ToneAmplitude(const std::vector<double>& values, int rate, double frequency) {
    return std::abs(ToneFit(values, rate, frequency));
}

inline double RMS(const std::vector<double>& values) {
    double sum = 0;
    for (double v : values)
        sum += v * v;
    return std::sqrt(sum / static_cast<double>(values.size()));
}

inline double DB(double ratio) {
    return 20 * std::log10(ratio);
}

// Level of what is left after taking out the best-fitting sine at the frequency, relative to
// that sine's amplitude, in dB: noise, distortion, images and aliases together.
inline double ResidualDB(const std::vector<double>& values, int rate, double frequency) {
    const std::complex<double> fit = ToneFit(values, rate, frequency);
    const double step = 2 * std::numbers::pi * frequency / rate;
    std::vector<double> rest(values.size());
    for (size_t n = 0; n < values.size(); ++n)
        rest[n] = values[n] - std::real(fit * std::polar(1.0, step * static_cast<double>(n)));
    return DB(RMS(rest) * std::sqrt(2.0) / std::abs(fit));
}

// Rising zero crossings: the number of cycles of a tone.
inline int RisingCrossings(const std::vector<double>& values) {
    int count = 0;
    for (size_t n = 1; n < values.size(); ++n)
        count += values[n - 1] < 0 && values[n] >= 0;
    return count;
}
