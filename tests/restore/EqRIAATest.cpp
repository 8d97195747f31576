#include "restore/RIAA.h"

#include "SpeedEqSignals.h"
#include "jobs/ProcessInterfaceVoid.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

using namespace speedeq_test;

namespace {

class StoppedJob : public LProcessInterfaceVoid {
public:
    bool IsToStop() override { return true; }
};

double RIAALevel(int freq) {
    LProcessInterfaceVoid progress;
    double dB = 0;
    EXPECT_EQ(ProcessMapFrequencyToDB(progress, freq, dB), PROCESS_DONE);
    return dB;
}

int PixelY(double dB) {
    LProcessInterfaceVoid progress;
    unsigned char y = 0;
    EXPECT_EQ(ProcessMapDBToPixelY(progress, dB, y), PROCESS_DONE);
    return y;
}

// The RIAA playback response from its time constants, 0 dB at 1 kHz.
double ReferenceRIAA(double f) {
    const auto term = [f](double seconds) {
        const double wt = 2 * std::numbers::pi * f * seconds;
        return 10 * std::log10(1 + wt * wt);
    };
    const double at = term(318e-6) - term(3180e-6) - term(75e-6);
    const double wt1k = 2 * std::numbers::pi * 1000;
    const auto term1k = [wt1k](double seconds) {
        return 10 * std::log10(1 + wt1k * seconds * wt1k * seconds);
    };
    return at - (term1k(318e-6) - term1k(3180e-6) - term1k(75e-6));
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
    LProcessInterfaceVoid progress;
    int freq = -5;
    EXPECT_EQ(ProcessMapPixelXToFrequency(progress, 1, freq, 256), PROCESS_DONE);
    EXPECT_EQ(freq, 78);
    EXPECT_EQ(ProcessMapPixelXToFrequency(progress, 300, freq, 256), PROCESS_DONE);
    EXPECT_EQ(freq, 20000);
    freq = -5;
    EXPECT_EQ(ProcessMapPixelXToFrequency(progress, -1, freq, 256), PROCESS_FAILED);
    EXPECT_EQ(freq, -5);
    double dB = 1;
    EXPECT_EQ(ProcessMapFrequencyToDB(progress, -1, dB), PROCESS_FAILED);

    EXPECT_EQ(PixelY(RIAALevel(78)), 143);
    EXPECT_EQ(PixelY(RIAALevel(1000)), 25);
    EXPECT_EQ(PixelY(6.0), 0);    // 256, kept to eight bits
    EXPECT_EQ(PixelY(-13.5), 25); // rounded away from zero to -14 dB
    EXPECT_EQ(PixelY(-200), 0);

    // A job asked to stop computes nothing.
    StoppedJob stopped;
    unsigned char y = 77;
    int amplitude = 5;
    freq = 3;
    EXPECT_EQ(ProcessMapPixelXToFrequency(stopped, 10, freq, 256), PROCESS_FAILED);
    EXPECT_EQ(ProcessMapDBToAmplitude(stopped, 0.0, amplitude), PROCESS_FAILED);
    EXPECT_EQ(ProcessMapDBToPixelY(stopped, 0.0, y), PROCESS_FAILED);
    EXPECT_EQ(freq, 3);
    EXPECT_EQ(amplitude, 5);
    EXPECT_EQ(y, 77);
}

TEST(EqRIAA, CurveRunsThroughTheRoundedPlaybackLevelAtEachPixel) {
    LProcessInterfaceVoid progress;
    std::array<unsigned char, 2048> curve{};
    ASSERT_EQ(ProcessRIAACurve(progress, 44100, curve), PROCESS_DONE);
    // Pixel x (x * 78.125 Hz) starts at bin x * 321254 / 44100, 7.28 bins per pixel.
    for (int x = 1; x < 255; ++x) {
        const int bin = static_cast<int>(x * (321254.0 / 44100));
        const double dB = std::round(ReferenceRIAA(static_cast<int>(x * 78.125)) - 13.911);
        EXPECT_EQ(curve[bin], static_cast<int>(256 * std::pow(10.0, (dB - 6) / 20))) << x;
    }
    // Below the first pixel the curve rises from 0 Hz, whose height wraps to 0.
    EXPECT_EQ(curve[0], 0);
    for (int k = 1; k < 7; ++k)
        EXPECT_GT(curve[k], curve[k - 1]);
    // Past the last pixel (bin 1857) every bin holds the 19.9 kHz height.
    for (int k = 1857; k < 2048; ++k)
        ASSERT_EQ(curve[k], PixelY(RIAALevel(19921))) << k;

    // At half the rate the same frequencies lie at twice the bins.
    std::array<unsigned char, 2048> half{};
    ASSERT_EQ(ProcessRIAACurve(progress, 22050, half), PROCESS_DONE);
    EXPECT_EQ(half[14], 143);
}

TEST(EqRIAA, StepLiftsOneKilohertzByTwoDecibelsAndCutsTenKilohertzByTwelve) {
    struct Probe {
        int bin; // a frequency that repeats exactly in 16384 frames
        double dB;
    };
    for (const Probe probe : {Probe{93, 1.96}, Probe{929, -12.0}}) {
        const double frequency = probe.bin * 44100.0 / 4096;
        LSoundSource source = Sine(44100, 2, frequency, 50000, 60000);
        LProcessInterfaceVoid progress;
        ASSERT_EQ(ProcessRIAAEqCalculate(progress, source), PROCESS_DONE);
        EXPECT_EQ(source->GetSampleRate(), 44100);
        const std::vector<int> out = ReadFrames(source, 40000);
        for (int c = 0; c < 2; ++c) {
            const double amplitude = ToneAmplitude(std::vector<int>(out.begin() + c, out.end()), 2,
                                                   20000, 16384, 44100, frequency);
            EXPECT_NEAR(DB(amplitude * (c + 1) / 50000), probe.dB, 0.1) << frequency;
        }
    }

    // Asked to stop, the step leaves the source as it was.
    LSoundSource source = Sine(44100, 1, 1000, 50000, 1000);
    LSoundSourceBase* before = source.Get();
    StoppedJob stopped;
    EXPECT_EQ(ProcessRIAAEqCalculate(stopped, source), PROCESS_STOPPED);
    EXPECT_EQ(source.Get(), before);
}
