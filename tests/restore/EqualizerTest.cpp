#include "restore/Equalizer.h"

#include "support/BufferSource.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace {

// Frequency of bin k of the 4096-point curve at 44.1 kHz.
double BinFrequency(int k) {
    return k * 44100.0 / 4096;
}

} // namespace

TEST(Equalizer, FlatCurvePassesAudioUnchangedWithoutDelay) {
    LSoundSource input = MakeSineSource(44100, 2, 1234.5, 400000, 30000);
    LSoundSource eq = LSPEq().OpenSource(input);
    EXPECT_EQ(eq->GetPositionSample(), 0);
    // Blocks of 1000 frames straddle the equaliser's 8192-frame chunks.
    const std::vector<int> out = ReadAll(eq, 30000, 1000);
    EXPECT_EQ(eq->GetPositionSample(), 30000);

    LSoundSource reference = MakeSineSource(44100, 2, 1234.5, 400000, 30000);
    const std::vector<int> expected = ReadFrames(reference, 30000);
    for (size_t i = 0; i < out.size(); ++i)
        ASSERT_NEAR(out[i], expected[i], 1) << i;
}

TEST(Equalizer, ImpulseComesOutAsTheSymmetricResponseCentredOnItsFrame) {
    // A low-pass curve: unity up to bin 300, a tenth above.
    std::array<unsigned char, 2048> curve;
    for (int k = 0; k < 2048; ++k)
        curve[k] = k < 300 ? 100 : 10;
    const std::vector<double> coeffs = LSRCEq::ImpulseResponse(curve);
    for (int j = 1; j < 2047; ++j)
        ASSERT_NEAR(coeffs[2047 - j], coeffs[2047 + j], 1e-12) << j;

    LSoundSource impulse = MakeBufferSource({1 << 22}, 44100, 1);
    LSoundSource eq = LSPEq(curve).OpenSource(impulse);
    const std::vector<int> out = ReadFrames(eq, 4000);
    for (int n = 0; n < 2048; ++n)
        ASSERT_NEAR(out[n], coeffs[2047 + n] * (1 << 22), 1.0) << n;
    for (int n = 2048; n < 4000; ++n)
        ASSERT_EQ(out[n], 0) << n;
}

TEST(Equalizer, ShapedCurveSetsTheLevelOfEachFrequency) {
    // 2.0 up to bin 199, 0.5 from bin 200 on, 1.0 from bin 1000 on.
    std::array<unsigned char, 2048> curve;
    for (int k = 0; k < 2048; ++k)
        curve[k] = k < 200 ? 200 : k < 1000 ? 50 : 100;
    struct Probe {
        int bin;
        double gain;
    };
    for (const Probe probe : {Probe{46, 2.0}, Probe{400, 0.5}, Probe{1500, 1.0}}) {
        const double frequency = BinFrequency(probe.bin);
        LSoundSource input = MakeSineSource(44100, 1, frequency, 100000, 60000);
        LSoundSource eq = LSPEq(curve).OpenSource(input);
        // 16384 frames hold a whole number of cycles of a bin frequency.
        const std::vector<int> out = ReadFrames(eq, 40000);
        const double amplitude =
            ToneAmplitude(ChannelValues(out, 1, 0, 20000, 16384), 44100, frequency);
        EXPECT_NEAR(DB(amplitude / 100000), DB(probe.gain), 0.05) << frequency;
    }
}

TEST(Equalizer, SeekGivesTheFilteredFrameAtTheNewPosition) {
    std::array<unsigned char, 2048> curve;
    for (int k = 0; k < 2048; ++k)
        curve[k] = static_cast<unsigned char>(255 - k / 10);
    LSoundSource input = MakeSineSource(44100, 2, 3000, 200000, 100000);
    LSoundSource eq = LSPEq(curve).OpenSource(input);
    const std::vector<int> straight = ReadFrames(eq, 50000);

    eq->Seek(30000);
    EXPECT_EQ(eq->GetPositionSample(), 30000);
    const std::vector<int> sought = ReadFrames(eq, 20000);
    for (int i = 0; i < 2 * 20000; ++i)
        ASSERT_NEAR(sought[i], straight[2 * 30000 + i], 1) << i;
}
