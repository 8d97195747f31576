#include "jobs/ScriptedUserInteraction.h"

#include <gtest/gtest.h>

TEST(ScriptedUserInteraction, AnswersFromTheScriptThenTheDefault) {
    LScriptedUserInteraction ui;
    ui.QueueAnswer(LMessageAnswer::No);
    ui.QueueAnswer(LMessageAnswer::Cancel);
    EXPECT_EQ(ui.ShowMessage("Confirm Remove", "Remove?", LMessageButtons::YesNo),
              LMessageAnswer::No);
    EXPECT_EQ(ui.ShowMessage("Quit", "Sure?", LMessageButtons::OkCancel), LMessageAnswer::Cancel);
    EXPECT_EQ(ui.ShowMessage("Again", "Sure?", LMessageButtons::YesNoCancel), LMessageAnswer::Yes);
    EXPECT_EQ(ui.ShowMessage("Note", "Done.", LMessageButtons::Ok), LMessageAnswer::Ok);
    ui.SetDefaultAnswer(LMessageAnswer::Cancel);
    EXPECT_EQ(ui.ShowMessage("Quit", "Sure?", LMessageButtons::OkCancel), LMessageAnswer::Cancel);

    const auto calls = ui.Calls();
    ASSERT_EQ(calls.size(), 5u);
    EXPECT_EQ(calls[0].kind, LInteractionKind::Message);
    EXPECT_EQ(calls[0].caption, "Confirm Remove");
    EXPECT_EQ(calls[0].text, "Remove?");
    EXPECT_EQ(calls[0].buttons, LMessageButtons::YesNo);
    EXPECT_EQ(calls[2].buttons, LMessageButtons::YesNoCancel);
}

TEST(ScriptedUserInteraction, ChoosersTakeScriptedPathsAndCancelWhenNoneAreLeft) {
    LScriptedUserInteraction ui;
    ui.QueuePaths({"/music/a.wav", "/music/b.mp3"});
    ui.QueuePaths({});
    ui.QueuePaths({"/music/c.wav", "/music/d.wav"});
    ui.QueuePaths({"/backup"});

    const LFileRequest request{"Locate Audio File(s)", "/music", "", {{"Audio Files", {"*.wav"}}}};
    EXPECT_EQ(ui.ChooseOpenFiles(request, true),
              (std::vector<std::string>{"/music/a.wav", "/music/b.mp3"}));
    EXPECT_TRUE(ui.ChooseOpenFiles(request, true).empty());
    EXPECT_EQ(ui.ChooseOpenFiles(request, false), std::vector<std::string>{"/music/c.wav"});
    EXPECT_EQ(ui.ChooseFolder("Please select the folder you want to copy songs to.", "/music"),
              "/backup");
    EXPECT_EQ(ui.ChooseSaveFile(request), "");

    const auto calls = ui.Calls();
    ASSERT_EQ(calls.size(), 5u);
    EXPECT_EQ(calls[0].kind, LInteractionKind::OpenFiles);
    EXPECT_EQ(calls[0].caption, "Locate Audio File(s)");
    EXPECT_EQ(calls[0].text, "/music");
    EXPECT_EQ(calls[3].kind, LInteractionKind::Folder);
    EXPECT_EQ(calls[3].caption, "Please select the folder you want to copy songs to.");
    EXPECT_EQ(calls[4].kind, LInteractionKind::SaveFile);
}

TEST(UserInteraction, ProcessWideAccessorReachesTheInstalledImplementation) {
    LScriptedUserInteraction ui;
    SetUserInteraction(&ui);
    UserInteraction().ShowError("ERROR: Unable to create folder.");
    UserInteraction().ShowTip("Recording Discarded", "too short");
    UserInteraction().ShowDockNotice("File splitting is finished");
    UserInteraction().RevealFolder("/music");
    SetUserInteraction(nullptr);
    EXPECT_EQ(UserInteraction().ShowMessage("Quit", "Sure?", LMessageButtons::YesNo),
              LMessageAnswer::No)
        << "without windows a question gets the cautious answer";

    const auto calls = ui.Calls();
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_EQ(calls[0].caption, "Error");
    EXPECT_EQ(calls[0].text, "ERROR: Unable to create folder.");
    EXPECT_EQ(calls[1].kind, LInteractionKind::Tip);
    EXPECT_EQ(calls[1].caption, "Recording Discarded");
    EXPECT_EQ(calls[2].kind, LInteractionKind::DockNotice);
    EXPECT_EQ(calls[2].text, "File splitting is finished");
    EXPECT_EQ(calls[3].kind, LInteractionKind::RevealFolder);
    EXPECT_EQ(calls[3].text, "/music");
}
