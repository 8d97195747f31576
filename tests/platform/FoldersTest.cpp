#include "platform/Folders.h"
#include "platform/UserFolders.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/stat.h>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

std::vector<std::string> List(const fs::path& folder, const char* pattern) {
    std::vector<std::string> names;
    LFolderIterator it(folder.c_str(), pattern);
    while (it.Next()) {
        EXPECT_EQ(fs::path(it.GetPath()), folder / it.GetName());
        names.push_back(it.GetName() + std::string(it.IsFolder() ? "/" : ""));
    }
    return names;
}

} // namespace

TEST(Folders, TreeIsCreatedAndListedByPatternWithoutRegardToCase) {
    TempHome home;
    const fs::path folder = home.Path() / "a/b/side";
    EXPECT_FALSE(CreateFolder(folder.c_str())) << "one level only";
    ASSERT_TRUE(CreateFolderTree(folder.c_str()));
    EXPECT_TRUE(CreateFolder(folder.c_str())) << "already there";
    for (const char* name : {"b.wav", "A.WAV", "c.mp3", "notes.wav.txt"})
        std::ofstream(folder / name) << "x";
    fs::create_directory(folder / "sub.wav");
    EXPECT_FALSE(IsFolder((folder / "b.wav").c_str()));
    EXPECT_FALSE(CreateFolder((folder / "b.wav").c_str()));

    EXPECT_EQ(List(folder, "*.wav"), (std::vector<std::string>{"A.WAV", "b.wav", "sub.wav/"}));
    EXPECT_EQ(List(folder, "*").size(), 5u);
    EXPECT_TRUE(List(home.Path() / "missing", "*").empty());
}

TEST(UserFolders, DataAndMusicFoldersFollowTheXdgSettings) {
    TempHome home;
    char folder[kPathBufferSize];
    EXPECT_TRUE(GetApplicationSubFolder(folder, "Logs"));
    EXPECT_EQ(fs::path(folder), home.DataHome() / "Brakwater Software/Vinora/Logs");
    EXPECT_TRUE(IsFolder(folder));

    // Without a usable XDG_DATA_HOME the data folder is under ~/.local/share.
    unsetenv("XDG_DATA_HOME");
    EXPECT_TRUE(GetApplicationDataFolder(folder));
    EXPECT_EQ(fs::path(folder), home.Path() / ".local/share/Brakwater Software/Vinora");
    setenv("XDG_DATA_HOME", "relative/path", 1);
    GetUserApplicationSupportFolder(folder);
    EXPECT_EQ(fs::path(folder), home.Path() / ".local/share");
}

TEST(Folders, TreesGetTheProgramsModeWhateverTheMask) {
    TempHome home;
    const mode_t mask = umask(0);
    const std::string deep = (home.Path() / "a/b/c").string();
    EXPECT_TRUE(CreateFolderTree(deep.c_str()));
    EXPECT_TRUE(CreateFolderTree((deep + "/").c_str()));
    umask(mask);
    for (const char* level : {"a", "a/b", "a/b/c"}) {
        struct stat info {};
        stat((home.Path() / level).c_str(), &info);
        EXPECT_EQ(info.st_mode & 07777, 0755u) << level;
    }
}
