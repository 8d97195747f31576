// vinora-cli burn-audio onto the Virtual Burner, read back by bchunk and cueprint: each track on
// the disc equals, sample for sample, what vinora-cli decode makes of its source at 44100 Hz
// stereo, cut to whole 588-frame blocks.
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <set>
#include <fstream>

namespace fs = std::filesystem;

namespace {

std::vector<int16_t> WaveSamples(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), {});
    // Both writers put the samples in a "data" chunk after a plain header.
    const std::string text(bytes.begin(), bytes.end());
    const size_t data = text.find("data");
    if (data == std::string::npos) return {};
    std::vector<int16_t> samples((bytes.size() - data - 8) / 2);
    std::memcpy(samples.data(), bytes.data() + data + 8, samples.size() * 2);
    return samples;
}

class AudioCDE2E : public ::testing::Test {
protected:
    // Runs vinora-cli in the home folder; `environment` goes before it ("NAME=value ").
    std::string Cli(const std::string& arguments, int* status, const std::string& environment = "") {
        return RunCommand("cd " + ShellQuote(home.Path()) + " && " + environment + VINORA_CLI +
                              " " + arguments + " 2>&1",
                          status);
    }
    std::string Burner(const std::string& setting) {
        return "VINORA_VIRTUAL_BURNER=" + ShellQuote(setting) + " ";
    }
    fs::path File(const std::string& name) const { return home.Path() / name; }

    TempHome home;
};

std::set<std::string> VarTmpFolders() {
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator("/var/tmp"))
        if (entry.path().filename().string().starts_with("vinora-cd-")) names.insert(entry.path());
    return names;
}

} // namespace

TEST_F(AudioCDE2E, ThreeFilesBecomeThreeTracksSampleForSample) {
    int status = -1;
    const std::string dir = ShellQuote(home.Path());
    RunCommand("cd " + dir + " && sox -n -r 48000 -c 1 -b 16 mono.wav synth 1.3 sine 440 vol 0.5"
               " && sox -n -r 44100 -c 2 -b 16 tone.wav synth 1.5 sine 500 vol 0.5"
               " && lame --quiet tone.wav song.mp3"
               " && sox -n -r 44100 -c 2 -b 16 odd.wav synth 2.01 sine 300 vol 0.5",
               &status);
    ASSERT_EQ(status, 0);
    const std::set<std::string> before = VarTmpFolders();
    const std::string disc = File("disc").string();
    const std::string output =
        Cli("burn-audio mono.wav song.mp3 odd.wav", &status, Burner("cd-r:" + disc));
    ASSERT_EQ(status, 0) << output;
    EXPECT_EQ(VarTmpFolders(), before);

    RunCommand("cd " + dir + " && bchunk -w disc.bin disc.cue t", &status);
    ASSERT_EQ(status, 0);
    RunCommand("cueprint " + ShellQuote(disc + ".cue"), &status);
    EXPECT_EQ(status, 0);
    const char* sources[] = {"mono.wav", "song.mp3", "odd.wav"};
    for (int i = 0; i < 3; ++i) {
        const std::string reference = "ref" + std::to_string(i) + ".wav";
        Cli(std::string("decode ") + sources[i] + " " + reference + " --rate 44100 --channels 2",
            &status);
        ASSERT_EQ(status, 0);
        const std::vector<int16_t> track = WaveSamples(File("t0" + std::to_string(i + 1) + ".wav"));
        std::vector<int16_t> expected = WaveSamples(File(reference));
        expected.resize(expected.size() / 2 / 588 * 588 * 2);
        ASSERT_EQ(track.size(), expected.size()) << sources[i];
        ASSERT_GT(track.size(), 0u);
        int worst = 0;
        for (size_t s = 0; s < track.size(); ++s) worst = std::max(worst, std::abs(track[s] - expected[s]));
        EXPECT_LE(worst, 1) << sources[i];
    }

    // The disc is burnt now: a second burn waits for another disc until it is stopped.
    status = -1;
    const std::string waiting = RunCommand(
        "cd " + dir + " && " + Burner("cd-r:" + disc) + "timeout --preserve-status -s INT 3 " + VINORA_CLI +
            " burn-audio odd.wav 2>&1; echo exit=$?",
        &status);
    EXPECT_NE(waiting.find("Please insert a media ..."), std::string::npos) << waiting;
    EXPECT_NE(waiting.find("exit=1\n"), std::string::npos) << waiting; // stopped
    EXPECT_EQ(fs::file_size(disc + ".bin") % 2352, 0u);
    EXPECT_EQ(VarTmpFolders(), before);
}

TEST_F(AudioCDE2E, RewritableDiscsAndErrors) {
    int status = -1;
    RunCommand("cd " + ShellQuote(home.Path()) + " && sox -n -r 44100 -c 2 -b 16 a.wav synth 0.2 sine 440",
               &status);
    ASSERT_EQ(status, 0);
    const std::string rw = Burner("cd-rw:" + File("rw").string() + ",used");
    std::string output = Cli("burn-audio a.wav", &status, rw);
    EXPECT_EQ(status, 2);
    EXPECT_NE(output.find("There appears to be no disk in the drive"), std::string::npos) << output;
    output = Cli("burn-audio a.wav --erase", &status, rw);
    EXPECT_EQ(status, 0) << output;
    EXPECT_NE(output.find("Erasing rewritable disk..."), std::string::npos) << output;
    EXPECT_TRUE(fs::exists(File("rw.cue")));

    output = Cli("burn-audio a.wav --drive 4", &status, rw);
    EXPECT_EQ(status, 2);
    EXPECT_NE(output.find("The Selected drive does not exist"), std::string::npos) << output;
    output = Cli("burn-audio missing.wav", &status, rw);
    EXPECT_EQ(status, 2);
    EXPECT_NE(output.find("Error converting audio files for burning"), std::string::npos) << output;

    output = Cli("erase --full", &status, rw);
    EXPECT_EQ(status, 0) << output;
    EXPECT_FALSE(fs::exists(File("rw.cue")));
    output = Cli("drives", &status, rw);
    EXPECT_NE(output.find("0: Vinora Virtual Burner"), std::string::npos) << output;
    EXPECT_NE(output.find("CD-RW, blank"), std::string::npos) << output;
    EXPECT_NE(output.find("1:19:57.96"), std::string::npos) << output;
    EXPECT_EQ(Cli("eject", &status, rw), "");
    EXPECT_NE(Cli("drives", &status, rw).find("No Disc in Drive"), std::string::npos);
}
