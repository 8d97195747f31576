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

TEST_F(Settings, StoreIsAnIniFileThatKeepsValuesExactlyAndSeesHandEdits) {
    ASSERT_TRUE(LUserSettingSetString("Settings/", "X", "120"));
    ASSERT_TRUE(LUserSettingSetString("Settings", "X", "140"));
    EXPECT_EQ(Get("Settings/", "X"), "140") << "section and key are joined with one slash";
    EXPECT_EQ(GetUserSettingsFilePath(), file.string());
    EXPECT_NE(FileText().find("[Settings]\nX=140"), std::string::npos) << FileText();

    const char* values[] = {
        "/home/me/Music/Vinora", "a, b", "Côte \"d'Ivoire\"", "=;#[x]", "@x", ""};
    for (const char* value : values) {
        ASSERT_TRUE(LUserSettingSetString("Output Format", "Folder name", value));
        char out[kSettingValueSize];
        EXPECT_TRUE(_LUserSettingGetString("Output Format", "Folder name", "fallback", out));
        EXPECT_STREQ(out, value);
    }
    EXPECT_EQ(LUserSettingGetString("Output Format", "Folder name", "fallback"), "fallback")
        << "an empty value reads as the default";
    EXPECT_EQ(Get("Output Format", "Missing", "fallback"), "fallback");

    const std::string fits(259, 'v'), overlong(260, 'v');
    ASSERT_TRUE(LUserSettingSetString("Settings", "Fits", fits.c_str()));
    ASSERT_TRUE(LUserSettingSetString("Settings", "Long", overlong.c_str()));
    EXPECT_EQ(Get("Settings", "Fits"), fits);
    EXPECT_EQ(Get("Settings", "Long"), "") << "an overlong value is not cut into a wrong one";

    std::ofstream(file) << "[Settings]\nEdited=after by hand\n";
    EXPECT_EQ(Get("Settings", "Edited"), "after by hand");
    EXPECT_EQ(Get("Settings", "Fits"), "-");
}

TEST_F(Settings, TypedValuesAndDeletion) {
    ASSERT_TRUE(LUserSettingSet<int>("Recording", "Volume", -25));
    EXPECT_EQ(Get("Recording", "Volume"), "-25");
    ASSERT_TRUE(LUserSettingSet<bool>("Recording", "On", true));
    EXPECT_EQ(Get("Recording", "On"), "1");
    ASSERT_TRUE(LUserSettingSet<bool>("Recording", "On", false));
    EXPECT_EQ(Get("Recording", "On"), "0");

    const struct {
        const char* stored;
        int asInt;
        bool asBool;
    } reads[] = {{"12abc", 12, true}, {"abc", 0, true},   {"0", 0, false},
                 {"1", 1, true},      {"2", 2, true},     {"yes", 0, true},
                 {" 42", 42, true},   {"-7", -7, true},   {"99999999999", 2147483647, true},
                 {"", 99, true},      {nullptr, 99, true}};
    for (const auto& read : reads) {
        if (read.stored)
            ASSERT_TRUE(LUserSettingSetString("Settings", "Value", read.stored));
        else
            ASSERT_TRUE(LUserSettingDeleteItem("Settings/", "Value"));
        const char* shown = read.stored ? read.stored : "(deleted)";
        EXPECT_EQ(LUserSettingGet<int>("Settings", "Value", 99), read.asInt) << shown;
        EXPECT_EQ(LUserSettingGet<bool>("Settings", "Value", true), read.asBool) << shown;
    }
    EXPECT_EQ(LUserSettingGet<int>("Recording", "Volume", 0), -25) << "others stay";
    EXPECT_EQ(FileText().find("Value"), std::string::npos);
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
    EXPECT_EQ(Get("CDRecorder", "Burner"), "-") << "the user's own settings are another scope";
    if (oldDirs)
        setenv("XDG_CONFIG_DIRS", saved.c_str(), 1);
    else
        unsetenv("XDG_CONFIG_DIRS");
}
