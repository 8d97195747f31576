#include "sound/SourceToSink.h"

#include "support/BufferSource.h"
#include "support/RecordingProgress.h"
#include "support/RecordingSink.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

std::vector<int> Ramp(int frames, unsigned char channels)
{
    std::vector<int> samples;
    for (int i = 0; i < frames; ++i)
        for (int c = 0; c < channels; ++c)
            samples.push_back((i % 30000) * 16 + c);
    return samples;
}

TEST(Pump, CopiesTheWholeSourceInBlocksWithProgress)
{
    const int frames = 200000;
    const std::vector<int> in = Ramp(frames, 2);
    RecordedWrites out;
    LPRSourceToSink job;
    job.title = "Saving";
    job.source = MakeBufferSource(in, 44100, 2);
    job.sink = MakeRecordingSink(out, 44100, 2);
    RecordingProgress progress;
    ASSERT_EQ(Process(progress, job), PROCESS_DONE);

    EXPECT_EQ(out.samples, in);
    ASSERT_EQ(out.blockFrames.size(), 25u);
    EXPECT_TRUE(std::all_of(out.blockFrames.begin(), out.blockFrames.end() - 1,
                            [](int n) { return n == 8192; }));
    EXPECT_EQ(out.blockFrames.back(), frames - 24 * 8192);

    EXPECT_EQ(progress.statuses, (std::vector<std::pair<std::string, int>>{
                                     {"Saving", 0}, {"Please wait...", 1}}));
    ASSERT_EQ(progress.progress.size(), 4u);
    EXPECT_EQ(progress.progress[0], 0.0);
    EXPECT_EQ(progress.progress[1], 0.0);
    EXPECT_DOUBLE_EQ(progress.progress[2], 81920.0 / frames);
    EXPECT_DOUBLE_EQ(progress.progress[3], 2 * 81920.0 / frames);
    EXPECT_EQ(progress.stopQueries, 0);
}

TEST(Pump, StopsBetweenBatches)
{
    RecordedWrites out;
    LPRSourceToSink job;
    job.source = MakeBufferSource(Ramp(200000, 1), 44100, 1);
    job.sink = MakeRecordingSink(out, 44100, 1);
    RecordingProgress progress;
    progress.stopAfter = 1;
    EXPECT_EQ(Process(progress, job), PROCESS_STOPPED);
    EXPECT_EQ(out.samples.size(), 81920u);
    EXPECT_EQ(progress.statuses.front(), (std::pair<std::string, int>{"Process Audio", 0}));
}

TEST(Pump, EmptySourceReportsOnceAndWritesNothing)
{
    RecordedWrites out;
    LPRSourceToSink job;
    job.source = MakeBufferSource({}, 44100, 2);
    job.sink = MakeRecordingSink(out, 44100, 2);
    RecordingProgress progress;
    EXPECT_EQ(Process(progress, job), PROCESS_DONE);
    EXPECT_EQ(progress.progress, std::vector<double>{0.0});
    EXPECT_TRUE(out.blockFrames.empty());
}

TEST(Pump, RefusesErrorsAtTheStart)
{
    RecordedWrites out;
    RecordingProgress progress;
    {
        LPRSourceToSink job;
        job.sink = MakeRecordingSink(out, 44100, 2);
        EXPECT_EQ(Process(progress, job), PROCESS_FAILED);
    }
    {
        LPRSourceToSink job;
        job.source = MakeBufferSource(Ramp(100, 2), 44100, 2);
        EXPECT_EQ(Process(progress, job), PROCESS_FAILED);
    }
    {
        // Three channels cannot be turned into two.
        LPRSourceToSink job;
        job.source = MakeBufferSource(Ramp(100, 3), 44100, 3);
        job.sink = MakeRecordingSink(out, 44100, 2);
        EXPECT_EQ(Process(progress, job), PROCESS_FAILED);
    }
    EXPECT_TRUE(out.blockFrames.empty());
}

TEST(Pump, ConvertsToTheSinksFormat)
{
    // Mono at 48,000 Hz into a stereo sink at 44,100 Hz.
    const int frames = 48000;
    std::vector<int> in(frames);
    for (int i = 0; i < frames; ++i)
        in[i] = static_cast<int>(200000 * std::sin(i * 0.02));
    RecordedWrites out;
    LPRSourceToSink job;
    job.source = MakeBufferSource(in, 48000, 1);
    job.sink = MakeRecordingSink(out, 44100, 2);
    RecordingProgress progress;
    ASSERT_EQ(Process(progress, job), PROCESS_DONE);

    ASSERT_NEAR(static_cast<double>(out.samples.size()), 2 * 44100, 4);
    for (size_t i = 0; i < out.samples.size(); i += 2)
        ASSERT_EQ(out.samples[i], out.samples[i + 1]) << "frame " << i / 2;
    const auto peak = std::max_element(out.samples.begin(), out.samples.end());
    EXPECT_NEAR(*peak, 200000, 2000);
}

TEST(Pump, LimitsPeaksToTheSixteenBitRange)
{
    std::vector<int> in(30000);
    for (int i = 0; i < 30000; ++i)
        in[i] = static_cast<int>(900000 * std::sin(i * 0.03));
    RecordedWrites out;
    LPRSourceToSink job;
    job.source = MakeBufferSource(in, 44100, 1, 2097152);
    job.sink = MakeRecordingSink(out, 44100, 1);
    RecordingProgress progress;
    ASSERT_EQ(Process(progress, job), PROCESS_DONE);
    ASSERT_EQ(out.samples.size(), in.size());
    const auto [low, high] = std::minmax_element(out.samples.begin(), out.samples.end());
    EXPECT_LE(std::max(std::abs(*low), std::abs(*high)), 524272);
    EXPECT_GT(*high, 500000);
}

} // namespace
