#include "jobs/ScriptedUserInteraction.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>

TEST(UserInteraction, ReachesTheInstalledImplementationFromAnyThreadAndOtherwiseAnswersCautiously) {
    LScriptedUserInteraction ui;
    SetUserInteraction(&ui);
    UserInteraction().ShowError("ERROR: Unable to create folder.");
    ui.QueueAnswer(LMessageAnswer::No);
    LMessageAnswer answer = LMessageAnswer::Ok;
    std::thread([&] {
        answer = UserInteraction().ShowMessage("Vinora Records Vinyl to CD Converter",
                                               "Keep going?", LMessageButtons::YesNo);
    }).join();
    SetUserInteraction(nullptr);
    EXPECT_EQ(answer, LMessageAnswer::No);
    const auto calls = ui.Calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].caption, "Error");
    EXPECT_EQ(calls[0].text, "ERROR: Unable to create folder.");
    EXPECT_EQ(calls[0].buttons, LMessageButtons::Ok);
    EXPECT_EQ(calls[1].text, "Keep going?");

    // Without windows no question may be taken as consent.
    const std::pair<LMessageButtons, LMessageAnswer> cases[] = {
        {LMessageButtons::Ok, LMessageAnswer::Ok},
        {LMessageButtons::OkCancel, LMessageAnswer::Cancel},
        {LMessageButtons::YesNo, LMessageAnswer::No},
        {LMessageButtons::YesNoCancel, LMessageAnswer::Cancel},
    };
    for (const auto& [buttons, cautious] : cases)
        EXPECT_EQ(UserInteraction().ShowMessage("Quit", "Sure?", buttons), cautious);
    EXPECT_TRUE(UserInteraction().ChooseOpenFiles({}, true).empty());
    EXPECT_EQ(UserInteraction().ChooseFolder("Copy to", "/music"), "");
}
