#include "restore/RIAA.h"

#include "support/RecordingProgress.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace {

double RIAALevel(int freq) {
    RecordingProgress progress;
    double dB = 0;
    EXPECT_EQ(ProcessMapFrequencyToDB(progress, freq, dB), PROCESS_DONE);
    return dB;
}

int PixelY(double dB) {
    RecordingProgress progress;
    unsigned char y = 0;
    EXPECT_EQ(ProcessMapDBToPixelY(progress, dB, y), PROCESS_DONE);
    return y;
}

} // namespace

TEST(EqRIAA, LevelsFollowThePlaybackCurveWithSixDecibelsAtZeroHertz) {
    EXPECT_NEAR(RIAALevel(0), 6.0, 1e-9);
    EXPECT_NEAR(RIAALevel(1000), -13.911, 0.001);
    EXPECT_NEAR(RIAALevel(20000), -33.5, 0.1);
    // Relative to 1 kHz, the standard table: +19.27 dB at 20 Hz, +13.09 dB at 100 Hz,
    // -13.73 dB at 10 kHz, -19.62 dB at 20 kHz.
    EXPECT_NEAR(RIAALevel(20) - RIAALevel(1000), 19.27, 0.02);
    EXPECT_NEAR(RIAALevel(100) - RIAALevel(1000), 13.09, 0.02);
    EXPECT_NEAR(RIAALevel(10000) - RIAALevel(1000), -13.73, 0.02);
    EXPECT_NEAR(RIAALevel(20000) - RIAALevel(1000), -19.62, 0.02);
}

TEST(EqRIAA, DrawingMapsPixelsToFrequenciesAndLevelsToEightBitHeights) {
    RecordingProgress progress;
    int freq = -5;
    EXPECT_EQ(ProcessMapPixelXToFrequency(progress, 1, freq, 256), PROCESS_DONE);
    EXPECT_EQ(freq, 78);
    EXPECT_EQ(ProcessMapPixelXToFrequency(progress, 300, freq, 256), PROCESS_DONE);
    EXPECT_EQ(freq, 20000);
    EXPECT_EQ(ProcessMapPixelXToFrequency(progress, -1, freq, 256), PROCESS_FAILED);
    double dB = 0;
    EXPECT_EQ(ProcessMapFrequencyToDB(progress, -1, dB), PROCESS_FAILED);

    EXPECT_EQ(PixelY(RIAALevel(78)), 143);
    EXPECT_EQ(PixelY(RIAALevel(1000)), 25);
    EXPECT_EQ(PixelY(6.0), 0);    // 256, kept to eight bits
    EXPECT_EQ(PixelY(-13.5), 25); // rounded away from zero to -14 dB
    EXPECT_EQ(PixelY(-200), 0);

    // A job asked to stop computes nothing.
    progress.stopAfter = 0;
    unsigned char y = 77;
    EXPECT_EQ(ProcessMapDBToPixelY(progress, 0.0, y), PROCESS_FAILED);
    EXPECT_EQ(y, 77);
}

TEST(EqRIAA, CurveRisesFromZeroHertzAndHoldsTheLastPixelToTheTop) {
    RecordingProgress progress;
    std::array<unsigned char, 2048> curve{};
    ASSERT_EQ(ProcessRIAACurve(progress, 44100, curve), PROCESS_DONE);
    // 0 Hz wraps to 0; the line rises to the 78 Hz pixel, which starts at bin 7.
    EXPECT_EQ(curve[0], 0);
    for (int k = 1; k <= 7; ++k)
        EXPECT_GT(curve[k], curve[k - 1]);
    EXPECT_EQ(curve[7], 143);
    EXPECT_EQ(curve[94], PixelY(RIAALevel(1015))); // pixel 13 starts at bin 94
    // Past the last pixel (bin 1857) every bin holds the 19.9 kHz height.
    for (int k = 1857; k < 2048; ++k)
        ASSERT_EQ(curve[k], PixelY(RIAALevel(19921))) << k;

    // At half the rate the same frequencies lie at twice the bins.
    ASSERT_EQ(ProcessRIAACurve(progress, 22050, curve), PROCESS_DONE);
    EXPECT_EQ(curve[14], 143);
}

TEST(EqRIAA, StepLiftsOneKilohertzByTwoDecibelsAndCutsTenKilohertzByTwelve) {
    struct Probe {
        int bin; // a frequency that repeats exactly in 16384 frames
        double dB;
    };
    for (const Probe probe : {Probe{93, 1.96}, Probe{929, -12.0}}) {
        const double frequency = probe.bin * 44100.0 / 4096;
        LSoundSource source = MakeSineSource(44100, 2, frequency, 50000, 60000);
        RecordingProgress progress;
        ASSERT_EQ(ProcessRIAAEqCalculate(progress, source), PROCESS_DONE);
        EXPECT_EQ(progress.statuses.at(0).first, "RIAA Equalization");
        const std::vector<int> out = ReadFrames(source, 40000);
        for (int c = 0; c < 2; ++c) {
            const double amplitude =
                ToneAmplitude(ChannelValues(out, 2, c, 20000, 16384), 44100, frequency);
            EXPECT_NEAR(DB(amplitude * (c + 1) / 50000), probe.dB, 0.1) << frequency;
        }
    }

    // Asked to stop, the step leaves the source as it was.
    LSoundSource source = MakeSineSource(44100, 1, 1000, 50000, 1000);
    LSoundSourceBase* before = source.Get();
    RecordingProgress stopped;
    stopped.stopAfter = 0;
    EXPECT_EQ(ProcessRIAAEqCalculate(stopped, source), PROCESS_STOPPED);
    EXPECT_EQ(source.Get(), before);
}
