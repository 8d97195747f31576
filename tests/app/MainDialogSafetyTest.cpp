// Adding a file to the list copies it into the output folder, but never over another file of
// that name there that the list does not show.
#include "app/MainDialog.h"

#include "jobs/ProcessInterfaceVoid.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

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

} // namespace

TEST(MainDialogSafety, AFileTheListDoesNotShowIsNotReplaced) {
    TempHome home;
    LScriptedUserInteraction ui;
    SetUserInteraction(&ui);
    const fs::path output = home.Path() / "out", elsewhere = home.Path() / "elsewhere";
    fs::create_directories(output);
    fs::create_directories(elsewhere);
    LUserSettingSetString("Settings", "AppOutputFolder", output.c_str());
    {
        QuietView view;
        MainDialog dialog{view, LMainDialogWindows()};
        // Put there after the list was loaded: the list does not show it.
        std::ofstream(output / "Track.wav") << "the user's own";
        const fs::path other = elsewhere / "Track.wav";
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(other) + " synth 1 sine 440");

        EXPECT_FALSE(dialog.AddFileToList(other.c_str(), true, false));
        std::ifstream kept(output / "Track.wav");
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), "the user's own");
    }
    SetUserInteraction(nullptr);
}
