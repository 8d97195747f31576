#include "WaveTestUtil.h"

#include "codecs/WaveFile.h"
#include "codecs/WaveFormatTags.h"

#include <gtest/gtest.h>

namespace {

TEST(WaveCodecTableTest, EveryRegisteredTagIsFoundAndOthersAreUnknown) {
    // The look-up searches the table by halves, so it must stay sorted.
    for (unsigned i = 0; i < _uNumWaveCodecs; ++i) {
        if (i > 0) {
            EXPECT_LT(_WaveCodecs[i - 1].formatTag, _WaveCodecs[i].formatTag) << i;
        }
        EXPECT_STREQ(LGetWaveCodecName(_WaveCodecs[i].formatTag), _WaveCodecs[i].name);
    }
    EXPECT_STREQ(LGetWaveCodecName(17), "Intel DVI ADPCM (IMA ADPCM)");
    EXPECT_STREQ(LGetWaveCodecName(0x44), "Microsoft Unknown Wave Format");
}

class WaveFormatTest : public ::testing::Test {
protected:
    TempHome home_;
};

TEST_F(WaveFormatTest, CodecNameOfFiles) {
    char name[260];
    LGetWaveFileCodecName(name, (home_.Path() / "missing.wav").c_str());
    EXPECT_STREQ(name, "Microsoft Unknown Wave Format");

    const std::filesystem::path gsm = home_.Path() / "gsm.wav";
    WriteFileBytes(gsm, RiffBuilder().Format(49, 1, 8000, 0, 65, 20).Chunk("data", {}).Bytes());
    LGetWaveFileCodecName(name, gsm.c_str());
    EXPECT_STREQ(name, "Microsoft GSM 6.10");
    EXPECT_EQ(LWaveFile::OpenSource(gsm.c_str())->GetError(), sndErrUnsupported);
}

TEST_F(WaveFormatTest, WavCodecFileKeepsTheRecordInTheDataFolder) {
    char path[260];
    ASSERT_TRUE(LWaveFileFormat::GetWavCodecFilePath(path));
    EXPECT_EQ(std::filesystem::path(path),
              home_.DataHome() / "Brakwater Software" / "Vinora" / "WavCodec.wff");

    // Missing: the caller's default is saved and returned.
    LWaveFileFormat loaded = LWaveFileFormat::LoadWavCodecFile(48000, 1);
    EXPECT_EQ(loaded.wfx.nSamplesPerSec, 48000u);
    EXPECT_EQ(loaded.wfx.nBlockAlign, 2);
    EXPECT_EQ(ReadFileBytes(path).size(), 1028u);

    LWaveFileFormat record(8000, 1);
    record.wfx.wFormatTag = 49;
    record.wfx.cbSize = 2;
    record.extra[0] = 0x40;
    record.extra[1] = 0x01;
    record.extra[2] = 0x77; // past cbSize: not stored
    record.trailing1 = 0x1234;
    record.trailing2 = 7;
    ASSERT_TRUE(record.SaveToWavCodecFile());
    const std::vector<uint8_t> bytes = ReadFileBytes(path);
    ASSERT_EQ(bytes.size(), 1028u);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 21),
              (std::vector<uint8_t>{49, 0, 1, 0,  0x40, 0x1F, 0, 0,    0x80, 0x3E, 0,
                                    0,  2, 0, 16, 0,    2,    0, 0x40, 0x01, 0}));
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 1024, bytes.end()),
              (std::vector<uint8_t>{0x34, 0x12, 7, 0}));

    loaded = LWaveFileFormat::LoadWavCodecFile(44100, 2);
    EXPECT_EQ(loaded.wfx.wFormatTag, 49);
    EXPECT_EQ(loaded.wfx.nSamplesPerSec, 8000u);
    EXPECT_EQ(loaded.extra[1], 0x01);
    EXPECT_EQ(loaded.trailing1, 0x1234);
}

} // namespace
