#include "restore/DCOffset.h"

#include "support/BufferSource.h"
#include "support/RecordingProgress.h"

#include <gtest/gtest.h>

namespace {

// Stereo: left a constant +100, right a square wave of +-3000 with no offset.
LSoundSource OffsetLeft(int frames) {
    std::vector<int> samples;
    for (int i = 0; i < frames; ++i) {
        samples.push_back(100);
        samples.push_back(i % 20 < 10 ? 3000 : -3000);
    }
    return MakeBufferSource(samples, 44100, 2);
}

TEST(DCOffset, RemovesAConstantOffsetOverTwoPasses) {
    const int frames = 20000;
    LSoundSource source = OffsetLeft(frames);
    RecordingProgress progress;
    ASSERT_EQ(ProcessDCOffset(progress, source), PROCESS_DONE);

    auto* stage = dynamic_cast<LSRCDCOffset*>(source.Get());
    ASSERT_NE(stage, nullptr);
    EXPECT_EQ(stage->GetOffset(), (std::vector<int>{100, 0}));
    EXPECT_EQ(source->GetPositionSample(), 0);
    const std::vector<int> out = ReadAll(source, frames);
    for (int i = 0; i < frames; ++i) {
        ASSERT_EQ(out[2 * i], 0) << "frame " << i;
        ASSERT_EQ(out[2 * i + 1], i % 20 < 10 ? 3000 : -3000) << "frame " << i;
    }

    EXPECT_EQ(progress.statuses, (std::vector<std::pair<std::string, int>>{
                                     {"DC Offset", 0},
                                     {"DC Offset Correction", 0},
                                     {"Please wait...", 1},
                                 }));
    EXPECT_EQ(progress.progress.back(), 1.0);
}

TEST(DCOffset, TruncatesTheMeanTowardZeroAndRaisesTheDeclaredMaximum) {
    // Seven -3 and three -2 in every ten frames: a mean of -2.7.
    std::vector<int> samples;
    for (int i = 0; i < 10000; ++i)
        samples.push_back(i % 10 < 7 ? -3 : -2);
    LSoundSource source = MakeBufferSource(samples, 44100, 1, 524272);
    RecordingProgress progress;
    ASSERT_EQ(ProcessDCOffset(progress, source), PROCESS_DONE);
    const std::vector<int> out = ReadAll(source, 10);
    EXPECT_EQ(out, (std::vector<int>{-1, -1, -1, -1, -1, -1, -1, 0, 0, 0}));
    // Taking the offset out can move the far side of the waveform past the source's peak.
    EXPECT_EQ(source->GetMaxAmplitude(), 524272 + 2);
}

TEST(DCOffset, StopDuringTheMeasurementOrAnErrorSourceLeavesTheSource) {
    LSoundSource source = OffsetLeft(30000);
    LSoundSourceBase* before = source.Get();
    RecordingProgress progress;
    progress.stopAfter = 2;
    EXPECT_EQ(ProcessDCOffset(progress, source), PROCESS_STOPPED);
    EXPECT_EQ(source.Get(), before);
    EXPECT_EQ(progress.progress.size(), 2u);
    EXPECT_EQ(source->GetPositionSample(), 2 * 8192);

    LSoundSource broken;
    EXPECT_EQ(ProcessDCOffset(progress, broken), PROCESS_FAILED);
    LProcessDCOffset job{broken};
    EXPECT_EQ(Process(progress, job), PROCESS_FAILED);
    EXPECT_EQ(broken->GetError(), sndErrClosed);
}

} // namespace
