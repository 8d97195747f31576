#include "restore/HighPassFilter.h"

#include "support/BufferSource.h"
#include "support/RecordingProgress.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

namespace {

constexpr int kRate = 44100;

// Level of a tone after the 150 Hz high-pass, measured from `from` on (whole cycles).
double GainDB(double frequency, int frames, int from) {
    LSoundSource source = MakeSineSource(kRate, 1, frequency, 400000, frames);
    LSoundSource filtered = LSPHighPassIIR2(150).OpenSource(source);
    const std::vector<int> out = ReadAll(filtered, frames);
    return DB(ToneAmplitude(ChannelValues(out, 1, 0, from, frames - from), kRate, frequency) /
              400000);
}

TEST(HighPass, PassesOneKilohertzAndCutsTenHertz) {
    EXPECT_NEAR(GainDB(1000, kRate, kRate / 2), 0.0, 0.1);
    EXPECT_NEAR(GainDB(150, kRate, kRate / 2), -3.01, 0.05);
    EXPECT_NEAR(GainDB(50, kRate, kRate / 2), -19.1, 0.3);
    // (10/150)^2 is 47 dB; the truncating fixed-point recursion takes off a few dB more.
    EXPECT_LT(GainDB(10, 2 * kRate, kRate), -46.0);
}

// Stereo is filtered two channels at a time, mono one at a time: each channel of a stereo
// stream comes out as it does alone, across reads of any size, and a seek forgets the history.
TEST(HighPass, FiltersEachChannelOnItsOwnAcrossReadsAndForgetsOnSeek) {
    const int frames = 20000;
    LSoundSource high = MakeSineSource(kRate, 1, 1000, 400000, frames);
    LSoundSource low = MakeSineSource(kRate, 1, 10, 400000, frames);
    const std::vector<int> highIn = ReadAll(high, frames);
    const std::vector<int> lowIn = ReadAll(low, frames);
    std::vector<int> stereo;
    for (int i = 0; i < frames; ++i)
        stereo.insert(stereo.end(), {highIn[i], lowIn[i]});
    LSoundSource source = MakeBufferSource(stereo, kRate, 2);
    LSoundSource filtered = LSPHighPassIIR2(150).OpenSource(source);
    const std::vector<int> out = ReadAll(filtered, frames, 1001);

    for (int c = 0; c < 2; ++c) {
        LSoundSource mono = MakeBufferSource(c ? lowIn : highIn, kRate, 1);
        LSoundSource monoFiltered = LSPHighPassIIR2(150).OpenSource(mono);
        const std::vector<int> monoOut = ReadAll(monoFiltered, frames, 1);
        for (int i = 0; i < frames; ++i)
            ASSERT_EQ(out[2 * i + c], monoOut[i]) << "channel " << c << " frame " << i;
    }
    filtered->Seek(0);
    EXPECT_EQ(ReadAll(filtered, frames, 4000), out);
}

TEST(HighPass, CutoffDefaultsAndChainStep) {
    EXPECT_EQ(LHighPassIIR2(0, kRate, 1).GetCutoff(), 10);

    RecordingProgress progress;
    LSoundSource source = MakeBufferSource({0, 0}, 22050, 2);
    ASSERT_EQ(ProcessLowCutFilter(progress, source, 0), PROCESS_DONE);
    auto* stage = dynamic_cast<LSRCHighPassIIR2*>(source.Get());
    ASSERT_NE(stage, nullptr);
    EXPECT_EQ(stage->GetFilter().GetCutoff(), 150);
    EXPECT_EQ(progress.statuses,
              (std::vector<std::pair<std::string, int>>{{"High Pass Filter", 0}}));

    LSoundSource broken;
    LSoundSourceBase* before = broken.Get();
    EXPECT_EQ(ProcessLowCutFilter(progress, broken, 150), PROCESS_FAILED);
    EXPECT_EQ(broken.Get(), before);
}

} // namespace
