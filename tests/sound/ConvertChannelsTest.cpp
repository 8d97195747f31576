#include "support/CaptureSink.h"
#include "support/ToneSignals.h"

#include "sound/ConvertChannels.h"
#include "sound/ConvertChannelsSink.h"
#include "sound/ConvertRateChannels.h"
#include "sound/ConvertRateSink.h"
#include "sound/ConvertRateSource.h"
#include "sound/SinkToSource.h"

#include <gtest/gtest.h>

namespace {

// A source of given interleaved frames, then silence: a pipe whose writer has finished.
LSoundSource MakeFramesSource(unsigned char channels, const std::vector<int>& samples) {
    LSinkToSource pipe(44100, channels, 524272);
    pipe.OpenSink()->Write(samples.data(), static_cast<int>(samples.size() / channels));
    return pipe.OpenSource();
}

} // namespace

TEST(ConvertChannels, MonoIsDuplicatedStereoAveragedAndOtherCountsPassThrough) {
    LSoundSource mono = MakeFramesSource(1, {5, -7, 5});
    LSoundSource stereo = LSPConvChannels(2).OpenSource(mono);
    EXPECT_EQ(stereo->GetChannels(), 2);
    EXPECT_EQ(ReadFrames(stereo, 3), (std::vector<int>{5, 5, -7, -7, 5, 5}));

    // Averages round down (arithmetic shift); more than one block in one read.
    std::vector<int> frames{-3, 4, -3, -4, 2000000, 2000001};
    frames.resize(2 * 10000, 1);
    LSoundSource pairs = MakeFramesSource(2, frames);
    LSoundSource down = LSPConvChannels(1).OpenSource(pairs);
    EXPECT_EQ(down->GetChannels(), 1);
    std::vector<int> samples(10000);
    down->Read(samples.data(), 10000);
    EXPECT_EQ(std::vector<int>(samples.begin(), samples.begin() + 3),
              (std::vector<int>{0, -4, 2000000}));
    EXPECT_EQ(samples[9999], 1);

    LSoundSource six = MakeFramesSource(6, std::vector<int>(6));
    EXPECT_EQ(LSPConvChannels(2).OpenSource(six).Get(), six.Get());
    LSoundSource failed;
    EXPECT_EQ(LSPConvChannels(2).OpenSource(failed).Get(), failed.Get());
    const LSoundSource overFailed(new LSRCConvMonoStereo(failed));
    EXPECT_EQ(overFailed->GetError(), sndErrInput);
}

// Mono to stereo at another rate is covered by the pump's conversion to its sink's format.
TEST(ConvertSourceRateChannels, MixesDownBeforeResamplingAndRefusesWhatItCannotConvert) {
    // Stereo to 22,050 Hz mono: mixed down, then resampled. The right channel is at half the
    // level: the mix is at three quarters.
    LSoundSource source = MakeSineSource(44100, 2, 1000, 300000, 44100);
    LSPConvertSourceRateChannels(22050, 1, source);
    auto* stage = dynamic_cast<LSRCConvertRate*>(source.Get());
    ASSERT_NE(stage, nullptr);
    EXPECT_EQ(stage->GetChannels(), 1);
    const std::vector<int> mono = ReadFrames(source, 22050);
    EXPECT_NEAR(DB(ToneAmplitude(ChannelValues(mono, 1, 0, 5512, 11025), 22050, 1000) / 225000), 0,
                0.2);

    // Six channels keep their count at the same rate and are refused at another.
    LSoundSource six = MakeSineSource(44100, 6, 1000, 1000, 100);
    LSoundSource kept = six;
    LSPConvertSourceRateChannels(44100, 2, kept);
    EXPECT_EQ(kept.Get(), six.Get());
    LSPConvertSourceRateChannels(48000, 2, kept);
    EXPECT_EQ(kept->GetError(), sndErrFormat);
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
