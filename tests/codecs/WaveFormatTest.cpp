#include "WaveTestUtil.h"

#include "codecs/WaveEncodeDlg.h"
#include "codecs/WaveFile.h"
#include "codecs/WaveFormatTags.h"
#include "platform/Settings.h"

#include <gtest/gtest.h>

namespace {

TEST(WaveCodecTableTest, HoldsTheRegisteredTagsInOrder) {
    ASSERT_EQ(_uNumWaveCodecs, 248u);
    for (unsigned i = 1; i < _uNumWaveCodecs; ++i)
        EXPECT_LT(_WaveCodecs[i - 1].formatTag, _WaveCodecs[i].formatTag) << i;
    const std::pair<uint16_t, const char*> telling[] = {{0, "Microsoft Unknown Wave Format"},
                                                        {1, "Microsoft PCM Format"},
                                                        {2, "Microsoft ADPCM Format"},
                                                        {3, "IEEE Float"},
                                                        {6, "Microsoft ALAW (CCITT A-Law)"},
                                                        {7, "Microsoft MULAW (CCITT u-Law)"},
                                                        {17, "Intel DVI ADPCM (IMA ADPCM)"},
                                                        {49, "Microsoft GSM 6.10"},
                                                        {80, "MPEG-1 layer 1, 2"},
                                                        {85, "MPEG-1 Layer 3 (MP3)"},
                                                        {255, "AAC"},
                                                        {61868, "Free Lossless Audio Codec FLAC"},
                                                        {65534, "Extensible wave format"},
                                                        {65535, "In Development / Unregistered"},
                                                        {0x44, "Microsoft Unknown Wave Format"}};
    for (const auto& [tag, name] : telling)
        EXPECT_STREQ(LGetWaveCodecName(tag), name) << tag;
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

TEST_F(WaveFormatTest, EncoderPresetsSetRateAndChannels) {
    const std::tuple<int, uint32_t, uint16_t> presets[] = {
        {LWaveEncodeDlg::presetAuto, 44100, 2},
        {LWaveEncodeDlg::presetHigh, 44100, 2},
        {LWaveEncodeDlg::presetMedium, 22050, 2},
        {LWaveEncodeDlg::presetLow, 8000, 1},
    };
    for (const auto& [preset, rate, channels] : presets) {
        LWaveFileFormat record(96000, 1);
        record.wfx.wBitsPerSample = 8;
        LWaveEncodeDlg dialog(&record);
        dialog.SetPreset(preset);
        dialog.Apply(record);
        EXPECT_EQ(record.wfx.wFormatTag, 1);
        EXPECT_EQ(record.wfx.nSamplesPerSec, rate) << preset;
        EXPECT_EQ(record.wfx.nChannels, channels) << preset;
        EXPECT_EQ(record.wfx.wBitsPerSample, 8); // left as it was
        EXPECT_EQ(LUserSettingGet<int>("Settings", "WavFormatPreset", -1), preset);
        EXPECT_EQ(LWaveEncodeDlg(&record).GetRateText(), "Auto");
    }
    LUserSettingSet<int>("Settings", "WavFormatPreset", 9);
    EXPECT_EQ(LWaveEncodeDlg(nullptr).GetPreset(), LWaveEncodeDlg::presetAuto);
}

TEST_F(WaveFormatTest, CustomPresetShowsAndStoresTheRecord) {
    LUserSettingSet<int>("Settings", "WavFormatPreset", LWaveEncodeDlg::presetCustom);
    LWaveFileFormat record(32000, 1);
    LWaveEncodeDlg dialog(&record);
    EXPECT_EQ(dialog.GetEncoding(), LWaveEncodeDlg::encodingPCM);
    EXPECT_EQ(dialog.GetRateText(), "32000");
    EXPECT_EQ(dialog.GetChannelItem(), 1);
    EXPECT_TRUE(dialog.IsRateEnabled());

    dialog.SetRateText("37800");
    dialog.SetChannelItem(2);
    dialog.Apply(record);
    EXPECT_EQ(record.wfx.nSamplesPerSec, 37800u);
    EXPECT_EQ(record.wfx.nChannels, 2);
    dialog.SetRateText("500000"); // more than a wave file may have: not taken
    dialog.Apply(record);
    EXPECT_EQ(record.wfx.nSamplesPerSec, 37800u);

    dialog.SetEncoding(LWaveEncodeDlg::encodingGSM);
    EXPECT_FALSE(dialog.IsRateEnabled());
    EXPECT_FALSE(dialog.IsChannelsEnabled());
    dialog.Apply(record);
    EXPECT_EQ(record.wfx.wFormatTag, 49);
    EXPECT_EQ(record.wfx.nChannels, 1);
    EXPECT_EQ(record.wfx.nSamplesPerSec, 8000u);

    dialog.SetPreset(LWaveEncodeDlg::presetHigh);
    EXPECT_FALSE(dialog.IsEncodingEnabled());
    EXPECT_EQ(dialog.GetEncoding(), LWaveEncodeDlg::encodingAuto);
    EXPECT_EQ(dialog.GetRateText(), "Auto");
}

} // namespace
