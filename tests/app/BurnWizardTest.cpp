// The setup wizard's burn forms and its burn settings page, without windows: which pages each
// mode shows, what they store and what Finish asks of the main window.
#include "app/SetupWizard.h"

#include "drives/SystemDiscService.h"
#include "jobs/PlainMainQueue.h"
#include "jobs/ProcessInterfaceVoid.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

namespace {

struct PageView : LWizardView {
    int closed = -1;
    void ShowPage(int) override {}
    void CloseWizard(bool ok) override { closed = ok; }
};

class BurnWizardTest : public ::testing::Test {
protected:
    BurnWizardTest() {
        LMainThreadQueue::SetCurrent(&queue_);
        SetUserInteraction(&ui_);
        SetDiscService(std::make_shared<LSystemDiscService>(
            "cd-rw:" + (home_.Path() / "disc").string(), false));
    }
    ~BurnWizardTest() override {
        SetDiscService(nullptr);
        SetUserInteraction(nullptr);
        LMainThreadQueue::SetCurrent(nullptr);
    }

    LRecordingSetupWizard::Hooks Hooks() {
        LRecordingSetupWizard::Hooks hooks{.startRecording = [] {}, .refresh = [] {}, .levels = [](const LDBMC&) {}};
        hooks.runScan = [this](const char* title, ProcessFindBurners& scan) {
            scans.push_back(title);
            LProcessInterfaceVoid unseen;
            return Process(unseen, scan);
        };
        hooks.sendToMain = [this](int message, int value) { sent.emplace_back(message, value); };
        return hooks;
    }

    static std::vector<std::string> Headings(LWizard& wizard) {
        std::vector<std::string> headings;
        for (const LWizard::Entry& entry : wizard.Pages()) headings.push_back(entry.heading);
        return headings;
    }

    TempHome home_;
    LPlainMainQueue queue_;
    LScriptedUserInteraction ui_;
    std::vector<std::string> scans;
    std::vector<std::pair<int, int>> sent;
};

TEST_F(BurnWizardTest, BurnFormsShowTheirPagesAndFinishStartsTheBurn) {
    const struct {
        const char* mode;
        int outputFormat; // as the burn command sets it
        std::vector<std::string> headings;
        bool audio;
    } cases[] = {
        {"Audio", 4, {"CD Burn Settings"}, true},
        {"audio", 4, {"CD Burn Settings"}, true},
        {"Data", 2, {"Data CD/DVD Options", "CD/DVD Burn Settings"}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mode);
        sent.clear();
        scans.clear();
        LUserSettingSet<int>("OutputFormat", "OutputFormatNum", c.outputFormat);
        LUserSettingSetString("CDRecorder", "CDLabel", "Old Label");
        LRecordingSetupWizard setup(Hooks(), c.mode);
        EXPECT_EQ(Headings(setup.Wizard()), c.headings);
        EXPECT_EQ(LUserSettingGet<bool>("OutputFormat", "BurnAudioCD", !c.audio), c.audio);
        EXPECT_TRUE(LUserSettingGet<bool>("OutputFormat", "BurnCDNow", false));
        PageView view;
        ASSERT_TRUE(setup.Wizard().Open(view));
        if (!c.audio) {
            EXPECT_EQ(setup.Wizard().CurrentEntry().title, "Data CD/DVD Burn Options");
            EXPECT_EQ(setup.dataBurn.label, "Old Label");
            setup.dataBurn.dataCDType = DATA_CD_AS_THEY_ARE;
            setup.dataBurn.reencodeAllFiles = true;
            setup.dataBurn.label = "Sixteen chars ok and more";
            setup.Wizard().Next();
            EXPECT_EQ(LUserSettingGet<int>("OutputFormat", "DataCDType", -1), DATA_CD_AS_THEY_ARE);
            EXPECT_TRUE(LUserSettingGet<bool>("OutputFormat", "ReencodeAllFiles", false));
            EXPECT_EQ(LUserSettingGetString("CDRecorder", "CDLabel"), "Sixteen chars ok");
        }
        // The burn settings page scanned for burners and speaks of CDs only for an audio CD.
        LCDVNBurnDlg& page = setup.burn.dlg;
        EXPECT_EQ(scans, std::vector<std::string>{"Locating Burners"});
        EXPECT_EQ(page.drives, std::vector<std::string>{"Vinora Virtual Burner"});
        EXPECT_EQ(page.eraseButtonCaption, c.audio ? "Erase CD-RW Now" : "Erase Disc Now");
        EXPECT_EQ(page.labelEnabled, !c.audio);
        page.speedSelected = 0;
        page.CmEraseNow();
        setup.Wizard().Next();
        EXPECT_EQ(view.closed, 1);
        EXPECT_EQ(sent, (std::vector<std::pair<int, int>>{{116, 0}, {2032, c.audio ? 1 : 0}}));
        EXPECT_EQ(LUserSettingGet<int>("CDRecorder", "Speed", 0), 65535);
    }
}

TEST_F(BurnWizardTest, TheFullSetupShowsBurnSettingsOnlyForFormatsThatBurn) {
    for (int format : {0, 2, 4}) {
        SCOPED_TRACE(format);
        sent.clear();
        LRecordingSetupWizard setup(Hooks());
        EXPECT_FALSE(LUserSettingGet<bool>("OutputFormat", "BurnCDNow", true));
        PageView view;
        LWizard& wizard = setup.Wizard();
        ASSERT_TRUE(wizard.Open(view));
        while (wizard.CurrentEntry().layout != "source") wizard.Next();
        setup.source.calibrateVolume = setup.source.measureNoiseFloor = false;
        setup.source.setRestoreTools = false;
        setup.source.setOutputFormat = true;
        wizard.Next();
        ASSERT_EQ(wizard.CurrentEntry().layout, "output");
        setup.output.format = format;
        wizard.Next();
        const bool burns = format != 0;
        EXPECT_EQ(wizard.CurrentEntry().heading,
                  burns ? "CD/DVD Burn Settings" : "The Wizard Setup is now complete.");
        if (!burns) continue;
        wizard.Next();
        EXPECT_EQ(wizard.CurrentEntry().layout, "final");
        // Storing the settings here burns nothing.
        EXPECT_TRUE(sent.empty());
    }
}

} // namespace
