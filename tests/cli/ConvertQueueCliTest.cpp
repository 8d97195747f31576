#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

class ConvertCli : public ::testing::Test {
protected:
    std::string PathOf(const char* name) const { return (home_.Path() / name).string(); }

    std::string Cli(const std::string& arguments, int* status) {
        return RunCommand(std::string(VINORA_CLI) + " " + arguments + " 2>&1", status);
    }

    void MakeWave(const char* name) {
        int status = -1;
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(PathOf(name)) +
                       " synth 1 sine 440 vol 0.5",
                   &status);
        ASSERT_EQ(status, 0);
    }

    TempHome home_;
};

TEST_F(ConvertCli, ConvertsAndCopies) {
    MakeWave("in.wav");
    int status = -1;
    const std::string output =
        Cli("convert " + ShellQuote(PathOf("in.wav")) + " " + ShellQuote(PathOf("out/in.mp3")) +
                " --copy-to " + ShellQuote(PathOf("copies")),
            &status);
    ASSERT_EQ(status, 0) << output;
    EXPECT_TRUE(fs::exists(PathOf("out/in.mp3")));
    EXPECT_TRUE(fs::exists(PathOf("copies/in.mp3")));
    EXPECT_TRUE(fs::exists(PathOf("in.wav")));

    Cli("convert " + ShellQuote(PathOf("in.wav")) + " " + ShellQuote(PathOf("out/in.ogg")),
        &status);
    EXPECT_EQ(status, 2);
    Cli("convert " + ShellQuote(PathOf("in.wav")), &status);
    EXPECT_EQ(status, 2);
}

TEST_F(ConvertCli, QueueAddListRun) {
    MakeWave("a.wav");
    MakeWave("b.wav");
    int status = -1;
    for (const char* name : {"a", "b"}) {
        const std::string output = Cli("queue add " + ShellQuote(PathOf(name) + ".wav") + " " +
                                           ShellQuote(PathOf("out/") + name + ".wav"),
                                       &status);
        ASSERT_EQ(status, 0) << output;
    }
    EXPECT_EQ(Cli("queue list", &status), PathOf("a.wav") + " -> " + PathOf("out/a.wav") + "\n" +
                                              PathOf("b.wav") + " -> " + PathOf("out/b.wav") +
                                              "\n");
    const std::string output = Cli("queue run", &status);
    ASSERT_EQ(status, 0) << output;
    EXPECT_TRUE(fs::exists(PathOf("out/a.wav")));
    EXPECT_TRUE(fs::exists(PathOf("out/b.wav")));
    EXPECT_EQ(Cli("queue list", &status), "");
    Cli("queue frobnicate", &status);
    EXPECT_EQ(status, 2);
}

} // namespace
