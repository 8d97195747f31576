// The commands that write a file the user names never replace what is there already, and a
// decode that cannot finish leaves nothing that looks like a finished file.
#include "CliTestUtil.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

class CliOutputSafety : public ::testing::Test {
protected:
    void SetUp() override {
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(In()) + " synth 3 sine 440");
        std::ofstream(Folder() / "mine.wav") << "the user's own";
        fs::create_symlink(Folder() / "gone.wav", Folder() / "dangling.wav");
    }

    fs::path Folder() const { return home_.Path(); }
    std::string In() const { return (home_.Path() / "in.wav").string(); }

    TempHome home_;
};

} // namespace

TEST_F(CliOutputSafety, AnExistingFileOrLinkIsNotReplaced) {
    const std::string capture = "VINORA_VIRTUAL_TURNTABLE=" + ShellQuote(In() + ",speed=0") + " " +
                                VINORA_CLI + " capture ";
    for (const char* name : {"mine.wav", "dangling.wav"}) {
        const std::string out = ShellQuote((Folder() / name).string());
        const auto before = FolderContents(Folder());
        int status = -1;
        const std::string decoded = Cli("decode " + ShellQuote(In()) + " " + out, &status);
        EXPECT_EQ(status, 2) << name;
        EXPECT_NE(decoded.find("exists already"), std::string::npos) << decoded;
        const std::string captured =
            RunCommand(capture + out + " --device 'Virtual Turntable' --seconds 1 2>&1", &status);
        EXPECT_EQ(status, 2) << name;
        EXPECT_NE(captured.find("exists already"), std::string::npos) << captured;
        EXPECT_EQ(FolderContents(Folder()), before) << name;
        EXPECT_TRUE(fs::is_symlink(Folder() / "dangling.wav"));
    }
}

TEST_F(CliOutputSafety, ADecodeThatRunsOutOfSpaceLeavesNoFile) {
    const auto before = FolderContents(Folder());
    int status = -1;
    const std::string printed = CliOnFullDisk("decode " + ShellQuote(In()) + " " +
                                                  ShellQuote((Folder() / "out.wav").string()),
                                              100000, &status);
    EXPECT_EQ(status, 2) << printed;
    EXPECT_EQ(FolderContents(Folder()), before);
}
