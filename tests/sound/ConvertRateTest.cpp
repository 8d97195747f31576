#include "ConvertTestSignals.h"

#include "sound/ConvertRateChannels.h"
#include "sound/ConvertRateSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <tuple>

using namespace convert_test;

namespace {

struct RatePair {
    int in;
    int out;
};

} // namespace

TEST(ConvertRateBase, PhasesAndStepReduceTheRatePair) {
    struct Case {
        int in, out, phases, step;
    };
    for (const Case& c :
         {Case{44100, 48000, 160, 147}, Case{48000, 44100, 147, 160}, Case{88200, 44100, 1, 2},
          Case{22050, 44100, 2, 1}, Case{44100, 44100, 1, 1}}) {
        const LConvertRateBase rate(c.in, c.out, 63, false);
        EXPECT_EQ(rate.GetPhases(), c.phases) << c.in << " -> " << c.out;
        EXPECT_EQ(rate.GetStep(), c.step) << c.in << " -> " << c.out;
    }
}

TEST(ConvertRateBase, EveryPhaseHasUnityGainAndItsCentreTapAtTheCutOff) {
    // Upsampling cuts at 0.975 of the input's Nyquist frequency, downsampling just below the
    // output's, and further below with the narrow flag.
    struct Case {
        int in, out, taps;
        bool narrow;
        int centre;
    };
    for (const Case& c :
         {Case{44100, 48000, 63, false, 63898}, Case{48000, 44100, 63, false, 57139},
          Case{176400, 88200, 63, true, 26624}, Case{48000, 44100, 15, false, 57139}}) {
        const LConvertRateBase rate(c.in, c.out, c.taps, c.narrow);
        EXPECT_EQ(rate.GetCoefficients(0)[c.taps / 2], c.centre) << c.in << " -> " << c.out;
        for (int p = 0; p < rate.GetPhases(); ++p) {
            const int* coef = rate.GetCoefficients(p);
            const int sum = std::accumulate(coef, coef + c.taps, 0);
            EXPECT_NEAR(sum, 65536, 655) << c.in << " -> " << c.out << " phase " << p;
        }
    }
}

TEST(ConvertRateStages, EqualRatesKeepTheSourceAndLargeReductionsTakeTwoStages) {
    LSoundSource same = Sine(44100, 2, 1000, 1000, 100);
    EXPECT_EQ(LSPConvertRate(44100).OpenSource(same).Get(), same.Get());

    // Each stage doubles the maximum amplitude, so it counts the stages; the last stage's
    // phases and step show the rate it starts from.
    struct Case {
        int in, stages, phases, step;
    };
    for (const Case& c : {Case{176400, 2, 1, 2}, Case{192000, 2, 1, 2}, Case{96000, 1, 147, 320},
                          Case{48000, 1, 147, 160}}) {
        LSoundSource source = Sine(c.in, 2, 1000, 1000, 100);
        LSoundSource converted = LSPConvertRate(44100).OpenSource(source);
        auto* stage = dynamic_cast<LSRCConvertRate*>(converted.Get());
        ASSERT_NE(stage, nullptr) << c.in;
        EXPECT_EQ(converted->GetSampleRate(), 44100);
        EXPECT_EQ(converted->GetMaxAmplitude(), 524272 << c.stages) << c.in;
        EXPECT_EQ(stage->GetRate().GetPhases(), c.phases) << c.in;
        EXPECT_EQ(stage->GetRate().GetStep(), c.step) << c.in;
    }
}

TEST(ConvertRateStages, RefusesWhatItCannotConvert) {
    LSoundSource failed;
    EXPECT_EQ(LSPConvertRate(48000).OpenSource(failed).Get(), failed.Get());

    LSoundSource mono = Sine(44100, 1, 1000, 1000, 100);
    LSoundSource noRate = LSPConvertRate(0).OpenSource(mono);
    EXPECT_EQ(noRate->GetError(), sndErrFormat);
    EXPECT_EQ(noRate->GetSampleRate(), 44100);

    // More than two channels cannot be resampled: the stage says so and reads silence.
    LSoundSource six = Sine(44100, 6, 1000, 100000, 10000);
    LSoundSource converted = LSPConvertRate(48000).OpenSource(six);
    EXPECT_EQ(converted->GetError(), sndErrFormat);
    EXPECT_EQ(converted->GetChannels(), 6);
    std::vector<int> samples(600, 7);
    converted->Read(samples.data(), 100);
    EXPECT_EQ(samples, std::vector<int>(600, 0));
}

class ConvertRatePosition : public testing::TestWithParam<RatePair> {};

TEST_P(ConvertRatePosition, EndPositionAndSeekFollowTheOutputRate) {
    const auto [in, out] = GetParam();
    LSoundSource source = Sine(in, 2, 1000, 300000, 3 * in);
    LSoundSource converted = LSPConvertRate(out).OpenSource(source);
    EXPECT_EQ(converted->GetEndSample(), 3 * out);
    EXPECT_EQ(converted->GetPositionSample(), 0);

    // Long enough for the input buffer to wrap around.
    const std::vector<int> whole = ReadFrames(converted, 3 * out);
    EXPECT_EQ(converted->GetPositionSample(), 3 * out);

    for (int frame : {0, 1, 159, 160, 12345, 2 * out + 777}) {
        converted->Seek(frame);
        EXPECT_EQ(converted->GetPositionSample(), frame);
        const std::vector<int> part = ReadFrames(converted, 500);
        EXPECT_EQ(converted->GetPositionSample(), frame + 500);
        EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin() + 2 * frame))
            << "seek to " << frame;
    }

    // Before the start: silence, then the same frames as from the start.
    converted->Seek(-100);
    EXPECT_EQ(converted->GetPositionSample(), -100);
    const std::vector<int> early = ReadFrames(converted, 600);
    EXPECT_TRUE(std::equal(early.begin() + 200, early.end(), whole.begin()));
    EXPECT_EQ(std::vector<int>(early.begin(), early.begin() + 60), std::vector<int>(60, 0));

    // At the end: the filter's tail, then silence.
    converted->Seek(3 * out);
    const std::vector<int> after = ReadFrames(converted, 1000);
    EXPECT_EQ(std::vector<int>(after.begin() + 80, after.end()), std::vector<int>(1920, 0));
}

INSTANTIATE_TEST_SUITE_P(Pairs, ConvertRatePosition,
                         testing::Values(RatePair{44100, 48000}, RatePair{48000, 44100}));

class ConvertRateSignal : public testing::TestWithParam<std::tuple<RatePair, double>> {};

TEST_P(ConvertRateSignal, KeepsTheLevelAndFrequencyOfATone) {
    const auto [pair, amplitude] = GetParam();
    // Stereo, the right channel at half the level.
    LSoundSource source = Sine(pair.in, 2, 1000, amplitude, 2 * pair.in);
    LSoundSource converted = LSPConvertRate(pair.out).OpenSource(source);
    const std::vector<int> samples = ReadFrames(converted, 2 * pair.out);

    for (int channel : {0, 1}) {
        // One second from the middle: a whole number of cycles.
        const std::vector<double> values = Channel(samples, 2, channel, pair.out / 2, pair.out);
        const double expected = amplitude / (channel + 1);
        EXPECT_NEAR(DB(ToneAmplitude(values, pair.out, 1000) / expected), 0, 0.2);
        EXPECT_LT(ResidualDB(values, pair.out, 1000), -50);
        EXPECT_NEAR(RisingCrossings(values), 1000, 1);
    }
}

// Amplitudes that need no block scaling, the 16-bit range, and the louder range of MP3 input.
INSTANTIATE_TEST_SUITE_P(Pairs, ConvertRateSignal,
                         testing::Combine(testing::Values(RatePair{44100, 48000},
                                                          RatePair{48000, 44100}),
                                          testing::Values(1000.0, 300000.0, 2000000.0)));

TEST(ConvertRateSignal, RemovesTonesAboveTheOutputNyquistFrequency) {
    struct Case {
        int in;
        double frequency;
    };
    // 70 kHz from 176.4 kHz would alias to 18.2 kHz in the first stage's 88.2 kHz output.
    for (const Case& c :
         {Case{48000, 23000}, Case{96000, 30000}, Case{176400, 30000}, Case{176400, 70000}}) {
        LSoundSource source = Sine(c.in, 1, c.frequency, 300000, c.in);
        LSoundSource converted = LSPConvertRate(44100).OpenSource(source);
        const std::vector<int> samples = ReadFrames(converted, 44100);
        const std::vector<double> values = Channel(samples, 1, 0, 11025, 22050);
        EXPECT_LT(DB(RMS(values) * std::sqrt(2.0) / 300000), -40) << c.in << " Hz, " << c.frequency;
    }

    // The two stages keep the audio band.
    LSoundSource source = Sine(176400, 1, 1000, 300000, 176400);
    LSoundSource converted = LSPConvertRate(44100).OpenSource(source);
    const std::vector<int> samples = ReadFrames(converted, 44100);
    const std::vector<double> values = Channel(samples, 1, 0, 11025, 22050);
    EXPECT_NEAR(DB(ToneAmplitude(values, 44100, 1000) / 300000), 0, 0.2);
    EXPECT_LT(ResidualDB(values, 44100, 1000), -50);
}
