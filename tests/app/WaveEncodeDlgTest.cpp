// The WAV encoder settings window's logic: presets, and the custom choice of encoding, rate
// and channels.
#include "app/WaveEncodeDlg.h"

#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

namespace {

class WaveEncodeDlgTest : public ::testing::Test {
protected:
    TempHome home_;
};

TEST_F(WaveEncodeDlgTest, PresetsAndTheCustomChoiceSetTheRecord) {
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
