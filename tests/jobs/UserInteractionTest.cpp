#include "jobs/ScriptedUserInteraction.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>

TEST(UserInteraction, ReachesTheInstalledImplementationAndOtherwiseAnswersCautiously) {
    LScriptedUserInteraction ui;
    SetUserInteraction(&ui);
    UserInteraction().ShowError("ERROR: Unable to create folder.");
    SetUserInteraction(nullptr);
    const auto calls = ui.Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].caption, "Error");
    EXPECT_EQ(calls[0].text, "ERROR: Unable to create folder.");
    EXPECT_EQ(calls[0].buttons, LMessageButtons::Ok);

    // Without windows no question may be taken as consent.
    const std::pair<LMessageButtons, LMessageAnswer> cases[] = {
        {LMessageButtons::Ok, LMessageAnswer::Ok},
        {LMessageButtons::OkCancel, LMessageAnswer::Cancel},
        {LMessageButtons::YesNo, LMessageAnswer::No},
        {LMessageButtons::YesNoCancel, LMessageAnswer::Cancel},
    };
    for (const auto& [buttons, answer] : cases)
        EXPECT_EQ(UserInteraction().ShowMessage("Quit", "Sure?", buttons), answer);
    EXPECT_TRUE(UserInteraction().ChooseOpenFiles({}, true).empty());
    EXPECT_EQ(UserInteraction().ChooseFolder("Copy to", "/music"), "");
}

TEST(UserInteraction, AQuestionFromAnotherThreadIsAnsweredOnce) {
    LScriptedUserInteraction ui;
    ui.QueueAnswer(LMessageAnswer::No);
    SetUserInteraction(&ui);
    LMessageAnswer answer = LMessageAnswer::Ok;
    std::thread worker([&] {
        answer = UserInteraction().ShowMessage("Vinora Records Vinyl to CD Converter",
                                               "Keep going?", LMessageButtons::YesNo);
    });
    worker.join();
    SetUserInteraction(nullptr);
    EXPECT_EQ(answer, LMessageAnswer::No);
    ASSERT_EQ(ui.Calls().size(), 1u);
    EXPECT_EQ(ui.Calls()[0].text, "Keep going?");
}
