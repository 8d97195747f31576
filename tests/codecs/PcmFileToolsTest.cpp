// Wave and AIFF files written here are read by tools nobody here wrote, and their wave files
// are read here.
#include "WaveTestUtil.h"

#include "codecs/AiffFile.h"
#include "codecs/WaveFile.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct SinkCase {
    int rate;
    unsigned char channels;
    unsigned short bits;
    bool aiff = false;
};

class PcmFileToolsTest : public ::testing::TestWithParam<SinkCase> {
protected:
    TempHome home_;
};

TEST_P(PcmFileToolsTest, SoxAndFFprobeReadWhatTheSinkWrote) {
    const SinkCase c = GetParam();
    const int frames = c.rate / 3 + 1;
    // A sine per channel, already on the steps the file stores (16 or 4,096 units).
    const int unit = c.bits == 8 ? 4096 : 16;
    std::vector<int> samples(size_t(frames) * c.channels);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] =
            unit *
            int(std::lround(520000.0 / unit * std::sin(0.05 * double(i / c.channels) + i % 2)));
    const std::filesystem::path path = home_.Path() / (c.aiff ? "out.aiff" : "out.wav");
    {
        LSoundSink sink = c.aiff
                              ? LAifFile::OpenSinkPCM16(path.c_str(), c.rate, c.channels)
                              : LWaveFile::OpenSinkPCM(path.c_str(), c.rate, c.channels, c.bits, 0);
        for (int done = 0; done < frames; done += 8192)
            sink->Write(samples.data() + done * c.channels, std::min(8192, frames - done));
    }
    EXPECT_EQ(Soxi("-t", path), c.aiff ? "aiff" : "wav");
    EXPECT_EQ(Soxi("-r", path), std::to_string(c.rate));
    EXPECT_EQ(Soxi("-c", path), std::to_string(c.channels));
    EXPECT_EQ(Soxi("-b", path), std::to_string(c.bits));
    EXPECT_EQ(Soxi("-s", path), std::to_string(frames));
    EXPECT_EQ(SoxSamples(path), samples);

    const std::string probe = FFprobeStream(path);
    for (const std::string& line :
         {std::string(c.aiff        ? "codec_name=pcm_s16be"
                      : c.bits == 8 ? "codec_name=pcm_u8"
                                    : "codec_name=pcm_s16le"),
          "sample_rate=" + std::to_string(c.rate), "channels=" + std::to_string(c.channels),
          "duration_ts=" + std::to_string(frames)})
        EXPECT_NE(probe.find(line + "\n"), std::string::npos) << line << " in\n" << probe;
}

INSTANTIATE_TEST_SUITE_P(Formats, PcmFileToolsTest,
                         ::testing::Values(SinkCase{44100, 2, 16}, SinkCase{11025, 1, 8},
                                           SinkCase{22050, 2, 8}, SinkCase{7999, 1, 16},
                                           SinkCase{96000, 2, 16}, SinkCase{37800, 1, 16},
                                           SinkCase{22050, 2, 16, true},
                                           SinkCase{44100, 1, 16, true}));

class WaveFromToolsTest : public ::testing::Test {
protected:
    // Runs `before` FILE `after` to make a new file of that name.
    std::filesystem::path Make(const char* name, const std::string& before,
                               const std::string& after = "") {
        const std::filesystem::path path = home_.Path() / name;
        int status = 0;
        const std::string output =
            RunCommand(before + " " + ShellQuote(path.string()) + " " + after + " 2>&1", &status);
        EXPECT_EQ(status, 0) << before << "\n" << output;
        return path;
    }

    // Reads the whole file here and compares it with sox's own decoding.
    void ExpectSameAsSox(const std::filesystem::path& path, int rate, unsigned char channels) {
        LSoundSource source = LWaveFile::OpenSource(path.c_str());
        ASSERT_EQ(source->GetError(), sndErrNone);
        EXPECT_EQ(source->GetSampleRate(), rate);
        EXPECT_EQ(source->GetChannels(), channels);
        const std::vector<int> reference = SoxSamples(path);
        ASSERT_FALSE(reference.empty());
        EXPECT_EQ(ReadFrames(source, source->GetEndSample()), reference);
    }

    TempHome home_;
};

TEST_F(WaveFromToolsTest, ReadsSoxFiles) {
    ExpectSameAsSox(Make("s16.wav", "sox -n -r 44100 -c 2 -b 16 -e signed",
                         "synth 0.5 sine 300 sine 500 gain -3"),
                    44100, 2);
    ExpectSameAsSox(Make("u8.wav", "sox -n -r 8000 -c 1 -b 8 -e unsigned", "synth 0.3 pinknoise"),
                    8000, 1);
}

TEST_F(WaveFromToolsTest, ReadsFFmpegFilesWithBextAndListChunksBeforeTheData) {
    const std::filesystem::path path =
        Make("ff.wav", "ffmpeg -loglevel error -y -f lavfi -i 'sine=frequency=300:duration=0.4' "
                       "-ac 2 -ar 32000 -metadata title=Side -metadata artist=Someone "
                       "-write_bext 1 -c:a pcm_s16le");
    const std::vector<uint8_t> bytes = ReadFileBytes(path);
    const std::string text(bytes.begin(), bytes.begin() + std::min<size_t>(bytes.size(), 2048));
    ASSERT_LT(text.find("bext"), text.find("data"));
    ASSERT_LT(text.find("LIST"), text.find("data"));
    ExpectSameAsSox(path, 32000, 2);
}

} // namespace
