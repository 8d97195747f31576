// The setup wizard's navigation, pages and burn forms and the preferences' pages, without
// windows: which pages show, what they store and what Finish asks of the main window, answered
// from a script.
#include "app/Preferences.h"
#include "app/SetupWizard.h"

#include "drives/SystemDiscService.h"
#include "jobs/PlainMainQueue.h"
#include "jobs/ProcessInterfaceVoid.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

struct PageView : LWizardView {
    int closed = -1;
    void ShowPage(int) override {}
    void CloseWizard(bool ok) override { closed = ok; }
};

// The Virtual Burner with a CD-RW is the only drive.
class SetupWizardTest : public ::testing::Test {
protected:
    SetupWizardTest() {
        LMainThreadQueue::SetCurrent(&queue_);
        SetUserInteraction(&ui_);
        SetDiscService(std::make_shared<LSystemDiscService>(
            "cd-rw:" + (home_.Path() / "disc").string(), false));
    }
    ~SetupWizardTest() override {
        SetDiscService(nullptr);
        SetUserInteraction(nullptr);
        LMainThreadQueue::SetCurrent(nullptr);
    }

    LRecordingSetupWizard::Hooks Hooks() {
        LRecordingSetupWizard::Hooks hooks{.startRecording = [this] { recording = true; },
                                           .refresh = [] {}, .levels = [](const LDBMC&) {}};
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
    bool recording = false;
    std::vector<std::string> scans;
    std::vector<std::pair<int, int>> sent;
};

TEST_F(SetupWizardTest, PagesShowAndStoreTheirChoices) {
    LRecordingSetupWizard setup(Hooks());
    // Unstored switches start as the wizard suggests them; a cassette starts without click and
    // pop removal, whatever was stored, and the user may still choose it.
    setup.restoration.Activate();
    EXPECT_TRUE(setup.restoration.choices.clickPop);
    EXPECT_TRUE(setup.restoration.choices.dcOffset);
    EXPECT_FALSE(setup.restoration.choices.highPass);
    LUserSettingSet<bool>("RecordingSource", "Vinyl", false);
    setup.restoration.Activate();
    EXPECT_FALSE(setup.restoration.choices.clickPop);
    setup.restoration.choices.clickPop = true;
    EXPECT_TRUE(setup.restoration.CmOk());
    EXPECT_TRUE(LRestoreChoices::FromSettings().clickPop);
    EXPECT_TRUE(LRestoreChoices::FromSettings().normalization);

    setup.output.Activate();
    for (const auto& [typed, stored] : std::vector<std::pair<std::string, std::string>>{
             {"Side A", "Side A %autonumber%"},
             {"", "Untitled %autonumber%"},
             {"Disc: %autonumber% ?", "Disc %autonumber% "},
         }) {
        setup.output.format = 0;
        setup.output.pattern = typed;
        EXPECT_TRUE(setup.output.CmOk());
        EXPECT_EQ(LUserSettingGetString("OutputFormat", "FileNameFormat"), stored) << typed;
    }
    // A copy that is switched on needs a folder; one that does not exist is made only when the
    // user agrees.
    setup.output.makeCopy = true;
    setup.output.copyFolder.clear();
    EXPECT_FALSE(setup.output.CmOk());
    EXPECT_EQ(ui_.Calls().back().text,
              "No output folder selected. Please specify an output folder to make copies to.");
    setup.output.copyFolder = (home_.Path() / "copies/side a").string();
    ui_.QueueAnswer(LMessageAnswer::Cancel);
    EXPECT_FALSE(setup.output.CmOk());
    EXPECT_FALSE(fs::exists(setup.output.copyFolder));
    EXPECT_TRUE(setup.output.CmOk());
    EXPECT_TRUE(fs::is_directory(setup.output.copyFolder));
    EXPECT_EQ(ui_.Calls().back().caption, "Create Folder?");
}

TEST_F(SetupWizardTest, PreferencesRefuseWhatCannotBeStored) {
    std::string folderGiven;
    bool writable = false;
    LGeneralPage general([&](const std::string& folder) { folderGiven = folder; return writable; },
                         [](const LDBMC&) {});
    general.InitDialog("/nowhere");
    general.useMinTime = true;
    general.minTime = 1;
    general.volume = -7;
    EXPECT_FALSE(general.CmOk());
    EXPECT_EQ(folderGiven, "/nowhere");
    EXPECT_NE(ui_.Calls().back().text.find("\"/nowhere\" does not exist or it is not writable"),
              std::string::npos);
    EXPECT_EQ(LUserSettingGet<int>("Recording", "Volume", 99), 99);
    writable = true;
    EXPECT_TRUE(general.CmOk());
    EXPECT_EQ(LUserSettingGet<int>("Settings", "MinTime", 0), 2);
    EXPECT_EQ(LUserSettingGet<int>("Recording", "Volume", 99), -7);

    LAudioSettingsPage audio;
    audio.InitDialog();
    EXPECT_EQ(audio.noiseFloor, -30);
    audio.copyFolder.clear();
    audio.makeCopy = true;
    ui_.ClearCalls();
    EXPECT_FALSE(audio.CmOk());
    EXPECT_EQ(ui_.Calls().back().caption, "Error");
    // With the copy off, the folder is kept as typed and nobody is asked to create it.
    audio.makeCopy = false;
    audio.copyFolder = (home_.Path() / "not made").string();
    audio.format = 0;
    audio.noiseFloor = -45;
    ui_.ClearCalls();
    EXPECT_TRUE(audio.CmOk());
    EXPECT_TRUE(ui_.Calls().empty());
    EXPECT_FALSE(fs::exists(audio.copyFolder));
    EXPECT_EQ(LUserSettingGetString("OutputFormat", "OutputFolder"), audio.copyFolder);
    audio.noiseFloor = -70;
    ui_.QueueAnswer(LMessageAnswer::Cancel);
    EXPECT_FALSE(audio.CmOk());
    EXPECT_EQ(LUserSettingGet<int>("Settings", "dBNoiseFloor", 0), -45);
}

TEST_F(SetupWizardTest, BurnFormsShowTheirPagesAndFinishStartsTheBurn) {
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

TEST_F(SetupWizardTest, TheFullSetupShowsOnlyThePagesItsChoicesNeed) {
    constexpr const char* kFinal = "The Wizard Setup is now complete.";
    // Pages after the introduction: the output format only when the source page asks for it,
    // the burn settings only for formats that burn.
    const struct {
        bool setOutputFormat;
        int format;
        std::vector<std::string> headings;
    } cases[] = {
        {false, 0, {"Recording Source", kFinal}},
        {true, 0, {"Recording Source", "Output Format", kFinal}},
        {true, 2, {"Recording Source", "Output Format", "CD/DVD Burn Settings", kFinal}},
        {true, 4, {"Recording Source", "Output Format", "CD/DVD Burn Settings", kFinal}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.headings));
        sent.clear();
        recording = false;
        LRecordingSetupWizard setup(Hooks());
        EXPECT_FALSE(LUserSettingGet<bool>("OutputFormat", "BurnCDNow", true));
        PageView view;
        LWizard& wizard = setup.Wizard();
        ASSERT_TRUE(wizard.Open(view));
        // The introduction the user asked not to see again is skipped from then on.
        if (&c == cases) {
            EXPECT_EQ(wizard.CurrentEntry().heading,
                      "Welcome to the Vinora Records Recording Setup Wizard!");
            setup.introduction.dontShowAgain = true;
            wizard.Next();
        }
        std::vector<std::string> headings{wizard.CurrentEntry().heading};
        setup.source.calibrateVolume = setup.source.measureNoiseFloor = false;
        setup.source.setRestoreTools = false;
        setup.source.setOutputFormat = c.setOutputFormat;
        while (headings.back() != kFinal && headings.size() < 8) {
            if (wizard.CurrentEntry().layout == "output") setup.output.format = c.format;
            wizard.Next();
            headings.push_back(wizard.CurrentEntry().heading);
        }
        EXPECT_EQ(headings, c.headings);
        // Going back skips the introduction too.
        wizard.Back();
        EXPECT_EQ(wizard.CurrentEntry().heading, c.headings[c.headings.size() - 2]);
        EXPECT_EQ(wizard.HasBack(), c.setOutputFormat);
        wizard.Next();
        wizard.Next();
        EXPECT_EQ(view.closed, 1);
        EXPECT_TRUE(recording);
        // Storing the burn settings here burns nothing.
        EXPECT_TRUE(sent.empty());
    }
    EXPECT_FALSE(LUserSettingGet<bool>("Introduction", "Show", true));
}

} // namespace
