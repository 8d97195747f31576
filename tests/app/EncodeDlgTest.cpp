// The encoder settings windows' logic: the MP3 window's checks and stored controls, the WAV
// window's presets and custom choice of encoding, rate and channels.
#include "app/Mp3EncodeDlg.h"
#include "app/WaveEncodeDlg.h"

#include "jobs/ScriptedUserInteraction.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

using Mp3 = LMp3EncodeSettings;

// Every field, comparable at once.
auto Fields(const Mp3& s) {
    return std::tuple<int, int, int, int, int, int, int, int>(
        s.constantBitRate, s.cbrBitRate, s.highQuality, s.vbrMinBitRate, s.vbrMaxBitRate,
        s.vbrQuality, s.channelMode, s.errorProtection);
}

class EncodeDlgTest : public ::testing::Test {
protected:
    TempHome home_;
    LScriptedUserInteraction user_;
};

TEST_F(EncodeDlgTest, Mp3RefusesVbrRangesTheEncoderCannotKeep) {
    Mp3 record{Mp3::DefaultsTag{}};
    LMp3EncodeDlg dialog(record);
    dialog.SetConstantBitRate(false);
    dialog.SetVbrMinBitRate("24");
    dialog.SetVbrMaxBitRate("192");
    EXPECT_FALSE(dialog.Ok(user_));
    dialog.SetVbrMinBitRate("128");
    dialog.SetVbrMaxBitRate("64");
    EXPECT_FALSE(dialog.Ok(user_));
    EXPECT_EQ(dialog.GetInvalidControl(), LMp3EncodeDlg::invalidVbrMax);

    const auto calls = user_.Calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].caption, "Vinora Records Vinyl to CD Converter");
    EXPECT_EQ(calls[0].text,
              "Your VBR Minimum and Maximum Bitrates are too far apart, which will cause "
              "problems with the encoder. You must raise the minimum rate above 32 or the "
              "maximum rate below 160.");
    EXPECT_EQ(calls[1].text, "Your VBR Maximum Bitrate cannot be smaller than the Minimum "
                             "Bitrate.");
    EXPECT_EQ(Fields(Mp3()), Fields(Mp3{Mp3::DefaultsTag{}})) << "nothing was stored";

    // The same range is no obstacle while CBR is chosen.
    dialog.SetConstantBitRate(true);
    EXPECT_TRUE(dialog.Ok(user_));
    EXPECT_EQ(dialog.GetInvalidControl(), LMp3EncodeDlg::invalidNone);
}

TEST_F(EncodeDlgTest, Mp3OkStoresEveryControlAndRestoreDefaultsBringsBackTheFactoryChoices) {
    Mp3 record;
    LMp3EncodeDlg dialog(record);
    dialog.SetConstantBitRate(false);
    dialog.SetCbrBitRate("224");
    dialog.SetHighQuality(false);
    dialog.SetVbrMinBitRate("40");
    dialog.SetVbrMaxBitRate("320");
    dialog.SetQualityItem(2);
    dialog.SetStereoItem(2);
    dialog.SetErrorProtection(true);
    ASSERT_TRUE(dialog.Ok(user_));
    EXPECT_TRUE(user_.Calls().empty());
    const auto chosen = std::tuple(0, 224, 0, 40, 320, 2, int(Mp3::modeForce), 1);
    EXPECT_EQ(Fields(record), chosen);
    EXPECT_EQ(Fields(Mp3()), chosen);

    LMp3EncodeDlg again(record);
    EXPECT_STREQ(LMp3EncodeDlg::kStereoItems[again.GetStereoItem()], "Force");
    again.RestoreDefaults();
    ASSERT_TRUE(again.Ok(user_));
    Mp3 factory{Mp3::DefaultsTag{}};
    factory.channelMode = Mp3::modeJoint;
    EXPECT_EQ(Fields(Mp3()), Fields(factory));
}

TEST_F(EncodeDlgTest, WavePresetsAndTheCustomChoiceSetTheRecord) {
    {
        LWaveFileFormat record(96000, 2);
        LWaveEncodeDlg dialog(&record);
        dialog.SetPreset(LWaveEncodeDlg::presetLow);
        dialog.Apply(record);
        EXPECT_EQ(record.wfx.nSamplesPerSec, 8000u);
        EXPECT_EQ(record.wfx.nChannels, 1);
        EXPECT_EQ(LUserSettingGet<int>("Settings", "WavFormatPreset", -1),
                  LWaveEncodeDlg::presetLow);
    }
    LUserSettingSet<int>("Settings", "WavFormatPreset", 9);
    EXPECT_EQ(LWaveEncodeDlg(nullptr).GetPreset(), LWaveEncodeDlg::presetAuto);

    LUserSettingSet<int>("Settings", "WavFormatPreset", LWaveEncodeDlg::presetCustom);
    LWaveFileFormat record(32000, 1);
    LWaveEncodeDlg dialog(&record);
    EXPECT_EQ(dialog.GetRateText(), "32000");
    dialog.SetRateText("37800");
    dialog.SetChannelItem(2);
    dialog.Apply(record);
    EXPECT_EQ(record.wfx.nSamplesPerSec, 37800u);
    EXPECT_EQ(record.wfx.nChannels, 2);
    dialog.SetRateText("500000"); // more than a wave file may have: not taken
    dialog.Apply(record);
    EXPECT_EQ(record.wfx.nSamplesPerSec, 37800u);
    dialog.SetEncoding(LWaveEncodeDlg::encodingGSM);
    dialog.Apply(record);
    EXPECT_EQ(record.wfx.wFormatTag, 49);
    EXPECT_EQ(record.wfx.nChannels, 1);
    EXPECT_EQ(record.wfx.nSamplesPerSec, 8000u);
}

} // namespace
