#include "burn/BurnErrorCode.h"
#include "burn/BurnMediaTypes.h"
#include "burn/DiskBurnSettings.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

TEST(BurnVocabularyTest, ErrorMessagesAndTheirChain) {
    const struct {
        BurnErrorCodeValue code;
        const char* text;
    } messages[] = {{0, "No errors"},
                    {14, "There appears to be no disk in the drive, please insert one and try again"},
                    {41, "File to be written to disk is not found - check the file is present and "
                         "on an available drive"},
                    {46, "Unknown SCSI access error"},
                    {47, "Unknown error"},
                    {100000, "Unknown error"}};
    for (const auto& [code, text] : messages)
        EXPECT_STREQ(GetBurnErrorMessage(code), text) << code;

    BurnErrorCode error(5, std::string(600, 'x').c_str(), {3, 0x57, 1});
    EXPECT_EQ(std::strlen(error.text), 519u);
    EXPECT_EQ(error.additionalSenseCode, 0x57);
    error.AddInformation(41, "first.mp3");
    error.AddInformation(30, "second.mp3");
    const BurnErrorCode copy = error;
    ASSERT_EQ(copy.Chain().size(), 2u);
    EXPECT_EQ(copy.Chain().front().code, 30u);
    EXPECT_STREQ(copy.Chain().back().text, "first.mp3");
    EXPECT_EQ(BurnErrorCode().code, 0u);
}

TEST(BurnVocabularyTest, MediaAndProjectsAndWhatSuitsWhat) {
    char text[32];
    EXPECT_STREQ(GetMediaTypeString(MEDIA_DVDMR_DL, text), "DVD_R DL");
    EXPECT_STREQ(GetMediaTypeString(MEDIA_DVDPRW_DL, text), "DVD_RW DL");
    EXPECT_STREQ(GetMediaTypeString(MEDIA_IMAGE_FILE, text), "Image File");
    EXPECT_STREQ(GetMediaTypeString(20, text), "");
    EXPECT_STREQ(GetProjectTypeString(PROJECT_HYBRID_DISK, text), "hybrid Disk");
    EXPECT_STREQ(GetProjectTypeString(PROJECT_ISO_CD, text), "ISO CD");
    EXPECT_STREQ(GetProjectTypeString(PROJECT_ISO_JOLIET_CD, text), "ISO CD");
    EXPECT_STREQ(GetProjectTypeString(19, text), "");
    EXPECT_EQ(GetProjectMediaCategory(PROJECT_HYBRID_HDDVD), 2);
    EXPECT_EQ(GetProjectMediaCategory(PROJECT_UDF_BLURAY), 3);
    EXPECT_EQ(GetProjectMediaCategory(19), 0);

    EXPECT_FALSE(IsMediaMatchProject(MEDIA_DVDRAM, PROJECT_ISO_DVD));
    EXPECT_TRUE(IsMediaMatchProject(MEDIA_DVDPRW_DL, PROJECT_ISO_DVD));
    EXPECT_TRUE(IsMediaMatchProject(MEDIA_CDROM, PROJECT_ISO_DISK));
    EXPECT_FALSE(IsMediaMatchProject(MEDIA_CDROM, PROJECT_ISO_JOLIET_CD));
    EXPECT_FALSE(IsMediaMatchProject(MEDIA_NO_DISK, PROJECT_HYBRID_DISK));
    EXPECT_TRUE(IsMediaMatchProject(MEDIA_HDDVDRAM, PROJECT_UDF_HDDVD));
    EXPECT_TRUE(IsMediaMatchProject(MEDIA_BDRE, PROJECT_HYBRID_BLURAY));
    EXPECT_TRUE(IsMediaMatchProject(MEDIA_CDRW, 25));
}

TEST(BurnVocabularyTest, SettingsDefaultsAndOneSpeedUnit) {
    TempHome home;
    const LDiskBurnSettings fresh;
    EXPECT_DOUBLE_EQ(fresh.audioPause, 2.0);
    EXPECT_DOUBLE_EQ(fresh.speed, -1.0);
    EXPECT_EQ(fresh.copies, 1);
    EXPECT_TRUE(fresh.verifyBurn);

    LCDVNBurnSettings dialog;
    EXPECT_EQ(dialog.speed, kBurnSpeedMax);
    EXPECT_EQ(dialog.cdLabel, "CDLabel");
    dialog.speed = 16;
    dialog.cdLabel = "Party Mix";
    dialog.SaveAsDefaultSettings();
    EXPECT_DOUBLE_EQ(LDiskBurnSettings().speed, 16.0);
    EXPECT_EQ(LCDVNBurnSettings().cdLabel, "Party Mix");
    LUserSettingSet<int>("CDRecorder", "Speed", -1);
    EXPECT_EQ(LCDVNBurnSettings().speed, kBurnSpeedMax);
    LUserSettingSet<int>("CDRecorder", "AudioPause", 35);
    EXPECT_DOUBLE_EQ(LDiskBurnSettings().audioPause, 3.5);
}
