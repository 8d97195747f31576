#include "support/CaptureSink.h"
#include "support/ToneSignals.h"

#include "sound/ConvertChannelsSink.h"
#include "sound/ConvertRateChannels.h"
#include "sound/ConvertRateSink.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

// Writes a tone into a sink that accepts `in` Hz in front of a capture sink at `out` Hz, in
// blocks of the given size, and returns what reached the capture sink once the sink is closed.
std::vector<int> ConvertThroughSink(int in, int out, unsigned char channels, double frequency,
                                    int frames, int block) {
    std::vector<int> captured;
    LSoundSink target(new CaptureSink(out, channels, captured));
    LSoundSink sink = LSinkConvertRate{in}.OpenSink(target);
    target.Close();
    LSoundSource source = MakeSineSource(in, channels, frequency, 300000, frames);
    const std::vector<int> samples = ReadFrames(source, frames);
    for (int done = 0; done < frames; done += block)
        sink->Write(samples.data() + done * channels, std::min(block, frames - done));
    EXPECT_EQ(sink->GetPosition(), frames);
    sink.Close();
    return captured;
}

} // namespace

class ConvertRateSinkSignal : public testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(ConvertRateSinkSignal, KeepsTheLevelAndFrequencyOfATone) {
    const auto [in, out] = GetParam();
    const std::vector<int> samples = ConvertThroughSink(in, out, 2, 1000, 2 * in, 8192);
    // Everything written comes out, the filter's delay included.
    ASSERT_EQ(samples.size(), 2u * 2 * out);
    for (int channel : {0, 1}) {
        const std::vector<double> values = ChannelValues(samples, 2, channel, out / 2, out);
        const double expected = 300000.0 / (channel + 1);
        EXPECT_NEAR(DB(ToneAmplitude(values, out, 1000) / expected), 0, 0.2);
        EXPECT_LT(ResidualDB(values, out, 1000), -40);
        EXPECT_NEAR(RisingCrossings(values), 1000, 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Pairs, ConvertRateSinkSignal,
                         testing::Values(std::tuple{44100, 48000}, std::tuple{48000, 44100}));

TEST(ConvertRateSink, BlockSizesDoNotChangeTheOutput) {
    const std::vector<int> whole = ConvertThroughSink(48000, 44100, 1, 1000, 30000, 8192);
    EXPECT_EQ(whole.size(), 27563u); // 30,000 x 147 / 160, rounded up
    for (int block : {1, 7, 100, 4097})
        EXPECT_EQ(ConvertThroughSink(48000, 44100, 1, 1000, 30000, block), whole) << block;
}

TEST(ConvertRateSink, RemovesTonesAboveTheOutputNyquistFrequency) {
    // The short filter leaves a wide transition band: a halving of the rate still takes a
    // 30 kHz tone far enough down.
    const std::vector<int> samples = ConvertThroughSink(88200, 44100, 1, 30000, 88200, 8192);
    EXPECT_LT(DB(RMS(ChannelValues(samples, 1, 0, 11025, 22050)) * std::sqrt(2.0) / 300000), -40);
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

// Averaging stereo into a mono sink is covered by the fan-out's mono target.
TEST(ConvertChannelsSink, MonoIsDuplicatedAndSeeksReachTheTarget) {
    std::vector<int> captured;
    std::vector<int> seeks;
    LSoundSink stereo(new CaptureSink(44100, 2, captured, &seeks));
    LSoundSink sink = LSinkConvertChannels::OpenSink(stereo, 1);
    const int values[] = {7, -9};
    sink->Write(values, 2);
    EXPECT_EQ(captured, (std::vector<int>{7, 7, -9, -9}));
    sink->Seek(250);
    EXPECT_EQ(seeks, std::vector<int>{250});
    EXPECT_EQ(sink->GetPosition(), 250);
    EXPECT_EQ(LSinkConvertChannels::OpenSink(stereo, 6)->GetError(), 1);
}

TEST(ConvertSinkRateChannels, ResamplesOnTheSmallerChannelCountAndRefusesWhatItCannot) {
    // Stereo at 48 kHz into a mono 44.1 kHz target: averaged, then resampled.
    std::vector<int> captured;
    LSoundSink sink(new CaptureSink(44100, 1, captured));
    LSinkConvertRateChannels(48000, 2, sink);
    ASSERT_NE(dynamic_cast<LSinkConvertMonoToStereo*>(sink.Get()), nullptr);
    EXPECT_EQ(sink->GetSampleRate(), 48000);
    const std::vector<int> frames(2 * 1600, 16000);
    sink->Write(frames.data(), 1600);
    EXPECT_GT(captured.size(), 1400u);
    EXPECT_NEAR(captured[1000], 16000, 160);

    LSoundSink stereo(new CaptureSink(44100, 2, captured));
    sink = stereo;
    LSinkConvertRateChannels(44100, 2, sink);
    EXPECT_EQ(sink.Get(), stereo.Get());
    EXPECT_TRUE(LSinkConvertRate{0}.OpenSink(stereo)->IsFailed());
    LSoundSink six(new CaptureSink(44100, 6, captured));
    LSinkConvertRateChannels(48000, 2, six);
    EXPECT_TRUE(six->IsFailed());
}
