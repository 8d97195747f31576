#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

namespace fs = std::filesystem;

class Settings : public ::testing::Test {
protected:
    TempHome home;
    const fs::path file = home.ConfigHome() / "Brakwater Software/Vinora.conf";

    static std::string Get(const char* section, const char* key, const char* defaultValue = "-") {
        char out[kSettingValueSize];
        _LUserSettingGetString(section, key, defaultValue, out);
        return out;
    }

    std::string FileText() const {
        std::ifstream in(file);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
};

} // namespace

TEST_F(Settings, SectionAndKeyAreJoinedWithOneSlash) {
    ASSERT_TRUE(LUserSettingSetString("Settings/", "X", "120"));
    EXPECT_EQ(Get("Settings", "X"), "120");
    ASSERT_TRUE(LUserSettingSetString("Settings", "X", "140"));
    EXPECT_EQ(Get("Settings/", "X"), "140");

    // The store is an INI file in the user's configuration folder, one group per section.
    EXPECT_EQ(GetUserSettingsFilePath(), file.string());
    EXPECT_NE(FileText().find("[Settings]\nX=140"), std::string::npos) << FileText();
}

TEST_F(Settings, StringsReadBackExactly) {
    const char* values[] = {"/home/me/Music/Vinora", "a, b", "Côte \"d'Ivoire\"", "=;#[x]", "@x"};
    for (const char* value : values) {
        ASSERT_TRUE(LUserSettingSetString("Output Format", "Folder name", value));
        EXPECT_EQ(Get("Output Format", "Folder name"), value);
    }

    char out[kSettingValueSize];
    EXPECT_FALSE(_LUserSettingGetString("Output Format", "Missing", "fallback", out));
    EXPECT_STREQ(out, "fallback");
    ASSERT_TRUE(LUserSettingSetString("Output Format", "Empty", ""));
    EXPECT_TRUE(_LUserSettingGetString("Output Format", "Empty", "fallback", out));
    EXPECT_STREQ(out, "");
    EXPECT_EQ(LUserSettingGetString("Output Format", "Empty", "fallback"), "fallback");
}

TEST_F(Settings, OverlongValueReadsAsEmpty) {
    const std::string fits(259, 'v'), overlong(260, 'v');
    ASSERT_TRUE(LUserSettingSetString("Settings", "Fits", fits.c_str()));
    ASSERT_TRUE(LUserSettingSetString("Settings", "Long", overlong.c_str()));
    EXPECT_EQ(Get("Settings", "Fits"), fits);
    char out[kSettingValueSize];
    EXPECT_TRUE(_LUserSettingGetString("Settings", "Long", "fallback", out));
    EXPECT_STREQ(out, "");
    ASSERT_TRUE(LUserSettingSetString("Settings", "Long", ("7" + overlong).c_str()));
    EXPECT_EQ(LUserSettingGet<int>("Settings", "Long", 3), 3);
}

TEST_F(Settings, TypedValues) {
    ASSERT_TRUE(LUserSettingSet<int>("Recording", "Volume", -25));
    EXPECT_EQ(Get("Recording", "Volume"), "-25");
    EXPECT_EQ(LUserSettingGet<int>("Recording", "Volume", 0), -25);
    ASSERT_TRUE(LUserSettingSet<bool>("Recording", "On", true));
    EXPECT_EQ(Get("Recording", "On"), "1");
    ASSERT_TRUE(LUserSettingSet<bool>("Recording", "On", false));
    EXPECT_EQ(Get("Recording", "On"), "0");

    const struct {
        const char* stored;
        int asInt;
        bool asBool;
    } reads[] = {{"12abc", 12, true}, {"abc", 0, true}, {"0", 0, false},
                 {"1", 1, true},      {"2", 2, true},   {"yes", 0, true},
                 {" 42", 42, true},   {"-7", -7, true}, {"99999999999", 2147483647, true}};
    for (const auto& read : reads) {
        ASSERT_TRUE(LUserSettingSetString("Settings", "Value", read.stored));
        EXPECT_EQ(LUserSettingGet<int>("Settings", "Value", 99), read.asInt) << read.stored;
        EXPECT_EQ(LUserSettingGet<bool>("Settings", "Value", false), read.asBool) << read.stored;
    }

    EXPECT_EQ(LUserSettingGet<int>("Settings", "Missing", 99), 99);
    EXPECT_TRUE(LUserSettingGet<bool>("Settings", "Missing", true));
    ASSERT_TRUE(LUserSettingSetString("Settings", "Empty", ""));
    EXPECT_EQ(LUserSettingGet<int>("Settings", "Empty", 99), 99);
    EXPECT_TRUE(LUserSettingGet<bool>("Settings", "Empty", true));
}

TEST_F(Settings, DeleteRestoresTheDefault) {
    ASSERT_TRUE(LUserSettingSet<int>("Wizard", "Step", 4));
    ASSERT_TRUE(LUserSettingSet<int>("Wizard", "Other", 5));
    ASSERT_TRUE(LUserSettingDeleteItem("Wizard/", "Step"));
    EXPECT_EQ(LUserSettingGet<int>("Wizard", "Step", 1), 1);
    EXPECT_EQ(LUserSettingGet<int>("Wizard", "Other", 1), 5);
    EXPECT_EQ(FileText().find("Step"), std::string::npos);
}

TEST_F(Settings, ReadsAFileChangedBehindItsBack) {
    ASSERT_TRUE(LUserSettingSetString("Settings", "Edited", "before"));
    EXPECT_EQ(Get("Settings", "Edited"), "before");
    std::ofstream(file) << "[Settings]\nEdited=after by hand\n";
    EXPECT_EQ(Get("Settings", "Edited"), "after by hand");
}

TEST_F(Settings, SharedSettingsComeFromTheSystemFolders) {
    const fs::path first = home.Path() / "xdg1", second = home.Path() / "xdg2";
    fs::create_directories(second / "Brakwater Software");
    std::ofstream(second / "Brakwater Software/Vinora.conf") << "[CDRecorder]\nBurner=virtual\n";
    const char* oldDirs = std::getenv("XDG_CONFIG_DIRS");
    const std::string saved = oldDirs ? oldDirs : "";
    setenv("XDG_CONFIG_DIRS", (first.string() + ":" + second.string()).c_str(), 1);

    char out[kSettingValueSize];
    EXPECT_TRUE(_LSharedSettingGetString("CDRecorder", "Burner", "none", out));
    EXPECT_STREQ(out, "virtual");
    EXPECT_FALSE(_LSharedSettingGetString("CDRecorder", "Label", "none", out));
    EXPECT_STREQ(out, "none");
    // The user's own settings are another scope.
    EXPECT_EQ(Get("CDRecorder", "Burner"), "-");
    if (oldDirs)
        setenv("XDG_CONFIG_DIRS", saved.c_str(), 1);
    else
        unsetenv("XDG_CONFIG_DIRS");
}
