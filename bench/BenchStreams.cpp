// Throughput of the stream stages on stereo noise, as multiples of real time: each rate
// conversion, the high-pass, the peak limiter, and the pump into a sink that keeps nothing.
#include "BenchMeasure.h"

#include "jobs/ProcessInterfaceVoid.h"
#include "restore/HighPassFilter.h"
#include "sound/ConvertRateSource.h"
#include "sound/PeakLimit.h"
#include "sound/SoundSink.h"
#include "sound/SourceToSink.h"

#include <chrono>
#include <cstdio>

namespace {

constexpr int kSeconds = 300;

LSoundSource Noise(int rate)
{
    return LSoundSource(new BenchNoiseSource(rate, 2, kSeconds));
}

// A source that declares more than 16-bit full scale, so that the limiter has work to do.
class LoudNoise : public BenchNoiseSource {
public:
    LoudNoise() : BenchNoiseSource(44100, 2, kSeconds) { maxAmplitude_ = 2097152; }
    void Read(int* buffer, int frames) override
    {
        BenchNoiseSource::Read(buffer, frames);
        for (int i = 0; i < frames * 2; ++i)
            buffer[i] *= 512;
    }
};

} // namespace

int main()
{
    BenchMeasure("noise source alone, 44.1 kHz", Noise(44100), kSeconds);

    LSoundSource source = Noise(44100);
    BenchMeasure("rate 44.1 -> 48 kHz", LSPConvertRate(48000).OpenSource(source), kSeconds);
    source = Noise(48000);
    BenchMeasure("rate 48 -> 44.1 kHz", LSPConvertRate(44100).OpenSource(source), kSeconds);
    source = Noise(96000);
    BenchMeasure("rate 96 -> 44.1 kHz", LSPConvertRate(44100).OpenSource(source), kSeconds);

    source = Noise(44100);
    BenchMeasure("high-pass 150 Hz", LSPHighPassIIR2(150).OpenSource(source), kSeconds);
    source = LSoundSource(new LoudNoise());
    BenchMeasure("peak limiter", LSPPeakLimit(524272).OpenSource(source), kSeconds);

    LProcessInterfaceVoid progress;
    LPRSourceToSink job;
    job.source = Noise(44100);
    job.sink = LSoundSinkStub{44100, 2}.OpenSink();
    const auto start = std::chrono::steady_clock::now();
    Process(progress, job);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::printf("%-34s %8.1f x real time\n", "pump into a null sink", kSeconds / elapsed.count());
    return 0;
}
