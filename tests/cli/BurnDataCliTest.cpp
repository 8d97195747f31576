// vinora-cli burn-data's options and its failure without a drive, and images that come out
// the same byte for byte when SOURCE_DATE_EPOCH fixes their dates.
#include "CliTestUtil.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

TEST(BurnDataCli, RefusesBadOptionsAndSaysWhenThereIsNoDrive) {
    TempHome home;
    const fs::path tree = home.Path() / "tree";
    fs::create_directories(tree);
    std::ofstream(tree / "song.mp3") << "music";
    const struct {
        std::string arguments;
        std::string said;
    } cases[] = {
        {"burn-data", "usage: vinora-cli burn-data"},
        {"burn-data --speed fast " + ShellQuote(tree), "usage: vinora-cli burn-data"},
        {"burn-data --project 0 " + ShellQuote(tree), "usage: vinora-cli burn-data"},
        {"burn-data " + ShellQuote(tree) + " --from " + ShellQuote(tree / "song.mp3"), "usage: vinora-cli burn-data"},
        {"burn-data " + ShellQuote(home.Path() / "missing"), "missing"},
        {"burn-data --drive 7 " + ShellQuote(tree), "The Selected drive does not exist"},
    };
    for (const auto& c : cases) {
        int status = -1;
        const std::string said = RunCommand("env -u VINORA_VIRTUAL_BURNER " + std::string(VINORA_CLI) +
                                                " " + c.arguments + " 2>&1",
                                            &status);
        EXPECT_EQ(status, 2) << c.arguments;
        EXPECT_NE(said.find(c.said), std::string::npos) << c.arguments << ": " << said;
    }
    int status = -1;
    EXPECT_NE(Cli("help", &status).find("burn-data PATH..."), std::string::npos);
}

TEST(BurnDataCli, ImagesWithAFixedDateAreTheSameByteForByte) {
    TempHome home;
    const fs::path tree = home.Path() / "tree";
    fs::create_directories(tree / "folder");
    std::ofstream(tree / "folder" / "a.wav") << std::string(5000, 'a');
    std::ofstream(tree / "b.mp3") << "b";
    const std::string args = " --label Archive " + ShellQuote(tree);
    int status = -1;
    const std::string fixed = "SOURCE_DATE_EPOCH=1700000000 ";
    RunCommand(fixed + VINORA_CLI + " mkiso " + ShellQuote(home.Path() / "one.iso") + args, &status);
    ASSERT_EQ(status, 0);
    sleep(2);
    RunCommand(fixed + VINORA_CLI + " mkiso " + ShellQuote(home.Path() / "two.iso") + args, &status);
    ASSERT_EQ(status, 0);
    RunCommand("SOURCE_DATE_EPOCH=1800000000 " + std::string(VINORA_CLI) + " mkiso " +
                   ShellQuote(home.Path() / "three.iso") + args,
               &status);
    ASSERT_EQ(status, 0);
    const std::string one = FileText(home.Path() / "one.iso");
    EXPECT_EQ(one, FileText(home.Path() / "two.iso"));
    EXPECT_NE(one, FileText(home.Path() / "three.iso"));
    // The volume's creation date is the fixed time, in UTC: 2023-11-14 22:13:20.
    ASSERT_GT(one.size(), 16u * 2048 + 830);
    EXPECT_EQ(one.substr(16 * 2048 + 813, 16), "2023111422132000");
}

} // namespace
