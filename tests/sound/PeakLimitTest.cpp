#include "sound/PeakLimit.h"

#include "support/BufferSource.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace {

constexpr int kLimit = 524272;
constexpr int kBlock = 44100 / 35;

// Quiet audio with a loud burst of alternating sign inside block 5.
std::vector<int> QuietWithBurst(int frames, int burst, unsigned char channels = 1) {
    std::vector<int> samples;
    for (int i = 0; i < frames; ++i) {
        const bool loud = i >= 5 * kBlock + 200 && i < 5 * kBlock + 500;
        const int value =
            loud ? (i % 2 ? burst : -burst) : static_cast<int>(20000 * std::sin(i * 0.05));
        for (int c = 0; c < channels; ++c)
            samples.push_back(value);
    }
    return samples;
}

int Peak(const std::vector<int>& samples, size_t first, size_t last) {
    int peak = 0;
    for (size_t i = first; i < last; ++i)
        peak = std::max(peak, std::abs(samples[i]));
    return peak;
}

TEST(PeakLimit, KeepsBurstsWithinTheLimit) {
    const int frames = 12 * kBlock;
    for (int burst : {524288, 600000, 2000000}) {
        const std::vector<int> in = QuietWithBurst(frames, burst);
        LSoundSource source = MakeBufferSource(in, 44100, 1, 2097152);
        LSoundSource limited = LSPPeakLimit(kLimit).OpenSource(source);
        ASSERT_NE(limited.Get(), source.Get());
        EXPECT_EQ(limited->GetMaxAmplitude(), kLimit);
        const std::vector<int> out = ReadAll(limited, frames, 1000);

        const int burstPeak = Peak(out, 5 * kBlock + 200, 5 * kBlock + 500);
        EXPECT_LE(burstPeak, kLimit) << burst;
        EXPECT_GT(burstPeak, kLimit - kLimit / 100) << burst;
        EXPECT_LE(Peak(out, 0, out.size()), kLimit) << burst;

        // Far from the burst the audio passes untouched; the gain has come down by the end of
        // the block before the burst's, and is back at unity three blocks after it.
        for (int i = 0; i < 2 * kBlock; ++i)
            ASSERT_EQ(out[i], in[i]) << "frame " << i;
        for (int i = 9 * kBlock; i < frames; ++i)
            ASSERT_EQ(out[i], in[i]) << "frame " << i;
        const int last = 5 * kBlock - 1;
        EXPECT_LE(std::abs(out[last]), std::abs(in[last]) * 1.01 * kLimit / burst + 2);
    }
}

TEST(PeakLimit, EveryChannelCountUsesTheSameArithmetic) {
    const int frames = 8 * kBlock;
    LSoundSource mono = MakeBufferSource(QuietWithBurst(frames, 2000000), 44100, 1, 2097152);
    LSoundSource monoLimited = LSPPeakLimit(kLimit).OpenSource(mono);
    const std::vector<int> expected = ReadAll(monoLimited, frames);
    for (unsigned char channels : {2, 3}) {
        LSoundSource wide =
            MakeBufferSource(QuietWithBurst(frames, 2000000, channels), 44100, channels, 2097152);
        LSoundSource limited = LSPPeakLimit(kLimit).OpenSource(wide);
        const std::vector<int> out = ReadAll(limited, frames, 777);
        for (int i = 0; i < frames; ++i)
            for (int c = 0; c < channels; ++c)
                ASSERT_EQ(out[static_cast<size_t>(i) * channels + c], expected[i])
                    << int(channels) << " channels, frame " << i;
    }
}

TEST(PeakLimit, SeeksLikeItsSourceAndIsLeftOutWhereNotNeeded) {
    const std::vector<int> in = QuietWithBurst(10 * kBlock, 100);
    LSoundSource source = MakeBufferSource(in, 44100, 1, 2097152);
    LSoundSource limited = LSPPeakLimit(kLimit).OpenSource(source);
    EXPECT_EQ(limited->GetEndSample(), 10 * kBlock);
    ReadAll(limited, 1500, 700);
    EXPECT_EQ(limited->GetPositionSample(), 1500);
    limited->Seek(4000);
    std::vector<int> out(10);
    limited->Read(out.data(), 10);
    EXPECT_EQ(out, std::vector<int>(in.begin() + 4000, in.begin() + 4010));
    EXPECT_EQ(limited->GetPositionSample(), 4010);

    // A streaming source gets shorter blocks, and the stage holds back three of them.
    LSoundSource growing = MakeBufferSource(std::vector<int>(48000 * 2), 48000, 2, 2097152, true);
    EXPECT_EQ(LSPPeakLimit(kLimit).OpenSource(growing)->GetEndSample(), 48000 - 3 * (48000 / 70));

    LSoundSource quiet = MakeBufferSource({1, 2, 3}, 44100, 1, kLimit);
    EXPECT_EQ(LSPPeakLimit(kLimit).OpenSource(quiet).Get(), quiet.Get());
    LSoundSource failed;
    EXPECT_EQ(LSPPeakLimit(kLimit).OpenSource(failed).Get(), failed.Get());
}

} // namespace
