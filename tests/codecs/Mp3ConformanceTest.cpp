#include "codecs/MP3File.h"
#include "codecs/Mp3TestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

struct ConformanceCase {
    const char* name;
    int channels;
    int rate;
    int skipFrames;   // leading frames of decoder output that the reference does not have
    double mpg123Rms; // what an established decoder achieves, in 16-bit steps
};

Mp3Difference DecodeAndCompare(const ConformanceCase& c) {
    const LSoundSource source =
        LMP3File::OpenSource(Mp3ConformancePath(std::string(c.name) + ".bit").c_str());
    EXPECT_EQ(source->GetError(), sndErrNone) << c.name;
    EXPECT_EQ(source->GetChannels(), c.channels) << c.name;
    EXPECT_EQ(source->GetSampleRate(), c.rate) << c.name;
    return Compare16(ReadToEnd(source), size_t(c.skipFrames) * c.channels,
                     Mp3ConformanceReference(c.name));
}

class Mp3Conformance : public ::testing::TestWithParam<ConformanceCase> {};

TEST_P(Mp3Conformance, MatchesReferenceOutput) {
    const ConformanceCase& c = GetParam();
    const Mp3Difference d = DecodeAndCompare(c);
    std::printf("%-22s rms %.4f max %.3f LSB over %zu samples (mpg123 rms %.3f)\n", c.name, d.rms,
                d.max, d.compared, c.mpg123Rms);
    // The references lack at most the last frame.
    EXPECT_GE(d.compared + 1152 * c.channels, Mp3ConformanceReference(c.name).size());
    EXPECT_LE(d.rms, std::max(c.mpg123Rms, 0.25) + 0.1);
    // Including the MPEG-2 intensity-stereo streams that established decoders get wrong.
    EXPECT_LE(d.rms, 0.35);
    EXPECT_LE(d.max, 2.0);
}

INSTANTIATE_TEST_SUITE_P(
    Bitstreams, Mp3Conformance,
    ::testing::Values(ConformanceCase{"l3-compl", 1, 48000, 0, 0.023},
                      ConformanceCase{"l3-he_32khz", 1, 32000, 0, 0.059},
                      ConformanceCase{"l3-he_44khz", 1, 44100, 0, 0.059},
                      ConformanceCase{"l3-he_48khz", 1, 48000, 0, 0.059},
                      ConformanceCase{"l3-hecommon", 2, 44100, 0, 0.041},
                      ConformanceCase{"l3-si", 1, 44100, 0, 0.008},
                      ConformanceCase{"l3-si_block", 1, 44100, 0, 0.005},
                      ConformanceCase{"l3-si_huff", 1, 44100, 0, 0.106},
                      ConformanceCase{"l3-sin1k0db", 2, 44100, 2304, 0.094},
                      ConformanceCase{"M2L3_bitrate_16_all", 1, 16000, 0, 0.047},
                      ConformanceCase{"M2L3_bitrate_22_all", 1, 22050, 0, 0.050},
                      ConformanceCase{"M2L3_bitrate_24_all", 1, 24000, 0, 0.047},
                      ConformanceCase{"M2L3_noise", 2, 22050, 0, 0.045},
                      ConformanceCase{"l3-test45", 2, 22050, 0, 467},
                      ConformanceCase{"l3-test46", 2, 22050, 0, 758}),
    [](const ::testing::TestParamInfo<ConformanceCase>& info) {
        std::string name = info.param.name;
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

// Frames in another channel mode than the first are passed over: the stream plays its ten
// mono frames, skips a hundred two-channel frames and plays the last eighteen mono frames.
TEST(Mp3ConformanceStreams, ModeSwitchesSkipFramesOfTheOtherMode) {
    const LSoundSource source = LMP3File::OpenSource(Mp3ConformancePath("l3-he_mode.bit").c_str());
    ASSERT_EQ(source->GetError(), sndErrNone);
    ASSERT_EQ(source->GetChannels(), 1);
    const std::vector<int> decoded = ReadToEnd(source);
    ASSERT_EQ(decoded.size(), 28u * 1152);
    EXPECT_EQ(source->GetEndSample(), 28 * 1152);

    // The reference decoded every frame (two channels in the middle); its first ten and,
    // once the filter state has settled again, last seventeen frames are the mono ones.
    const std::vector<int> reference = Mp3ConformanceReference("l3-he_mode");
    const size_t head = 10 * 1152, tail = 17 * 1152;
    EXPECT_LE(Compare16(std::vector<int>(decoded.begin(), decoded.begin() + head), 0,
                        std::vector<int>(reference.begin(), reference.begin() + head))
                  .max,
              1.0);
    EXPECT_LE(Compare16(std::vector<int>(decoded.end() - tail, decoded.end()), 0,
                        std::vector<int>(reference.end() - tail, reference.end()))
                  .max,
              1.0);
}

TEST(Mp3ConformanceStreams, FreeFormatIsRefusedAsFormatError) {
    const LSoundSource source = LMP3File::OpenSource(Mp3ConformancePath("l3-he_free.bit").c_str());
    EXPECT_EQ(source->GetError(), sndErrFormat);
    EXPECT_EQ(source->GetEndSample(), 0);
}

} // namespace
