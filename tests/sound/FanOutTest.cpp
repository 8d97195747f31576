#include "sound/SoundSinkMulti.h"

#include "support/RecordingSink.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

std::vector<int> StereoFrames(int frames) {
    std::vector<int> samples;
    for (int i = 0; i < frames; ++i) {
        samples.push_back(static_cast<int>(100000 * std::sin(i * 0.01)));
        samples.push_back(static_cast<int>(-3 + 60000 * std::sin(i * 0.013)));
    }
    return samples;
}

TEST(FanOut, StereoIntoAMonoTargetWritesTheAverage) {
    RecordedWrites mono, stereo;
    LSoundSink monoSink = MakeRecordingSink(mono, 44100, 1);
    LSoundSink stereoSink = MakeRecordingSink(stereo, 44100, 2);
    LSoundSink both = LSoundSinkDuplicate::OpenSink(monoSink, stereoSink);
    EXPECT_EQ(both->GetChannels(), 2);

    const std::vector<int> in = StereoFrames(1000);
    both->Write(in.data(), 600);
    both->Write(in.data() + 1200, 400);
    EXPECT_EQ(both->GetPosition(), 1000);

    EXPECT_EQ(stereo.samples, in);
    ASSERT_EQ(mono.samples.size(), 1000u);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(mono.samples[i], (in[2 * i] + in[2 * i + 1]) >> 1) << "frame " << i;
}

TEST(FanOut, RunsAtTheLargestRateAndChannelCount) {
    RecordedWrites low, high;
    LSoundSink sinks[] = {MakeRecordingSink(low, 44100, 1), MakeRecordingSink(high, 48000, 2)};
    LSoundSink multi = LSoundSinkMulti::OpenSink(sinks, 2);
    EXPECT_EQ(multi->GetSampleRate(), 48000);
    EXPECT_EQ(multi->GetChannels(), 2);

    const std::vector<int> in = StereoFrames(48000);
    for (int done = 0; done < 48000; done += 8000)
        multi->Write(in.data() + 2 * done, 8000);
    EXPECT_EQ(high.samples, in);

    // Letting the fan-out go flushes the rate converter and finishes every sink.
    for (LSoundSink& sink : sinks)
        sink.Close();
    EXPECT_FALSE(low.finished);
    multi.Close();
    EXPECT_TRUE(low.finished);
    EXPECT_TRUE(high.finished);
    EXPECT_NEAR(static_cast<double>(low.samples.size()), 44100, 10);

    EXPECT_TRUE(LSoundSinkMulti::OpenSink(nullptr, 0)->IsFailed()) << "no sinks";
}

} // namespace
