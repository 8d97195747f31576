#include "sound/SourceToSink.h"

#include "support/BufferSource.h"
#include "support/RecordingProgress.h"
#include "support/RecordingSink.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

std::vector<int> Ramp(int frames, unsigned char channels) {
    std::vector<int> samples;
    for (int i = 0; i < frames; ++i)
        for (int c = 0; c < channels; ++c)
            samples.push_back((i % 30000) * 16 + c);
    return samples;
}

struct PumpRun {
    LProcessResult result;
    RecordedWrites out;
    RecordingProgress progress;
};

// Pumps the source into a recording sink of the given format.
void Pump(PumpRun& run, LSoundSource source, int rate, unsigned char channels) {
    LPRSourceToSink job;
    job.source = source;
    job.sink = MakeRecordingSink(run.out, rate, channels);
    run.result = Process(run.progress, job);
}

TEST(Pump, CopiesTheWholeSourceInBlocksWithProgress) {
    const int frames = 200000;
    const std::vector<int> in = Ramp(frames, 2);
    PumpRun run;
    Pump(run, MakeBufferSource(in, 44100, 2), 44100, 2);
    ASSERT_EQ(run.result, PROCESS_DONE);

    EXPECT_EQ(run.out.samples, in);
    std::vector<int> blocks(24, 8192);
    blocks.push_back(frames - 24 * 8192);
    EXPECT_EQ(run.out.blockFrames, blocks);
    EXPECT_TRUE(run.out.finished);

    EXPECT_EQ(run.progress.statuses, (std::vector<std::pair<std::string, int>>{
                                         {"Process Audio", 0}, {"Please wait...", 1}}));
    ASSERT_EQ(run.progress.progress.size(), 4u);
    EXPECT_EQ(run.progress.progress[0], 0.0);
    EXPECT_EQ(run.progress.progress[1], 0.0);
    EXPECT_DOUBLE_EQ(run.progress.progress[2], 81920.0 / frames);
    EXPECT_DOUBLE_EQ(run.progress.progress[3], 2 * 81920.0 / frames);
}

TEST(Pump, StopsBetweenBatches) {
    PumpRun run;
    run.progress.stopAfter = 1;
    Pump(run, MakeBufferSource(Ramp(200000, 1), 44100, 1), 44100, 1);
    EXPECT_EQ(run.result, PROCESS_STOPPED);
    EXPECT_EQ(run.out.samples.size(), 81920u);
}

TEST(Pump, EmptySourceWritesNothingAndErrorsFailAtTheStart) {
    PumpRun empty;
    Pump(empty, MakeBufferSource({}, 44100, 2), 44100, 2);
    EXPECT_EQ(empty.result, PROCESS_DONE);
    EXPECT_EQ(empty.progress.progress, std::vector<double>{0.0});
    EXPECT_TRUE(empty.out.blockFrames.empty());

    PumpRun errorSource;
    Pump(errorSource, LSoundSource(), 44100, 2);
    EXPECT_EQ(errorSource.result, PROCESS_FAILED);
    // Three channels cannot be turned into two.
    PumpRun threeChannels;
    Pump(threeChannels, MakeBufferSource(Ramp(100, 3), 44100, 3), 44100, 2);
    EXPECT_EQ(threeChannels.result, PROCESS_FAILED);
    EXPECT_TRUE(threeChannels.out.blockFrames.empty());
    RecordingProgress progress;
    LPRSourceToSink errorSink;
    errorSink.source = MakeBufferSource(Ramp(100, 2), 44100, 2);
    EXPECT_EQ(Process(progress, errorSink), PROCESS_FAILED);
}

TEST(Pump, ConvertsToTheSinksFormatAndLimitsLoudInput) {
    // Mono at 48,000 Hz, peaking above the 16-bit range, into a stereo sink at 44,100 Hz.
    std::vector<int> in(48000);
    for (int i = 0; i < 48000; ++i)
        in[i] = static_cast<int>(900000 * std::sin(i * 0.02));
    PumpRun run;
    Pump(run, MakeBufferSource(in, 48000, 1, 2097152), 44100, 2);
    ASSERT_EQ(run.result, PROCESS_DONE);

    const std::vector<int>& out = run.out.samples;
    ASSERT_NEAR(static_cast<double>(out.size()), 2 * 44100, 4);
    for (size_t i = 0; i < out.size(); i += 2)
        ASSERT_EQ(out[i], out[i + 1]) << "frame " << i / 2;
    const auto [low, high] = std::minmax_element(out.begin(), out.end());
    EXPECT_LE(std::max(-*low, *high), 524272);
    EXPECT_GT(*high, 500000);
}

} // namespace
