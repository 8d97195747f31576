#include "platform/Folders.h"
#include "platform/UserFolders.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <cstdlib>
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

TEST(Folders, IteratorMatchesThePatternWithoutRegardToCase) {
    TempHome home;
    const fs::path folder = home.Path() / "side";
    ASSERT_TRUE(CreateFolderTree(folder.c_str()));
    for (const char* name : {"b.wav", "A.WAV", "c.mp3", "notes.wav.txt"})
        std::ofstream(folder / name) << "x";
    fs::create_directory(folder / "sub.wav");

    EXPECT_EQ(List(folder, "*.wav"), (std::vector<std::string>{"A.WAV", "b.wav", "sub.wav/"}));
    EXPECT_EQ(List(folder, "*").size(), 5u);
    EXPECT_TRUE(List(home.Path() / "missing", "*").empty());
}

TEST(Folders, CreateFolderTreeAndIsFolder) {
    TempHome home;
    const fs::path deep = home.Path() / "a/b/c";
    EXPECT_FALSE(CreateFolder(deep.c_str()));
    EXPECT_TRUE(CreateFolderTree(deep.c_str()));
    EXPECT_TRUE(IsFolder(deep.c_str()));
    EXPECT_TRUE(CreateFolder(deep.c_str())); // already there
    const fs::path file = deep / "f";
    std::ofstream(file) << "x";
    EXPECT_FALSE(IsFolder(file.c_str()));
    EXPECT_FALSE(CreateFolder(file.c_str()));
}

TEST(UserFolders, DataFoldersFollowTheXdgDataHome) {
    TempHome home;
    char folder[kPathBufferSize];
    GetUserApplicationSupportFolder(folder);
    EXPECT_EQ(fs::path(folder), home.DataHome());

    EXPECT_TRUE(GetApplicationSubFolder(folder, "Logs"));
    EXPECT_EQ(fs::path(folder), home.DataHome() / "Brakwater Software/Vinora/Logs");
    EXPECT_TRUE(IsFolder(folder));

    // Without XDG_DATA_HOME the data folder is under ~/.local/share, created level by level.
    unsetenv("XDG_DATA_HOME");
    EXPECT_TRUE(GetApplicationDataFolder(folder));
    EXPECT_EQ(fs::path(folder), home.Path() / ".local/share/Brakwater Software/Vinora");
    setenv("XDG_DATA_HOME", "relative/path", 1);
    GetUserApplicationSupportFolder(folder);
    EXPECT_EQ(fs::path(folder), home.Path() / ".local/share");
}

TEST(UserFolders, MusicFolder) {
    TempHome home;
    char folder[kPathBufferSize];
    GetUserMusicFolder(folder);
    EXPECT_EQ(fs::path(folder), home.Path() / "Music");

    if (std::system("command -v xdg-user-dir >/dev/null") != 0)
        GTEST_SKIP() << "xdg-user-dir is not installed";
    std::ofstream(home.ConfigHome() / "user-dirs.dirs") << "XDG_MUSIC_DIR=\"$HOME/Tunes\"\n";
    GetUserMusicFolder(folder);
    EXPECT_EQ(fs::path(folder), home.Path() / "Tunes");
}
