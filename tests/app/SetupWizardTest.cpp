// The setup wizard's navigation and pages and the preferences' pages, answered from a script.
#include "app/Preferences.h"
#include "app/SetupWizard.h"

#include "jobs/PlainMainQueue.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

struct RecordingView : LWizardView {
    std::vector<int> shown;
    int closed = -1;
    void ShowPage(int index) override { shown.push_back(index); }
    void CloseWizard(bool ok) override { closed = ok; }
};

class SetupWizardTest : public ::testing::Test {
protected:
    SetupWizardTest() {
        LMainThreadQueue::SetCurrent(&queue_);
        SetUserInteraction(&ui_);
    }
    ~SetupWizardTest() override {
        SetUserInteraction(nullptr);
        LMainThreadQueue::SetCurrent(nullptr);
    }

    TempHome home_;
    LPlainMainQueue queue_;
    LScriptedUserInteraction ui_;
};

TEST_F(SetupWizardTest, SkipsThePagesTheSourcePageLeavesAlone) {
    bool recording = false;
    LRecordingSetupWizard setup({.startRecording = [&] { recording = true; }, .refresh = [] {}, .levels = [](const LDBMC&) {}});
    RecordingView view;
    LWizard& wizard = setup.Wizard();
    ASSERT_TRUE(wizard.Open(view));
    EXPECT_EQ(wizard.CurrentEntry().heading, "Welcome to the Vinora Records Recording Setup Wizard!");
    setup.introduction.dontShowAgain = true;
    wizard.Next();
    EXPECT_EQ(wizard.CurrentEntry().heading, "Recording Source");
    setup.source.calibrateVolume = setup.source.measureNoiseFloor = false;
    setup.source.setRestoreTools = setup.source.setOutputFormat = false;
    wizard.Next();
    EXPECT_EQ(wizard.CurrentEntry().heading, "The Wizard Setup is now complete.");
    wizard.Back();
    EXPECT_EQ(wizard.CurrentEntry().heading, "Recording Source");
    // The introduction the user asked not to see again is skipped going back too.
    EXPECT_FALSE(wizard.HasBack());
    wizard.Next();
    wizard.Next();
    EXPECT_EQ(view.closed, 1);
    EXPECT_TRUE(recording);
    EXPECT_FALSE(LUserSettingGet<bool>("Introduction", "Show", true));
    EXPECT_FALSE(LUserSettingGet<bool>("OutputFormat", "BurnCDNow", true));
}

TEST_F(SetupWizardTest, PagesShowAndStoreTheirChoices) {
    LRecordingSetupWizard setup({.refresh = [] {}, .levels = [](const LDBMC&) {}});
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

} // namespace
