// Throughput of the FFT equaliser (with the RIAA curve), the record speed correction and the
// cue playback speed on 44.1 kHz stereo, as multiples of real time.
#include "jobs/ProcessInterfaceVoid.h"
#include "restore/CueSpeed.h"
#include "restore/Equalizer.h"
#include "restore/PitchSpeed.h"
#include "restore/RIAA.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

constexpr int kRate = 44100;
constexpr int kSeconds = 120;

// Cheap pseudo-random stereo noise at about -12 dB, endless.
class NoiseSource : public LSoundSourceBase {
public:
    NoiseSource() : LSoundSourceBase(kRate, 2, 524272) {}
    void Read(int* buffer, int frames) override {
        for (int i = 0; i < 2 * frames; ++i) {
            state_ = state_ * 1664525u + 1013904223u;
            buffer[i] = static_cast<int>(state_ >> 8) >> 10;
        }
        position_ += frames;
    }
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return kSeconds * kRate; }
    void Seek(int frame) override { position_ = frame; }

private:
    uint32_t state_ = 1;
    int position_ = 0;
};

// Reads kSeconds of the stage in blocks of 8192 frames and prints how much faster than real
// time that went.
void Measure(const char* name, LSoundSource stage) {
    std::vector<int> block(2 * 8192);
    const int frames = kSeconds * kRate;
    const auto start = std::chrono::steady_clock::now();
    for (int done = 0; done < frames; done += 8192)
        stage->Read(block.data(), 8192);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::printf("%-34s %8.1f x real time\n", name, kSeconds / elapsed.count());
}

LSoundSource Noise() {
    return LSoundSource(new NoiseSource());
}

} // namespace

int main() {
    LProcessInterfaceVoid progress;
    LSoundSource source = Noise();
    Measure("noise source alone", source);

    LSPEq riaa;
    ProcessRIAACurve(progress, kRate, riaa.curve);
    source = Noise();
    Measure("equaliser, RIAA curve", riaa.OpenSource(source));

    source = Noise();
    Measure("speed change 33 played at 45", LSPPitchSpeed(kSpeedFactor45To33).OpenSource(source));
    source = Noise();
    Measure("speed change 78 played at 45", LSPPitchSpeed(kSpeedFactor78To45).OpenSource(source));

    source = Noise();
    Measure("cue playback 1.5 to 7 over 8 s",
            LSPSpeed(1.5, 7.0, LSoundTime(8000)).OpenSource(source));
    source = Noise();
    Measure("cue playback -0.5 to -7 over 8 s",
            LSPSpeed(-0.5, -7.0, LSoundTime(8000)).OpenSource(source));
    return 0;
}
