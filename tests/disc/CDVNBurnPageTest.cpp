// The burn settings page's logic over a scripted disc service.
#include "disc/CDVNBurnPage.h"
#include "platform/Settings.h"
#include "support/RecordingProgress.h"
#include "support/TempHome.h"

#include "ScriptedDiscService.h"

#include <gtest/gtest.h>

namespace {

struct Page {
    std::vector<std::pair<int, int>> sent;
    std::vector<std::string> scans;
    LCDVNBurnDlg dlg{[this](const char* title, ProcessFindBurners& scan) {
                         scans.push_back(title);
                         RecordingProgress progress;
                         return Process(progress, scan);
                     },
                     [this](int message, int parameter) { sent.emplace_back(message, parameter); }};
};

} // namespace

TEST(CDVNBurnPage, ControlsFollowTheSettingsAndTheOutputFormat) {
    TempHome home;
    ScriptedServiceScope scope;
    LUserSettingSet<int>("CDRecorder", "Speed", 16);
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 4);
    LUserSettingSet<bool>("OutputFormat", "BurnAudioCD", true);
    Page page;
    page.dlg.Init();
    EXPECT_EQ(page.dlg.drives, (std::vector<std::string>{"Maker Writer"}));
    ASSERT_EQ(page.dlg.speeds.size(), 14u);
    EXPECT_EQ(page.dlg.speeds[0], "[MAX]");
    EXPECT_EQ(page.dlg.speeds[page.dlg.speedSelected], "16x");
    EXPECT_FALSE(page.dlg.labelEnabled || page.dlg.overburnEnabled);
    EXPECT_TRUE(page.dlg.label.empty());
    EXPECT_EQ(page.dlg.eraseButtonCaption, "Erase CD-RW Now");
    EXPECT_EQ(page.dlg.driveCaption, "CD Drive");

    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 2);
    LUserSettingSet<bool>("OutputFormat", "BurnAudioCD", false);
    page.dlg.Init();
    EXPECT_TRUE(page.dlg.labelEnabled);
    EXPECT_EQ(page.dlg.label, "CDLabel");
    EXPECT_NE(page.dlg.eraseButtonCaption, "Erase CD-RW Now");
}

TEST(CDVNBurnPage, RefreshRebuildsTheSpeedsOfTheChosenBurner) {
    TempHome home;
    ScriptedServiceScope scope;
    LDiscDeviceStatus status = ScriptedDisc::Blank();
    status.burnSpeeds = {4 * 176.4, 16 * 176.4, 24 * 176.4};
    scope.disc->statuses = {status};
    LUserSettingSet<int>("CDRecorder", "Speed", 16);
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 2);
    LUserSettingSet<int>("RecordingPage", "TotalSize", 3 * 1048576);
    Page page;
    page.dlg.Init();
    page.dlg.UpdateCDInfo();
    EXPECT_EQ(page.scans, (std::vector<std::string>{"Locating Burners"}));
    EXPECT_EQ(page.dlg.speeds, (std::vector<std::string>{"[MAX]", "4x", "16x", "24x"}));
    EXPECT_EQ(page.dlg.speeds[page.dlg.speedSelected], "16x");
    EXPECT_EQ(page.dlg.projectSize, " 3.00 MB");
    EXPECT_EQ(page.dlg.capacity, "702.83 MB");

    // A drive that is not there: no speeds but the maximum.
    page.dlg.SelectDrive(1);
    EXPECT_EQ(page.dlg.speeds, (std::vector<std::string>{"[MAX]"}));
    EXPECT_EQ(LUserSettingGet<int>("CDRecorder", "CDDrive", 0), 1);
}

TEST(CDVNBurnPage, OkStoresTheChoicesAndStartsABurnWhenAsked) {
    TempHome home;
    ScriptedServiceScope scope;
    Page page;
    page.dlg.Init();
    page.dlg.speedSelected = 5; // "8x"
    page.dlg.eraseCDRW = false;
    page.dlg.label = "Mix";
    page.dlg.CmOk();
    EXPECT_EQ(LUserSettingGet<int>("CDRecorder", "Speed", 0), 8);
    EXPECT_FALSE(LUserSettingGet<bool>("CDRecorder", "EraseCDRW", true));
    EXPECT_EQ(LUserSettingGetString("CDRecorder", "CDLabel", ""), "Mix");
    EXPECT_TRUE(page.sent.empty());

    page.dlg.speedSelected = 0;
    LUserSettingSet<bool>("OutputFormat", "BurnCDNow", true);
    LUserSettingSet<bool>("OutputFormat", "BurnAudioCD", true);
    page.dlg.CmOk();
    EXPECT_EQ(LUserSettingGet<int>("CDRecorder", "Speed", 0), 65535);
    page.dlg.CmEraseNow();
    EXPECT_EQ(page.sent, (std::vector<std::pair<int, int>>{{2032, 1}, {116, 0}}));
}

TEST(CDVNBurnPage, ValidOnlyForDiscOutputFormats) {
    TempHome home;
    EXPECT_FALSE(LCDVNBurnDlg::IsPageValid());
    for (int format : {2, 3, 4}) {
        LUserSettingSet<int>("OutputFormat", "OutputFormatNum", format);
        EXPECT_TRUE(LCDVNBurnDlg::IsPageValid()) << format;
    }
    LUserSettingSet<bool>("Wizard", "SetOutputFormat", false);
    EXPECT_FALSE(LCDVNBurnDlg::IsPageValid());
}
