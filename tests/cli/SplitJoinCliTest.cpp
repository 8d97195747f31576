#include "CliTestUtil.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

TEST(SplitJoinCli, SplitsAtTimesInEitherFormAndJoinsTheParts) {
    TempHome home;
    const fs::path song = home.Path() / "song.wav";
    RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(song) + " synth 2 sine 440");
    int status = -1;
    // Out of order, as seconds and as a time text.
    EXPECT_EQ(Cli("split " + ShellQuote(song) + " --at 1.5 --at 0:00:00.5", &status, "2>/dev/null"),
              (home.Path() / "song_SPLIT_00.wav\n").string() +
                  (home.Path() / "song_SPLIT_01.wav\n").string() +
                  (home.Path() / "song_SPLIT_02.wav\n").string());
    EXPECT_EQ(status, 0);
    EXPECT_EQ(RunCommand("soxi -s " + ShellQuote(home.Path() / "song_SPLIT_01.wav")), "44100\n");

    const fs::path folder = home.Path() / "joined";
    fs::create_directories(folder);
    EXPECT_EQ(Cli("join " + ShellQuote(home.Path() / "song_SPLIT_00.wav") + " " +
                      ShellQuote(home.Path() / "song_SPLIT_02.wav") + " --folder " +
                      ShellQuote(folder),
                  &status, "2>/dev/null"),
              (folder / "song_SPLIT_00_song_SPLIT_02_JOINED.wav\n").string());
    EXPECT_EQ(status, 0);

    for (const char* bad : {"split", "split song.wav", "split missing.wav --at 1",
                            "split song.wav --at 1:xx", "join one.wav", "join a b c d"}) {
        Cli(bad, &status);
        EXPECT_EQ(status, 2) << bad;
    }
}

TEST(SplitJoinCli, AFullDiskOrTakenNamesLeaveEveryEarlierFileAsItWas) {
    TempHome home;
    const fs::path work = home.Path() / "work";
    fs::create_directories(work);
    const fs::path song = work / "song.wav";
    RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(song) + " synth 2 sine 440");
    const fs::path tune = work / "tune.mp3";
    RunCommand("lame --quiet " + ShellQuote(song) + " " + ShellQuote(tune));
    // Files with the names the split and the joins would take first.
    for (const char* name : {"song_SPLIT_00.wav", "song_SPLIT_01.wav", "song_tune_JOINED.wav",
                             "tune_song_JOINED.mp3", "tune_song_JOINED.wav"})
        std::ofstream(work / name) << "made by someone else";
    const auto before = FolderContents(work);
    const std::string folder = " --folder " + ShellQuote(work);

    // 200 KB: the first piece (88 KB) fits, the second (176 KB) does not; no join fits.
    for (const std::string& arguments :
         {"split " + ShellQuote(song) + " --at 0.5",
          "join " + ShellQuote(song) + " " + ShellQuote(tune) + folder,
          "join " + ShellQuote(tune) + " " + ShellQuote(song) + folder}) {
        int status = -1;
        const std::string said = CliOnFullDisk(arguments, 200 * 1024, &status);
        EXPECT_EQ(status, 2) << arguments << "\n" << said;
        EXPECT_EQ(FolderContents(work), before) << arguments;
    }

    // With room, the outputs take the next free names beside the earlier files.
    int status = -1;
    EXPECT_EQ(Cli("split " + ShellQuote(song) + " --at 0.5", &status, "2>/dev/null"),
              (work / "song (01)_SPLIT_00.wav\n").string() +
                  (work / "song (01)_SPLIT_01.wav\n").string());
    EXPECT_EQ(
        Cli("join " + ShellQuote(tune) + " " + ShellQuote(song) + folder, &status, "2>/dev/null"),
        (work / "tune_song_JOINED (01).mp3\n").string());
    auto after = FolderContents(work);
    EXPECT_EQ(after.size(), before.size() + 3);
    for (const auto& [name, bytes] : before)
        EXPECT_EQ(after[name], bytes) << name;
}
