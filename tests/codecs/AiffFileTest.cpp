#include "WaveTestUtil.h"

#include "codecs/AiffFile.h"

#include <gtest/gtest.h>

namespace {

std::vector<uint8_t> RateBytes(unsigned int rate) {
    std::vector<uint8_t> bytes(10);
    LConvert32to80(bytes.data(), rate);
    return bytes;
}

std::vector<int> Saw(int frames, unsigned char channels) {
    std::vector<int> samples(static_cast<size_t>(frames) * channels);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = (static_cast<int>(i * 97 % 65536) - 32768) * 16;
    return samples;
}

class AiffFileTest : public ::testing::Test {
protected:
    std::filesystem::path Write(const char* name, int rate, unsigned char channels,
                                const std::vector<int>& samples) {
        const std::filesystem::path path = home_.Path() / name;
        LSoundSink sink = LAifFile::OpenSinkPCM16(path.c_str(), rate, channels);
        EXPECT_EQ(sink->GetError(), 0);
        const int frames = static_cast<int>(samples.size() / channels);
        for (int done = 0; done < frames; done += 8192)
            sink->Write(samples.data() + done * channels, std::min(8192, frames - done));
        return path;
    }

    TempHome home_;
};

TEST_F(AiffFileTest, StereoCdFileHasTheExactHeader) {
    const std::vector<uint8_t> bytes =
        ReadFileBytes(Write("cd.aif", 44100, 2, std::vector<int>(2000, 0)));
    ASSERT_EQ(bytes.size(), 4054u);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 4), "FORM");
    EXPECT_EQ(BE32At(bytes, 4), 4046u);
    EXPECT_EQ(std::string(bytes.begin() + 8, bytes.begin() + 16), "AIFFCOMM");
    EXPECT_EQ(BE32At(bytes, 16), 18u);
    EXPECT_EQ(bytes[20] << 8 | bytes[21], 2);
    EXPECT_EQ(BE32At(bytes, 22), 1000u);
    EXPECT_EQ(bytes[26] << 8 | bytes[27], 16);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 28, bytes.begin() + 38),
              (std::vector<uint8_t>{0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(std::string(bytes.begin() + 38, bytes.begin() + 42), "SSND");
    EXPECT_EQ(BE32At(bytes, 42), 4008u);
    EXPECT_EQ(BE32At(bytes, 46), 0u);
    EXPECT_EQ(BE32At(bytes, 50), 0u);
}

TEST_F(AiffFileTest, RatesAsExtendedNumbers) {
    EXPECT_EQ(RateBytes(22050), (std::vector<uint8_t>{0x40, 0x0D, 0xAC, 0x44, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(RateBytes(48000), (std::vector<uint8_t>{0x40, 0x0E, 0xBB, 0x80, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(RateBytes(8000), (std::vector<uint8_t>{0x40, 0x0B, 0xFA, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(RateBytes(1), (std::vector<uint8_t>{0x3F, 0xFF, 0x80, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(AiffFileTest, HeaderSaysUnknownSizeUntilFinishedAndSeekCutsBack) {
    const std::filesystem::path path = home_.Path() / "part.aif";
    LSoundSink sink = LAifFile::OpenSinkPCM16(path.c_str(), 44100, 1);
    const std::vector<int> samples = Saw(500, 1);
    sink->Write(samples.data(), 500);
    std::vector<uint8_t> bytes = ReadFileBytes(path);
    EXPECT_EQ(BE32At(bytes, 42), 0xFFFFFFFFu);
    EXPECT_EQ(bytes.size(), 54u + 1000);

    sink->Seek(100);
    sink.Close();
    bytes = ReadFileBytes(path);
    EXPECT_EQ(bytes.size(), 54u + 200);
    EXPECT_EQ(BE32At(bytes, 22), 100u);
    EXPECT_EQ(BE32At(bytes, 42), 208u);
    // Big-endian samples: the first is -32768 steps.
    EXPECT_EQ(bytes[54], 0x80);
    EXPECT_EQ(bytes[55], 0x00);
}

TEST_F(AiffFileTest, SoxAndFFprobeReadTheFile) {
    for (const int rate : {22050, 44100}) {
        const std::vector<int> samples = Saw(rate / 4, 2);
        const std::filesystem::path path = Write("tools.aiff", rate, 2, samples);
        EXPECT_EQ(Soxi("-t", path), "aiff");
        EXPECT_EQ(Soxi("-r", path), std::to_string(rate));
        EXPECT_EQ(Soxi("-c", path), "2");
        EXPECT_EQ(Soxi("-b", path), "16");
        EXPECT_EQ(Soxi("-s", path), std::to_string(rate / 4));
        EXPECT_EQ(SoxSamples(path), samples);

        const std::string probe = FFprobeStream(path);
        EXPECT_NE(probe.find("codec_name=pcm_s16be"), std::string::npos) << probe;
        EXPECT_NE(probe.find("sample_rate=" + std::to_string(rate)), std::string::npos) << probe;
        EXPECT_NE(probe.find("duration_ts=" + std::to_string(rate / 4)), std::string::npos)
            << probe;
    }
}

} // namespace
