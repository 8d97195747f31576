// The list's file commands never replace a file silently: adding a file does not copy it over
// another of that name that the list does not show, "Copy To" asks about anything with the
// name (a link to nothing included) and says when a copy failed. Two recordings of one name
// converted for a data disc both reach it.
#include "app/MainCommands.h"
#include "app/MainDialog.h"

#include "drives/SystemDiscService.h"
#include "jobs/ProcessInterfaceVoid.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace fs = std::filesystem;

namespace {

struct QuietView : LMainDialogView {
    void RowsChanged() override {}
    void StatusChanged(int) override {}
    void BeginRename(int) override {}
    void HideWindow() override {}
    void CloseWindow() override {}
    LProcessResult RunJob(const char*,
                          const std::function<LProcessResult(LProcessInterface&)>& job) override {
        LProcessInterfaceVoid none;
        return job(none);
    }
};

class MainDialogSafety : public ::testing::Test {
protected:
    MainDialogSafety() {
        SetUserInteraction(&ui);
        fs::create_directories(output);
        fs::create_directories(elsewhere);
        LUserSettingSetString("Settings", "AppOutputFolder", output.c_str());
    }
    ~MainDialogSafety() override { SetUserInteraction(nullptr); }

    static fs::path Tone(const fs::path& path) {
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(path) + " synth 1 sine 440");
        return path;
    }

    TempHome home;
    fs::path output = home.Path() / "out";
    fs::path elsewhere = home.Path() / "elsewhere";
    LScriptedUserInteraction ui;
    QuietView view;
    MainDialog dialog{view, LMainDialogWindows()};
};

} // namespace

TEST_F(MainDialogSafety, AddingDoesNotCopyOverAFileTheListDoesNotShow) {
    // Put there after the list was loaded: the list does not show it.
    std::ofstream(output / "Track.wav") << "the user's own";
    EXPECT_FALSE(dialog.AddFileToList(Tone(elsewhere / "Track.wav").c_str(), true, false));
    std::ifstream kept(output / "Track.wav");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), "the user's own");
}

TEST_F(MainDialogSafety, CopyToAsksAboutAnyNameTakenAndTellsOfFailures) {
    Tone(output / "a.wav");
    Tone(output / "b.wav");
    dialog.RefreshFileList();
    dialog.List().SelectAll();
    fs::create_directories(elsewhere / "a.wav" / "inside");
    fs::create_symlink(elsewhere / "gone.wav", elsewhere / "b.wav");
    ui.QueuePaths({elsewhere.string()});
    ui.QueueAnswer(LMessageAnswer::Yes); // over the folder "a.wav": the copy fails
    ui.QueueAnswer(LMessageAnswer::No);  // the link stays

    dialog.RunCommand(CM_COPY_TO);
    std::vector<std::string> captions;
    for (const LInteractionCall& call : ui.Calls())
        if (call.kind == LInteractionKind::Message) captions.push_back(call.caption);
    ASSERT_EQ(captions.size(), 3u);
    EXPECT_EQ(captions[0], "Confirm Overwrite");
    EXPECT_EQ(captions[1], "Confirm Overwrite");
    EXPECT_NE(ui.Calls().back().text.find("1 file(s) could not be copied"), std::string::npos);
    EXPECT_TRUE(fs::is_symlink(elsewhere / "b.wav"));
    EXPECT_TRUE(fs::is_directory(elsewhere / "a.wav" / "inside"));
}

TEST_F(MainDialogSafety, RecordingsOfOneNameAreBothBurntToADataDisc) {
    SetDiscService(
        std::make_shared<LSystemDiscService>("cd-r:" + (home.Path() / "disc").string(), false));
    RunCommand("cd " + ShellQuote(output) +
               " && sox -n -r 44100 -c 2 -b 16 a.wav synth 1 sine 440"
               " && sox -n -r 44100 -c 2 -b 16 b.wav synth 3 sine 660"
               " && lame --quiet b.wav a.mp3 && rm b.wav");
    LUserSettingSet<int>("OutputFormat", "DataCDType", 1);
    LUserSettingSet<bool>("OutputFormat", "ReencodeAllFiles", true);
    LUserSettingSet<bool>("CDRecorder", "EraseCDRW", false);
    dialog.LoadSavedAudioFiles();
    ASSERT_EQ(dialog.List().Count(), 2);
    std::set<std::string> sources;
    dialog.BurnJobs().data = [&](LProcessInterface&, LBurnDataDisk& job) {
        for (const auto& [name, item] : job.compilation.Root().children)
            sources.insert(item->sourcePath);
        return PROCESS_DONE;
    };
    ui.QueueAnswer(LMessageAnswer::Ok);
    ui.QueueAnswer(LMessageAnswer::No);
    dialog.BurnSelectedFiles(false);
    EXPECT_EQ(sources.size(), 2u);
    SetDiscService(nullptr);
}
