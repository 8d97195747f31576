#include "platform/Paths.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string MakePath(const char* folder, const char* name, const char* ext) {
    char out[kPathBufferSize];
    _MakeFilePath(out, folder, name, ext);
    return out;
}

template <void (*Part)(char*, const char*)> std::string Take(const char* path) {
    char out[kPathBufferSize];
    Part(out, path);
    return out;
}

} // namespace

TEST(Paths, MakeFilePathAddsOneSeparator) {
    EXPECT_EQ(MakePath("/a/", "b", ".wav"), "/a/b.wav");
    EXPECT_EQ(MakePath("/a", "b", ".wav"), "/a/b.wav");
    EXPECT_EQ(MakePath("C:\\a\\", "b", ".wav"), "C:\\a\\b.wav");
    EXPECT_EQ(MakePath("", "b", ".wav"), "b.wav");
    char out[kPathBufferSize];
    _MakeFilePath(out, "/a", "b.mp3");
    EXPECT_STREQ(out, "/a/b.mp3");
}

TEST(Paths, MakeFilePathCutsToTheBuffer) {
    const std::string folder(300, 'f');
    const std::string path = MakePath(folder.c_str(), "name", ".wav");
    EXPECT_EQ(path.size(), kPathBufferSize - 1);
    EXPECT_EQ(path.substr(258), "/");
}

TEST(Paths, MakeFilePathIntoItsOwnFolderBuffer) {
    char path[kPathBufferSize] = "/music";
    _MakeFilePath(path, path, "side", ".wav");
    EXPECT_STREQ(path, "/music/side.wav");
}

TEST(Paths, TakesPathsApart) {
    EXPECT_EQ(Take<_GetFileFromPath>("/x/y.tar.gz"), "y.tar.gz");
    EXPECT_EQ(Take<_GetFileFromPath>("C:\\x\\y.wav"), "y.wav");
    EXPECT_EQ(Take<_GetFileFromPath>("y.wav"), "y.wav");

    EXPECT_EQ(Take<_GetFileNameFromPath>("/x/y.tar.gz"), "y.tar");
    EXPECT_EQ(Take<_GetFileNameFromPath>("/x/.hidden"), ".hidden");
    EXPECT_EQ(Take<_GetFileNameFromPath>("/x.y/z"), "z");

    EXPECT_EQ(Take<_GetFileExtensionFromPath>("/x/y.tar.gz"), ".gz");
    EXPECT_EQ(Take<_GetFileExtensionFromPath>("/x.y/z"), "");
    EXPECT_EQ(Take<_GetFileExtensionFromPath>("/x/.hidden"), "");
    EXPECT_EQ(Take<_GetFileExtensionFromPath>(".profile"), "");
    EXPECT_EQ(Take<_GetFileExtensionFromPath>("a\\b.WAV"), ".WAV");

    EXPECT_EQ(Take<_GetFolderFromPath>("/a/b/c.wav"), "/a/b");
    EXPECT_EQ(Take<_GetFolderFromPath>("/c.wav"), "/");
    EXPECT_EQ(Take<_GetFolderFromPath>("c.wav"), "");
}

TEST(Paths, PreprocessNameDropsWhatCannotStandInAFileName) {
    char out[kPathBufferSize];
    EXPECT_TRUE(PreprocessName("A/B: \"C\"? <d>|e*f.\\g\t\x01h", out));
    EXPECT_STREQ(out, "AB C defgh");
    EXPECT_TRUE(PreprocessName("Côte d'Ivoire", out));
    EXPECT_STREQ(out, "Côte d'Ivoire");
    EXPECT_FALSE(PreprocessName("../..", out));
    EXPECT_STREQ(out, "");

    const std::string longName(400, 'n');
    EXPECT_TRUE(PreprocessName(longName.c_str(), out));
    EXPECT_EQ(std::string(out).size(), kPathBufferSize - 1);
}
