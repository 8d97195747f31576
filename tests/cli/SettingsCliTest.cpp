#include "CliTestUtil.h"

#include "platform/Settings.h"

#include <gtest/gtest.h>

namespace {

std::string Settings(const std::string& arguments, int* status) {
    return Cli("settings " + arguments, status, "2>/dev/null");
}

} // namespace

TEST(SettingsCli, SeesWritesOfAnotherProcessAtOnce) {
    TempHome home;
    int status = -1;
    ASSERT_TRUE(LUserSettingSetString("OutputFormat", "OutputFolder", "/srv/Vinyl Rips"));
    EXPECT_EQ(Settings("get OutputFormat OutputFolder", &status), "/srv/Vinyl Rips\n");
    EXPECT_EQ(status, 0);

    Settings("set Settings/ SplitTime " + ShellQuote("4"), &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(LUserSettingGet<int>("Settings", "SplitTime", 0), 4);

    Settings("delete OutputFormat OutputFolder", &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(LUserSettingGetString("OutputFormat", "OutputFolder", "default"), "default");
    EXPECT_EQ(Settings("get OutputFormat OutputFolder " + ShellQuote("the default"), &status),
              "the default\n");
    EXPECT_EQ(status, 0);

    ASSERT_TRUE(LUserSettingSetString("Settings", "FileNameFormat", "Side, %autonumber%"));
    EXPECT_EQ(Settings("list", &status),
              "Settings/FileNameFormat=Side, %autonumber%\nSettings/SplitTime=4\n");
    LUserSettingSet<bool>("Wizard", "CalibrateVolume", false);
    EXPECT_EQ(Settings("list Wizard", &status), "Wizard/CalibrateVolume=0\n");
}

TEST(SettingsCli, BadUsageFailsWithoutWriting) {
    TempHome home;
    for (const char* arguments : {"", "get", "get Section", "set Section Key", "delete Section",
                                  "get A B C D", "rename A B", "list A B"}) {
        int status = -1;
        const std::string output = Settings(arguments, &status);
        EXPECT_EQ(status, 2) << arguments;
        EXPECT_EQ(output, "") << arguments;
    }
    int status = -1;
    Settings("set Settings Key " + std::string(300, 'v'), &status);
    EXPECT_EQ(status, 2);
    EXPECT_FALSE(std::filesystem::exists(GetUserSettingsFilePath()));

    const std::string error = Cli("settings get Section", &status);
    EXPECT_NE(error.find("usage: vinora-cli settings get SECTION KEY [DEFAULT]"), std::string::npos)
        << error;
}
