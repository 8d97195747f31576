#include "support/CaptureSink.h"
#include "support/ToneSignals.h"

#include "sound/ConvertRateChannels.h"
#include "sound/ConvertRateSink.h"
#include "sound/ConvertRateSource.h"
#include "sound/SinkToSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <future>
#include <numbers>
#include <tuple>

namespace {

struct RatePair {
    int in;
    int out;
};

// Which converter: the source stage, read as far as its input reaches, or the sink adapter,
// written in blocks and closed (all it gives, the filter's delay included).
enum class Through { Source, Sink };

// A tone (channel c at amplitude / (c + 1)) of `frames` frames at `in` Hz, converted to `out` Hz.
std::vector<int> Convert(Through through, int in, int out, unsigned char channels, double frequency,
                         double amplitude, int frames, int block = 8192) {
    LSoundSource source = MakeSineSource(in, channels, frequency, amplitude, frames);
    if (through == Through::Source) {
        LSoundSource converted = LSPConvertRate(out).OpenSource(source);
        return ReadFrames(converted, static_cast<int>(int64_t{frames} * out / in));
    }
    std::vector<int> captured;
    LSoundSink target(new CaptureSink(out, channels, captured));
    LSoundSink sink = LSinkConvertRate{in}.OpenSink(target);
    target.Close();
    const std::vector<int> samples = ReadFrames(source, frames);
    for (int done = 0; done < frames; done += block)
        sink->Write(samples.data() + done * channels, std::min(block, frames - done));
    EXPECT_EQ(sink->GetPosition(), frames);
    sink.Close();
    return captured;
}

} // namespace

TEST(ConvertRateBase, CoefficientsFollowAKaiserWindowedSinc) {
    // The textbook design in double precision, with the full Bessel function for the window;
    // the generator's seven-term series for it is good to a few units.
    struct Case {
        int in, out, taps;
        bool narrow;
        double cutoff, beta;
    };
    for (const Case& c : {Case{44100, 48000, 63, false, 0.975, 2.12},
                          Case{48000, 44100, 63, false, 44100.0 / 48000 - 0.046875, 4.538},
                          Case{176400, 88200, 63, true, 0.5 - 0.09375, 4.538},
                          Case{48000, 44100, 15, false, 44100.0 / 48000 - 0.046875, 4.538}}) {
        const LConvertRateBase rate(c.in, c.out, c.taps, c.narrow);
        const double half = c.taps / 2 + 1;
        for (int p = 0; p < rate.GetPhases(); ++p) {
            for (int t = 0; t < c.taps; ++t) {
                const double x = t - c.taps / 2 - static_cast<double>(p) / rate.GetPhases();
                const double arg = std::numbers::pi * c.cutoff * x;
                const double sinc = x == 0 ? 1 : std::sin(arg) / arg;
                const double window =
                    std::cyl_bessel_i(0.0, c.beta * std::sqrt(1 - x * x / (half * half))) /
                    std::cyl_bessel_i(0.0, c.beta);
                ASSERT_NEAR(rate.GetCoefficients(p)[t], sinc * window * c.cutoff * 65536, 4)
                    << c.in << " -> " << c.out << " phase " << p << " tap " << t;
            }
        }
    }
}

TEST(ConvertRateStages, OpenOnlyWhereTheRateDiffers) {
    LSoundSource same = MakeSineSource(44100, 2, 1000, 1000, 100);
    EXPECT_EQ(LSPConvertRate(44100).OpenSource(same).Get(), same.Get());
    LSoundSource failed;
    EXPECT_EQ(LSPConvertRate(48000).OpenSource(failed).Get(), failed.Get());
    LSoundSource noRate = LSPConvertRate(0).OpenSource(same);
    EXPECT_EQ(noRate->GetError(), sndErrFormat);
    EXPECT_EQ(noRate->GetSampleRate(), 44100);
}

class ConvertRatePosition : public testing::TestWithParam<RatePair> {};

TEST_P(ConvertRatePosition, EndPositionAndSeekFollowTheOutputRate) {
    const auto [in, out] = GetParam();
    LSoundSource source = MakeSineSource(in, 2, 1000, 300000, 3 * in);
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

TEST(ConvertRatePosition, AStreamingSourceIsReadOnlyAsFarAsItIsFilled) {
    // 10,000 frames in a pipe whose writer is still open: reading up to the stage's end must
    // not wait for more, and gives what the finished frames give.
    LSoundSource tone = MakeSineSource(44100, 2, 1000, 300000, 10000);
    const std::vector<int> input = ReadFrames(tone, 10000);
    LSinkToSource pipe(44100, 2, 524272);
    LSoundSink writer = pipe.OpenSink();
    writer->Write(input.data(), 8192);
    writer->Write(input.data() + 2 * 8192, 10000 - 8192);
    LSoundSource streaming = pipe.OpenSource();
    LSoundSource converted = LSPConvertRate(48000).OpenSource(streaming);
    const int end = converted->GetEndSample();
    // Short of the 10,884 output frames of the whole input by the filter's half length.
    EXPECT_GT(end, 10884 - 40);
    EXPECT_LT(end, 10884 - 33);

    auto reading = std::async(std::launch::async, [&] { return ReadFrames(converted, end); });
    if (reading.wait_for(std::chrono::seconds(10)) != std::future_status::ready) {
        writer.Close(); // lets the reader finish with silence
        FAIL() << "the stage waited for frames that were not written";
    }
    const std::vector<int> samples = reading.get();

    LSoundSource finished = MakeSineSource(44100, 2, 1000, 300000, 10000);
    LSoundSource reference = LSPConvertRate(48000).OpenSource(finished);
    EXPECT_EQ(samples, ReadFrames(reference, end));
}

class ConvertRateSignal : public testing::TestWithParam<std::tuple<Through, RatePair, double>> {};

TEST_P(ConvertRateSignal, KeepsTheLevelAndFrequencyOfATone) {
    const auto [through, pair, amplitude] = GetParam();
    // Stereo, the right channel at half the level.
    const std::vector<int> samples =
        Convert(through, pair.in, pair.out, 2, 1000, amplitude, 2 * pair.in);
    ASSERT_EQ(samples.size(), 2u * 2 * pair.out);
    // The sink's shorter filter leaves more behind.
    const double residual = through == Through::Source ? -50 : -40;
    for (int channel : {0, 1}) {
        // One second from the middle: a whole number of cycles.
        const std::vector<double> values =
            ChannelValues(samples, 2, channel, pair.out / 2, pair.out);
        const double expected = amplitude / (channel + 1);
        EXPECT_NEAR(DB(ToneAmplitude(values, pair.out, 1000) / expected), 0, 0.2);
        EXPECT_LT(ResidualDB(values, pair.out, 1000), residual);
        EXPECT_NEAR(RisingCrossings(values), 1000, 1);
    }
}

// Amplitudes that need no block scaling, the 16-bit range, and the louder range of MP3 input;
// the sink adapter takes output in the 16-bit range only. A fourfold reduction takes two stages.
std::vector<std::tuple<Through, RatePair, double>> ToneCases() {
    std::vector<std::tuple<Through, RatePair, double>> cases;
    for (RatePair pair : {RatePair{44100, 48000}, RatePair{48000, 44100}, RatePair{176400, 44100}}) {
        for (double amplitude : {1000.0, 300000.0, 2000000.0})
            cases.emplace_back(Through::Source, pair, amplitude);
        cases.emplace_back(Through::Sink, pair, 300000.0);
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Pairs, ConvertRateSignal, testing::ValuesIn(ToneCases()));

TEST(ConvertRateSignal, RemovesTonesAboveTheOutputNyquistFrequency) {
    struct Case {
        Through through;
        int in;
        double frequency;
    };
    // 70 kHz from 176.4 kHz would alias to 18.2 kHz in the first stage's 88.2 kHz output. The
    // sink's short filter leaves a wide transition band: a halving of the rate still takes a
    // 30 kHz tone far enough down.
    for (const Case& c : {Case{Through::Source, 48000, 23000}, Case{Through::Source, 96000, 30000},
                          Case{Through::Source, 176400, 30000}, Case{Through::Source, 176400, 70000},
                          Case{Through::Sink, 88200, 30000}}) {
        const std::vector<int> samples = Convert(c.through, c.in, 44100, 1, c.frequency, 300000, c.in);
        const std::vector<double> values = ChannelValues(samples, 1, 0, 11025, 22050);
        EXPECT_LT(DB(RMS(values) * std::sqrt(2.0) / 300000), -40)
            << c.in << " Hz, " << c.frequency << (c.through == Through::Sink ? " (sink)" : "");
    }
}

TEST(ConvertRateSink, BlockSizesDoNotChangeTheOutput) {
    const auto convert = [](int block) {
        return Convert(Through::Sink, 48000, 44100, 1, 1000, 300000, 30000, block);
    };
    const std::vector<int> whole = convert(8192);
    EXPECT_EQ(whole.size(), 27563u); // 30,000 x 147 / 160, rounded up
    for (int block : {1, 7, 100, 4097})
        EXPECT_EQ(convert(block), whole) << block;
}

TEST(ConvertRateSink, SeekFinishesTheFilterAndMovesTheTarget) {
    std::vector<int> captured;
    std::vector<int> seeks;
    LSoundSink target(new CaptureSink(44100, 1, captured, &seeks));
    LSoundSink sink = LSinkConvertRate{48000}.OpenSink(target);
    EXPECT_EQ(sink->GetSampleRate(), 48000);

    const std::vector<int> ones(1000, 16000);
    sink->Write(ones.data(), 1000);
    sink->Seek(48000);
    EXPECT_EQ(captured.size(), 919u);
    EXPECT_EQ(seeks, std::vector<int>{44100});
    EXPECT_EQ(sink->GetPosition(), 48000);
    // A constant comes through at its level (within the ripple of the phases) once the
    // filter has settled.
    EXPECT_NEAR(captured[500], 16000, 160);

    sink->Write(ones.data(), 160);
    sink.Close();
    EXPECT_EQ(captured.size(), 919u + 147);
}
