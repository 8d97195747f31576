// vinora-cli mkiso over files that exist, on a full disk, and with projects it does not build.
#include "CliTestUtil.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

TEST(MkisoCli, ReplacesOnlyAnImageAndLeavesEveryFileAsItWasOnAFullDisk) {
    TempHome home;
    const fs::path work = home.Path() / "work";
    const fs::path tree = home.Path() / "tree";
    fs::create_directories(work);
    fs::create_directories(tree);
    std::ofstream(tree / "side.wav", std::ios::binary) << std::string(1 << 20, 'x');
    std::ofstream(work / "take1.wav") << "a recording";
    std::ofstream(work / "old.iso") << "an earlier image";
    const auto before = FolderContents(work);

    int status = -1;
    std::string said =
        Cli("mkiso " + ShellQuote(work / "take1.wav") + " " + ShellQuote(tree), &status);
    EXPECT_EQ(status, 2);
    EXPECT_NE(said.find("is not a disc image"), std::string::npos) << said;
    EXPECT_EQ(FolderContents(work), before);

    // 512 KB: the image (over 1 MB) cannot be written.
    said = CliOnFullDisk("mkiso " + ShellQuote(work / "old.iso") + " " + ShellQuote(tree),
                         512 * 1024, &status);
    EXPECT_EQ(status, 2);
    EXPECT_NE(said.find("Not enough free harddrive space to do this action"), std::string::npos)
        << said;
    EXPECT_NE(said.find((work / "old.iso").string() + ": File too large"), std::string::npos)
        << said;
    EXPECT_EQ(FolderContents(work), before);
    said = CliOnFullDisk("mkiso " + ShellQuote(work / "new.iso") + " --from " +
                             ShellQuote(work / "old.iso"),
                         0, &status);
    EXPECT_EQ(status, 2) << said;
    EXPECT_EQ(FolderContents(work), before);

    // An earlier image is replaced.
    Cli("mkiso " + ShellQuote(work / "old.iso") + " " + ShellQuote(tree), &status);
    EXPECT_EQ(status, 0);
    EXPECT_GT(fs::file_size(work / "old.iso"), 1u << 20);
    EXPECT_EQ(FolderContents(work).size(), before.size());

    for (const char* project : {"1", "17"}) {
        said = Cli("mkiso " + ShellQuote(work / "p.iso") + " --project " + project + " " +
                       ShellQuote(tree),
                   &status);
        EXPECT_EQ(status, 2) << project;
        EXPECT_NE(said.find(std::string("project ") + project + " ("), std::string::npos) << said;
        EXPECT_FALSE(fs::exists(work / "p.iso"));
    }
}

} // namespace
