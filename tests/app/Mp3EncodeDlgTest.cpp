#include "app/Mp3EncodeDlg.h"
#include "jobs/ScriptedUserInteraction.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

namespace {

class Mp3EncodeDlgTest : public ::testing::Test {
protected:
    TempHome home_;
    LScriptedUserInteraction user_;
};

TEST_F(Mp3EncodeDlgTest, RefusesVbrRangesTheEncoderCannotKeep) {
    LMp3EncodeSettings record{LMp3EncodeSettings::DefaultsTag{}};
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
    // Nothing was stored.
    EXPECT_EQ(LMp3EncodeSettings().constantBitRate, 1);

    // The same range is no obstacle while CBR is chosen.
    dialog.SetConstantBitRate(true);
    EXPECT_TRUE(dialog.Ok(user_));
    EXPECT_EQ(dialog.GetInvalidControl(), LMp3EncodeDlg::invalidNone);
}

TEST_F(Mp3EncodeDlgTest, OkStoresEveryControlAndRestoreDefaultsBringsBackTheFactoryChoices) {
    LMp3EncodeSettings record;
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
    EXPECT_EQ(record.vbrMaxBitRate, 320);
    const LMp3EncodeSettings stored;
    EXPECT_EQ(stored.constantBitRate, 0);
    EXPECT_EQ(stored.cbrBitRate, 224);
    EXPECT_EQ(stored.highQuality, 0);
    EXPECT_EQ(stored.vbrMinBitRate, 40);
    EXPECT_EQ(stored.vbrMaxBitRate, 320);
    EXPECT_EQ(stored.vbrQuality, 2);
    EXPECT_EQ(stored.channelMode, LMp3EncodeSettings::modeForce);
    EXPECT_EQ(stored.errorProtection, 1);

    LMp3EncodeDlg again(record);
    EXPECT_STREQ(LMp3EncodeDlg::kStereoItems[again.GetStereoItem()], "Force");
    again.RestoreDefaults();
    ASSERT_TRUE(again.Ok(user_));
    const LMp3EncodeSettings factory{LMp3EncodeSettings::DefaultsTag{}}, restored;
    EXPECT_EQ(restored.constantBitRate, factory.constantBitRate);
    EXPECT_EQ(restored.cbrBitRate, factory.cbrBitRate);
    EXPECT_EQ(restored.vbrMinBitRate, factory.vbrMinBitRate);
    EXPECT_EQ(restored.vbrMaxBitRate, factory.vbrMaxBitRate);
    EXPECT_EQ(restored.channelMode, LMp3EncodeSettings::modeJoint);
    EXPECT_EQ(restored.errorProtection, 0);
}

} // namespace
