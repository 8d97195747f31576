#include "WaveTestUtil.h"

#include "codecs/WaveEncodeDlg.h"
#include "codecs/WaveFile.h"
#include "codecs/WaveFormatTags.h"
#include "platform/Settings.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(WaveCodecTableTest, HoldsTheRegisteredTagsInOrder) {
    ASSERT_EQ(_uNumWaveCodecs, 248u);
    for (unsigned i = 1; i < _uNumWaveCodecs; ++i)
        EXPECT_LT(_WaveCodecs[i - 1].formatTag, _WaveCodecs[i].formatTag) << i;
    EXPECT_EQ(_WaveCodecs[_uNumWaveCodecs - 1].formatTag, 0xFFFF);

    const std::pair<uint16_t, const char*> telling[] = {
        {0, "Microsoft Unknown Wave Format"},
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
    };
    for (const auto& [tag, name] : telling)
        EXPECT_STREQ(LGetWaveCodecName(tag), name) << tag;
    EXPECT_STREQ(LGetWaveCodecName(0x0044), "Microsoft Unknown Wave Format");
}

class WaveFormatTest : public ::testing::Test {
protected:
    TempHome home_;
};

TEST_F(WaveFormatTest, CodecNameOfFiles) {
    char name[260];
    LGetWaveFileCodecName(name, (home_.Path() / "missing.wav").c_str());
    EXPECT_STREQ(name, "Microsoft Unknown Wave Format");

    const std::filesystem::path path = home_.Path() / "gsm.wav";
    WriteFileBytes(path, RiffBuilder().Format(49, 1, 8000, 0, 65, 20).Chunk("data", {}).Bytes());
    LGetWaveFileCodecName(name, path.c_str());
    EXPECT_STREQ(name, "Microsoft GSM 6.10");
    EXPECT_EQ(LWaveFile::OpenSource(path.c_str())->GetError(), sndErrUnsupported);
}

TEST_F(WaveFormatTest, DefaultRecordIsSixteenBitPcm) {
    const LWaveFileFormat record(44100, 2);
    EXPECT_EQ(record.wfx.wFormatTag, 1);
    EXPECT_EQ(record.wfx.nBlockAlign, 4);
    EXPECT_EQ(record.wfx.nAvgBytesPerSec, 176400u);
    EXPECT_EQ(record.wfx.wBitsPerSample, 16);
    EXPECT_EQ(record.wfx.cbSize, 0);
    EXPECT_EQ(record.trailing1, 0);
    EXPECT_EQ(record.trailing2, 0);
}

TEST_F(WaveFormatTest, WavCodecFileKeepsTheRecordInItsDataFolder) {
    char path[260];
    ASSERT_TRUE(LWaveFileFormat::GetWavCodecFilePath(path));
    EXPECT_EQ(std::filesystem::path(path),
              home_.DataHome() / "Brakwater Software" / "Vinora" / "WavCodec.wff");

    // Missing: the default for the caller is saved and returned.
    LWaveFileFormat loaded = LWaveFileFormat::LoadWavCodecFile(48000, 1);
    EXPECT_EQ(loaded.wfx.nSamplesPerSec, 48000u);
    EXPECT_EQ(loaded.wfx.nChannels, 1);
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
    EXPECT_EQ(bytes[0], 49);
    EXPECT_EQ(LE32At(bytes, 4), 8000u);
    EXPECT_EQ(bytes[18], 0x40);
    EXPECT_EQ(bytes[19], 0x01);
    EXPECT_EQ(bytes[20], 0);
    EXPECT_EQ(bytes[1024] | bytes[1025] << 8, 0x1234);
    EXPECT_EQ(bytes[1026], 7);

    loaded = LWaveFileFormat::LoadWavCodecFile(44100, 2);
    EXPECT_EQ(loaded.wfx.wFormatTag, 49);
    EXPECT_EQ(loaded.wfx.nSamplesPerSec, 8000u);
    EXPECT_EQ(loaded.wfx.cbSize, 2);
    EXPECT_EQ(loaded.extra[1], 0x01);
    EXPECT_EQ(loaded.trailing1, 0x1234);
    EXPECT_EQ(loaded.trailing2, 7);
}

TEST_F(WaveFormatTest, ShortWavCodecFileIsNotLoaded) {
    const std::filesystem::path path = home_.Path() / "short.wff";
    WriteFileBytes(path, std::vector<uint8_t>(100, 1));
    LWaveFileFormat record(22050, 1);
    EXPECT_FALSE(record.LoadFromWavCodecFile(path.c_str()));
    EXPECT_EQ(record.wfx.nSamplesPerSec, 22050u);
}

TEST_F(WaveFormatTest, EncoderPresetsSetRateAndChannels) {
    const std::pair<int, std::pair<uint32_t, uint16_t>> presets[] = {
        {LWaveEncodeDlg::presetAuto, {44100, 2}},
        {LWaveEncodeDlg::presetHigh, {44100, 2}},
        {LWaveEncodeDlg::presetMedium, {22050, 2}},
        {LWaveEncodeDlg::presetLow, {8000, 1}},
    };
    for (const auto& [preset, format] : presets) {
        LWaveFileFormat record(96000, 1);
        record.wfx.wBitsPerSample = 8;
        LWaveEncodeDlg dialog(&record);
        dialog.SetPreset(preset);
        dialog.Apply(record);
        EXPECT_EQ(record.wfx.wFormatTag, 1);
        EXPECT_EQ(record.wfx.nSamplesPerSec, format.first) << preset;
        EXPECT_EQ(record.wfx.nChannels, format.second) << preset;
        EXPECT_EQ(record.wfx.wBitsPerSample, 8); // left as it was
        EXPECT_EQ(LUserSettingGet<int>("Settings", "WavFormatPreset", -1), preset);
    }
}

TEST_F(WaveFormatTest, CustomPresetShowsAndStoresTheRecord) {
    LUserSettingSet<int>("Settings", "WavFormatPreset", LWaveEncodeDlg::presetCustom);
    LWaveFileFormat record(32000, 1);
    LWaveEncodeDlg dialog(&record);
    EXPECT_EQ(dialog.GetPreset(), LWaveEncodeDlg::presetCustom);
    EXPECT_EQ(dialog.GetEncoding(), LWaveEncodeDlg::encodingPCM);
    EXPECT_EQ(dialog.GetRateText(), "32000");
    EXPECT_EQ(dialog.GetChannelItem(), 1);
    EXPECT_TRUE(dialog.IsEncodingEnabled());
    EXPECT_TRUE(dialog.IsRateEnabled());
    EXPECT_TRUE(dialog.IsChannelsEnabled());

    dialog.SetRateText("37800");
    dialog.SetChannelItem(2);
    dialog.Apply(record);
    EXPECT_EQ(record.wfx.nSamplesPerSec, 37800u);
    EXPECT_EQ(record.wfx.nChannels, 2);

    // A rate the reader would refuse is not taken.
    dialog.SetRateText("500000");
    dialog.Apply(record);
    EXPECT_EQ(record.wfx.nSamplesPerSec, 37800u);

    dialog.SetEncoding(LWaveEncodeDlg::encodingGSM);
    EXPECT_FALSE(dialog.IsRateEnabled());
    EXPECT_FALSE(dialog.IsChannelsEnabled());
    dialog.Apply(record);
    EXPECT_EQ(record.wfx.wFormatTag, 49);
    EXPECT_EQ(record.wfx.nChannels, 1);
    EXPECT_EQ(record.wfx.nSamplesPerSec, 8000u);
    EXPECT_EQ(LWaveEncodeDlg(&record).GetEncoding(), LWaveEncodeDlg::encodingGSM);

    dialog.SetPreset(LWaveEncodeDlg::presetHigh);
    EXPECT_FALSE(dialog.IsEncodingEnabled());
    EXPECT_EQ(dialog.GetEncoding(), LWaveEncodeDlg::encodingAuto);
    EXPECT_EQ(dialog.GetRateText(), "Auto");
    EXPECT_EQ(dialog.GetChannelItem(), 0);
}

TEST_F(WaveFormatTest, OtherPresetsShowAuto) {
    LUserSettingSet<int>("Settings", "WavFormatPreset", LWaveEncodeDlg::presetMedium);
    const LWaveFileFormat record(32000, 1);
    const LWaveEncodeDlg dialog(&record);
    EXPECT_EQ(dialog.GetPreset(), LWaveEncodeDlg::presetMedium);
    EXPECT_EQ(dialog.GetRateText(), "Auto");
    EXPECT_FALSE(dialog.IsRateEnabled());

    LUserSettingSet<int>("Settings", "WavFormatPreset", 9);
    EXPECT_EQ(LWaveEncodeDlg(nullptr).GetPreset(), LWaveEncodeDlg::presetAuto);
}

} // namespace
