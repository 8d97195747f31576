#include "platform/Paths.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string MakePath(const char* folder, const char* name, const char* ext) {
    char out[kPathBufferSize];
    _MakeFilePath(out, folder, name, ext);
    return out;
}

} // namespace

TEST(Paths, MakeFilePathJoinsWithOneSeparatorAndCutsToTheBuffer) {
    EXPECT_EQ(MakePath("/a/", "b", ".wav"), "/a/b.wav");
    EXPECT_EQ(MakePath("/a", "b", ".wav"), "/a/b.wav");
    EXPECT_EQ(MakePath("C:\\a\\", "b", ".wav"), "C:\\a\\b.wav");
    EXPECT_EQ(MakePath("", "b", ".wav"), "b.wav");
    const std::string cut = MakePath(std::string(300, 'f').c_str(), "name", ".wav");
    EXPECT_EQ(cut.size(), kPathBufferSize - 1);
    EXPECT_EQ(cut.substr(258), "/");

    char path[kPathBufferSize] = "/music";
    _MakeFilePath(path, path, "side", ".wav");
    EXPECT_STREQ(path, "/music/side.wav") << "the folder may be the output buffer";
}

TEST(Paths, PreprocessNameDropsWhatCannotStandInAFileName) {
    char out[kPathBufferSize];
    EXPECT_TRUE(PreprocessName("A/B: \"C\"? <d>|e*f.\\g\t\x01h", out));
    EXPECT_STREQ(out, "AB C defgh");
    EXPECT_TRUE(PreprocessName("Côte d'Ivoire", out));
    EXPECT_STREQ(out, "Côte d'Ivoire");
    EXPECT_FALSE(PreprocessName("../..", out));
    EXPECT_STREQ(out, "");
    EXPECT_TRUE(PreprocessName(std::string(400, 'n').c_str(), out));
    EXPECT_EQ(std::string(out).size(), kPathBufferSize - 1);
}

TEST(Paths, TakingPathsApart) {
    const struct {
        const char* path;
        const char* folder;
        const char* file;
        const char* name;
        const char* extension;
    } cases[] = {
        {"/a/b.tar.gz", "/a", "b.tar.gz", "b.tar", ".gz"},
        {"/b.wav", "", "b.wav", "b", ".wav"},
        {"b.wav", "", "b.wav", "b", ".wav"},
        {"/x/.hidden", "/x", ".hidden", ".hidden", ".hidden"},
        {".profile", "", ".profile", ".profile", ""},
        {"/x.y/z", "/x.y", "z", "z", ""},
        {"C:\\music\\side.WAV", "C:\\music", "side.WAV", "side", ".WAV"},
    };
    for (const auto& c : cases) {
        char out[kPathBufferSize];
        _GetFolderFromPath(out, c.path);
        EXPECT_STREQ(out, c.folder) << c.path;
        _GetFileFromPath(out, c.path);
        EXPECT_STREQ(out, c.file) << c.path;
        _GetFileNameFromPath(out, c.path);
        EXPECT_STREQ(out, c.name) << c.path;
        _GetFileExtensionFromPath(out, c.path);
        EXPECT_STREQ(out, c.extension) << c.path;
    }
}
