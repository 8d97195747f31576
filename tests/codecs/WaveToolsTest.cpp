// Wave files written here are read by tools nobody here wrote, and theirs are read here.
#include "WaveTestUtil.h"

#include "codecs/WaveFile.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// A sine per channel (a different pitch each), kept within 16-bit full scale.
std::vector<int> Tone(int frames, unsigned char channels, int rate) {
    std::vector<int> samples(static_cast<size_t>(frames) * channels);
    for (int f = 0; f < frames; ++f)
        for (int c = 0; c < channels; ++c)
            samples[f * channels + c] =
                static_cast<int>(400000 * std::sin(2 * M_PI * (440.0 + 110 * c) * f / rate));
    return samples;
}

// What a 16- or 8-bit file stores of internal samples, back in the internal scale.
std::vector<int> Quantised(const std::vector<int>& samples, int bits) {
    std::vector<int> out;
    for (int x : samples)
        out.push_back(bits == 8 ? (((x + 2048) >> 12) << 12) : (((x + 8) >> 4) << 4));
    return out;
}

struct SinkCase {
    int rate;
    unsigned char channels;
    unsigned short bits;
};

class WaveToolsTest : public ::testing::TestWithParam<SinkCase> {
protected:
    TempHome home_;
};

TEST_P(WaveToolsTest, SoxAndFFprobeReadWhatTheSinkWrote) {
    const SinkCase c = GetParam();
    const int frames = c.rate / 3 + 1;
    const std::filesystem::path path = home_.Path() / "out.wav";
    const std::vector<int> samples = Tone(frames, c.channels, c.rate);
    {
        LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), c.rate, c.channels, c.bits, 0);
        for (int done = 0; done < frames; done += 8192)
            sink->Write(samples.data() + done * c.channels, std::min(8192, frames - done));
    }
    EXPECT_EQ(Soxi("-r", path), std::to_string(c.rate));
    EXPECT_EQ(Soxi("-c", path), std::to_string(c.channels));
    EXPECT_EQ(Soxi("-b", path), std::to_string(c.bits));
    EXPECT_EQ(Soxi("-s", path), std::to_string(frames));
    EXPECT_EQ(SoxSamples(path), Quantised(samples, c.bits));

    const std::string probe = FFprobeStream(path);
    EXPECT_NE(probe.find(c.bits == 8 ? "codec_name=pcm_u8" : "codec_name=pcm_s16le"),
              std::string::npos)
        << probe;
    EXPECT_NE(probe.find("sample_rate=" + std::to_string(c.rate)), std::string::npos) << probe;
    EXPECT_NE(probe.find("channels=" + std::to_string(c.channels)), std::string::npos) << probe;
    EXPECT_NE(probe.find("duration_ts=" + std::to_string(frames)), std::string::npos) << probe;
}

INSTANTIATE_TEST_SUITE_P(Formats, WaveToolsTest,
                         ::testing::Values(SinkCase{44100, 2, 16}, SinkCase{11025, 1, 8},
                                           SinkCase{22050, 2, 8}, SinkCase{7999, 1, 16},
                                           SinkCase{96000, 2, 16}, SinkCase{37800, 1, 16}));

class WaveFromToolsTest : public ::testing::Test {
protected:
    // Reads the whole file here and compares it with sox's own decoding.
    void ExpectSameAsSox(const std::filesystem::path& path, int rate, unsigned char channels) {
        LSoundSource source = LWaveFile::OpenSource(path.c_str());
        ASSERT_EQ(source->GetError(), sndErrNone);
        EXPECT_EQ(source->GetSampleRate(), rate);
        EXPECT_EQ(source->GetChannels(), channels);
        const std::vector<int> reference = SoxSamples(path);
        ASSERT_FALSE(reference.empty());
        EXPECT_EQ(static_cast<size_t>(source->GetEndSample()) * channels, reference.size());
        EXPECT_EQ(ReadFrames(source, source->GetEndSample()), reference);
    }

    // Runs `before` FILE `after`, with FILE a new file of that name.
    std::filesystem::path Make(const char* name, const std::string& before,
                               const std::string& after = "") {
        const std::filesystem::path path = home_.Path() / name;
        int status = 0;
        const std::string output =
            RunCommand(before + " " + ShellQuote(path.string()) + " " + after + " 2>&1", &status);
        EXPECT_EQ(status, 0) << before << "\n" << output;
        return path;
    }

    TempHome home_;
};

TEST_F(WaveFromToolsTest, ReadsSoxFiles) {
    ExpectSameAsSox(Make("s16.wav", "sox -n -r 44100 -c 2 -b 16 -e signed --comment 'side A'",
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
