// The read-ahead stage hands on exactly what its source gives, wherever the reader reads,
// seeks or stops, while the source is read on another thread.
#include "sound/ReadAhead.h"

#include "support/BufferSource.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr int kChannels = 2;
constexpr int kEnd = 200000;

// Every value tells the frame and channel it was read from (never 0); it goes on past the end,
// as a filter's tail does.
class CountingSource : public LSoundSourceBase {
public:
    CountingSource() : LSoundSourceBase(44100, kChannels, 524272) {}
    void Read(int* buffer, int frames) override {
        for (int f = 0; f < frames; ++f, ++position_)
            for (int c = 0; c < kChannels; ++c) *buffer++ = position_ * kChannels + c + 1;
    }
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return kEnd; }
    void Seek(int frame) override { position_ = frame; }

private:
    int position_ = 0;
};

TEST(ReadAhead, GivesTheSourceExactlyThroughReadsSeeksAndPastTheEnd) {
    struct Step {
        int seek; // -1: read on from where the last read ended
        int frames;
    };
    const std::vector<Step> steps = {
        {-1, 1},          {-1, 8191},      {-1, 8193},
        {-1, 100000},     // wraps the ring several times
        {0, 5000},        // back to the start with blocks still in the ring
        {123457, 3},      {-1, 0},         {-1, 70000},
        {kEnd - 10, 40000}, // across the end into the tail
        {7, 9},
    };
    LSoundSource direct(new CountingSource);
    LSoundSource inner(new CountingSource);
    LSoundSource ahead = LSPReadAhead().OpenSource(inner);
    ASSERT_NE(ahead.Get(), inner.Get());
    EXPECT_EQ(ahead->GetEndSample(), kEnd);
    EXPECT_FALSE(ahead->IsStreaming());

    for (const Step& step : steps) {
        if (step.seek >= 0) {
            direct->Seek(step.seek);
            ahead->Seek(step.seek);
        }
        std::vector<int> expected(static_cast<size_t>(step.frames) * kChannels, -1);
        std::vector<int> got(expected.size(), -1);
        direct->Read(expected.data(), step.frames);
        ahead->Read(got.data(), step.frames);
        EXPECT_EQ(got, expected) << "seek " << step.seek << " read " << step.frames;
        EXPECT_EQ(ahead->GetPositionSample(), direct->GetPositionSample());
    }
    // Released while its thread waits for room in a full ring.
}

TEST(ReadAhead, StreamingAndFailedSourcesAreNotReadAhead) {
    LSoundSource streaming = MakeBufferSource(std::vector<int>(100), 44100, 2, 524272, true);
    EXPECT_EQ(LSPReadAhead().OpenSource(streaming).Get(), streaming.Get());
    LSoundSource failed;
    EXPECT_EQ(LSPReadAhead().OpenSource(failed).Get(), failed.Get());
}

} // namespace
