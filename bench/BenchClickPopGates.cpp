// Throughput of the click and pop remover and the noise gates on 44.1 kHz stereo, as multiples
// of real time. The input is a record-like loop: phrases of chords, loud and soft, over surface
// hiss, with a click every 50 ms or so.
#include "BenchMeasure.h"

#include "restore/ClickPop.h"
#include "restore/NoiseGates.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numbers>
#include <vector>

namespace {

constexpr int kRate = 44100;
constexpr int kSeconds = 120;
constexpr int kLoopSeconds = 8;

std::vector<int> MakeLoop() {
    const int frames = kLoopSeconds * kRate;
    std::vector<int> samples(2 * static_cast<size_t>(frames));
    uint32_t state = 1;
    const auto noise = [&state](int amplitude) {
        state = state * 1664525u + 1013904223u;
        return static_cast<int>(state >> 8) % (2 * amplitude + 1) - amplitude;
    };
    const double w = 2 * std::numbers::pi / kRate;
    for (int f = 0; f < frames; ++f) {
        const double phrase = (f / kRate) % 2 ? 0.15 : 1.0;
        for (int c = 0; c < 2; ++c) {
            const double chord = 120000 * std::sin(w * (196 + 3 * c) * f) +
                                 80000 * std::sin(w * 440 * f) + 40000 * std::sin(w * 1320 * f);
            samples[2 * static_cast<size_t>(f) + c] = static_cast<int>(phrase * chord) + noise(200);
        }
        if (f % 2205 == 1000) samples[2 * static_cast<size_t>(f) + (f / 2205) % 2] += noise(250000);
    }
    return samples;
}

// Plays the loop over and over.
class LoopSource : public LSoundSourceBase {
public:
    LoopSource() : LSoundSourceBase(kRate, 2, 524272), loop_(MakeLoop()) {}
    void Read(int* buffer, int frames) override {
        for (int i = 0; i < 2 * frames; ++i) {
            buffer[i] = loop_[at_];
            at_ = at_ + 1 == loop_.size() ? 0 : at_ + 1;
        }
        position_ += frames;
    }
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return kSeconds * kRate; }

private:
    std::vector<int> loop_;
    size_t at_ = 0;
    int position_ = 0;
};

void Measure(const char* name, LSoundSource stage) {
    BenchMeasure(name, stage, kSeconds);
}

} // namespace

int main() {
    LSoundSource source(new LoopSource());
    Measure("record-like source alone", source);

    source = LSoundSource(new LoopSource());
    Measure("click and pop removal", LSPClickPop(35, 450).OpenSource(source));

    source = LSoundSource(new LoopSource());
    Measure("noise gates at -36 dB", LSPNoiseGates(-36).OpenSource(source));

    source = LSoundSource(new LoopSource());
    LSoundSource clicksRemoved = LSPClickPop(35, 450).OpenSource(source);
    Measure("click removal, then noise gates", LSPNoiseGates(-36).OpenSource(clicksRemoved));
    return 0;
}
