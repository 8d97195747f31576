#include "restore/HighPassFilter.h"

#include "support/BufferSource.h"
#include "support/RecordingProgress.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

namespace {

constexpr int kRate = 44100;

std::vector<int> Sine(double frequency, double amplitude, int frames)
{
    std::vector<int> samples(frames);
    const double step = 2 * std::numbers::pi * frequency / kRate;
    for (int i = 0; i < frames; ++i)
        samples[i] = static_cast<int>(std::lround(amplitude * std::sin(step * i)));
    return samples;
}

// Amplitude of one frequency over samples [first, end) of a mono signal.
double Amplitude(const std::vector<int>& samples, int first, double frequency)
{
    const double step = 2 * std::numbers::pi * frequency / kRate;
    std::complex<double> sum;
    for (size_t i = first; i < samples.size(); ++i)
        sum += static_cast<double>(samples[i]) * std::polar(1.0, -step * static_cast<double>(i));
    return 2 * std::abs(sum) / static_cast<double>(samples.size() - first);
}

double GainDB(double frequency, int frames, int measureFrom)
{
    const double amplitude = 400000;
    LSoundSource source = MakeBufferSource(Sine(frequency, amplitude, frames), kRate, 1);
    LSPHighPassIIR2 highPass(150);
    LSoundSource filtered = highPass.OpenSource(source);
    const std::vector<int> out = ReadAll(filtered, frames);
    return 20 * std::log10(Amplitude(out, measureFrom, frequency) / amplitude);
}

TEST(HighPass, PassesOneKilohertzAndCutsTenHertz)
{
    EXPECT_NEAR(GainDB(1000, kRate, kRate / 2), 0.0, 0.1);
    EXPECT_NEAR(GainDB(150, kRate, kRate / 2), -3.01, 0.05);
    EXPECT_NEAR(GainDB(50, kRate, kRate / 2), -19.1, 0.3);
    // (10/150)^2 is 47 dB; the truncating fixed-point recursion takes off a few dB more.
    EXPECT_LT(GainDB(10, 2 * kRate, kRate), -46.0);
}

TEST(HighPass, FiltersEachChannelOnItsOwnAcrossReads)
{
    const int frames = 20000;
    const std::vector<int> high = Sine(1000, 400000, frames);
    const std::vector<int> low = Sine(10, 400000, frames);
    std::vector<int> stereo;
    for (int i = 0; i < frames; ++i)
        stereo.insert(stereo.end(), {high[i], low[i]});
    LSoundSource source = MakeBufferSource(stereo, kRate, 2);
    LSoundSource filtered = LSPHighPassIIR2(150).OpenSource(source);
    // Odd read sizes: the history carries over from one read to the next.
    const std::vector<int> out = ReadAll(filtered, frames, 1001);

    LSoundSource mono = MakeBufferSource(high, kRate, 1);
    LSoundSource monoFiltered = LSPHighPassIIR2(150).OpenSource(mono);
    const std::vector<int> monoOut = ReadAll(monoFiltered, frames);
    for (int i = 0; i < frames; ++i)
        ASSERT_EQ(out[2 * i], monoOut[i]) << "frame " << i;
}

TEST(HighPass, SeekForgetsTheHistory)
{
    LSoundSource source = MakeBufferSource(Sine(440, 300000, 5000), kRate, 1);
    LSoundSource filtered = LSPHighPassIIR2(150).OpenSource(source);
    const std::vector<int> first = ReadAll(filtered, 3000);
    filtered->Seek(0);
    EXPECT_EQ(ReadAll(filtered, 3000), first);
}

TEST(HighPass, CutoffDefaults)
{
    EXPECT_EQ(LHighPassIIR2(0, kRate, 1).GetCutoff(), 10);

    RecordingProgress progress;
    LSoundSource source = MakeBufferSource({0, 0}, 22050, 2);
    ASSERT_EQ(ProcessLowCutFilter(progress, source, 0), PROCESS_DONE);
    auto* stage = dynamic_cast<LSRCHighPassIIR2*>(source.Get());
    ASSERT_NE(stage, nullptr);
    EXPECT_EQ(stage->GetFilter().GetCutoff(), 150);
    EXPECT_EQ(stage->GetFilter().GetRate(), 22050);
    EXPECT_EQ(progress.statuses,
              (std::vector<std::pair<std::string, int>>{{"High Pass Filter", 0}}));
}

TEST(HighPass, ChainStepRefusesAnErrorSource)
{
    RecordingProgress progress;
    LSoundSource source;
    LSoundSourceBase* before = source.Get();
    EXPECT_EQ(ProcessLowCutFilter(progress, source, 150), PROCESS_FAILED);
    EXPECT_EQ(source.Get(), before);
}

} // namespace
