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
    std::vector<int> samples(size_t(frames) * channels);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = (int(i * 97 % 65536) - 32768) * 16;
    return samples;
}

class AiffFileTest : public ::testing::Test {
protected:
    std::filesystem::path Write(int rate, unsigned char channels, const std::vector<int>& samples) {
        const std::filesystem::path path = home_.Path() / "out.aiff";
        LSoundSink sink = LAifFile::OpenSinkPCM16(path.c_str(), rate, channels);
        const int frames = int(samples.size() / channels);
        for (int done = 0; done < frames; done += 8192)
            sink->Write(samples.data() + done * channels, std::min(8192, frames - done));
        return path;
    }

    TempHome home_;
};

TEST_F(AiffFileTest, StereoCdFileHasTheExactHeader) {
    const std::vector<uint8_t> bytes = ReadFileBytes(Write(44100, 2, std::vector<int>(2000)));
    ASSERT_EQ(bytes.size(), 4054u);
    const std::vector<uint8_t> header = {
        'F',  'O',  'R',  'M',  0, 0,  0x0F, 0xCE, 'A', 'I', 'F',  'F',  'C', 'O',
        'M',  'M',  0,    0,    0, 18, 0,    2,    0,   0,   0x03, 0xE8, 0,   16,
        0x40, 0x0E, 0xAC, 0x44, 0, 0,  0,    0,    0,   0,   'S',  'S',  'N', 'D',
        0,    0,    0x0F, 0xA8, 0, 0,  0,    0,    0,   0,   0,    0};
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 54), header);
    EXPECT_EQ(RateBytes(1), (std::vector<uint8_t>{0x3F, 0xFF, 0x80, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(AiffFileTest, HeaderSaysUnknownSizeUntilFinishedAndSeekCutsBack) {
    const std::filesystem::path path = home_.Path() / "part.aif";
    LSoundSink sink = LAifFile::OpenSinkPCM16(path.c_str(), 44100, 1);
    sink->Write(Saw(500, 1).data(), 500);
    EXPECT_EQ(Field32(ReadFileBytes(path), 42, true), 0xFFFFFFFFu);

    sink->Seek(100);
    sink.Close();
    const std::vector<uint8_t> bytes = ReadFileBytes(path);
    EXPECT_EQ(bytes.size(), 54u + 200);
    EXPECT_EQ(Field32(bytes, 22, true), 100u);
    EXPECT_EQ(Field32(bytes, 42, true), 208u);
    EXPECT_EQ(bytes[54], 0x80); // big-endian: the first sample is -32768 steps
    EXPECT_EQ(bytes[55], 0x00);
}

} // namespace
