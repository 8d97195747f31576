#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

std::string Cli(const std::string& arguments, int* status) {
    return RunCommand(std::string(VINORA_CLI) + " " + arguments + " 2>/dev/null", status);
}

} // namespace

TEST(SplitJoinCli, SplitsAtTimesInEitherFormAndJoinsTheParts) {
    TempHome home;
    const fs::path song = home.Path() / "song.wav";
    RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(song) + " synth 2 sine 440");
    int status = -1;
    // Out of order, as seconds and as a time text.
    EXPECT_EQ(Cli("split " + ShellQuote(song) + " --at 1.5 --at 0:00:00.5", &status),
              (home.Path() / "song_SPLIT_00.wav\n").string() +
                  (home.Path() / "song_SPLIT_01.wav\n").string() +
                  (home.Path() / "song_SPLIT_02.wav\n").string());
    EXPECT_EQ(status, 0);
    EXPECT_EQ(RunCommand("soxi -s " + ShellQuote(home.Path() / "song_SPLIT_01.wav")), "44100\n");

    const fs::path folder = home.Path() / "joined";
    fs::create_directories(folder);
    EXPECT_EQ(Cli("join " + ShellQuote(home.Path() / "song_SPLIT_00.wav") + " " +
                      ShellQuote(home.Path() / "song_SPLIT_02.wav") + " --folder " + ShellQuote(folder),
                  &status),
              (folder / "song_SPLIT_00_song_SPLIT_02_JOINED.wav\n").string());
    EXPECT_EQ(status, 0);

    for (const char* bad : {"split", "split song.wav", "split missing.wav --at 1",
                            "split song.wav --at 1:xx", "join one.wav", "join a b c d"}) {
        Cli(std::string(bad), &status);
        EXPECT_EQ(status, 2) << bad;
    }
}
