// Throughput of the FFT equaliser (with the RIAA curve), the record speed correction and the
// cue playback speed on 44.1 kHz stereo, as multiples of real time.
#include "BenchMeasure.h"

#include "jobs/ProcessInterfaceVoid.h"
#include "restore/CueSpeed.h"
#include "restore/Equalizer.h"
#include "restore/PitchSpeed.h"
#include "restore/RIAA.h"

namespace {

constexpr int kRate = 44100;
constexpr int kSeconds = 120;

LSoundSource Noise() {
    return LSoundSource(new BenchNoiseSource(kRate, 2, kSeconds));
}

void Measure(const char* name, LSoundSource stage) {
    BenchMeasure(name, stage, kSeconds);
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
