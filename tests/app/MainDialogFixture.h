#pragma once

// The main window's logic without a window, over a private home whose output folder is "out":
// jobs run at once, questions are answered from a script.

#include "app/MainDialog.h"

#include "jobs/ProcessInterfaceVoid.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/Settings.h"
#include "support/TempHome.h"
#include "tags/AudioTagData.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

// Records what the logic asked of its window and runs every job at once; `beforeJob` sees the
// caption first, and `userStops` presses Stop in every job.
struct JobView : LMainDialogView {
    std::vector<std::string> jobs; // the captions of the progress windows opened
    std::function<void(const std::string&)> beforeJob;
    bool userStops = false;
    int renamed = -1;
    int closed = 0;
    void RowsChanged() override {}
    void StatusChanged(int) override {}
    void BeginRename(int row) override { renamed = row; }
    void HideWindow() override {}
    void CloseWindow() override { ++closed; }
    LProcessResult RunJob(const char* caption,
                          const std::function<LProcessResult(LProcessInterface&)>& job) override {
        jobs.push_back(caption);
        if (beforeJob) beforeJob(caption);
        struct Stopped : LProcessInterfaceVoid {
            bool IsToStop() override { return true; }
        } stopped;
        LProcessInterfaceVoid none;
        return job(userStops ? stopped : none);
    }
};

class MainDialogFixture : public ::testing::Test {
protected:
    MainDialogFixture() {
        SetUserInteraction(&ui);
        std::filesystem::create_directories(output);
        LUserSettingSetString("Settings", "AppOutputFolder", output.c_str());
    }
    ~MainDialogFixture() override { SetUserInteraction(nullptr); }

    // A short tone file made by sox (wave or MP3 by its extension).
    static std::filesystem::path Tone(const std::filesystem::path& path, double seconds = 1) {
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(path) + " synth " +
                   std::to_string(seconds) + " sine 440 2>/dev/null");
        return path;
    }

    // The texts of the message boxes and notices shown.
    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (const LInteractionCall& call : ui.Calls())
            if (call.kind == LInteractionKind::Message || call.kind == LInteractionKind::DockNotice)
                texts.push_back(call.text);
        return texts;
    }

    // The only window there is: a tag editor that sets the title.
    static LMainDialogWindows TagEditor() {
        LMainDialogWindows windows;
        windows.editTag = [](LAudioTagData& tags, const std::string&) {
            tags.SetTag("TITLE", "Edited", true);
            return true;
        };
        return windows;
    }

    TempHome home;
    std::filesystem::path output = home.Path() / "out";
    LScriptedUserInteraction ui;
    JobView view;
    MainDialog dialog{view, TagEditor()};
};

// A whole file's bytes.
inline std::string FileBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}
