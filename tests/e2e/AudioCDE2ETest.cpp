// vinora-cli burn-audio onto the Virtual Burner, read back by bchunk and cueprint: each track on
// the disc equals, sample for sample, what vinora-cli decode makes of its source at 44100 Hz
// stereo, cut to whole 588-frame blocks.
#include "E2ETestUtil.h"

#include <cstring>

namespace fs = std::filesystem;

namespace {

std::vector<int16_t> WaveSamples(const fs::path& path) {
    // Both writers put the samples in a "data" chunk after a plain header.
    const std::string bytes = FileText(path);
    const size_t data = bytes.find("data");
    if (data == std::string::npos) return {};
    std::vector<int16_t> samples((bytes.size() - data - 8) / 2);
    std::memcpy(samples.data(), bytes.data() + data + 8, samples.size() * 2);
    return samples;
}

std::set<std::string> VarTmpFolders() {
    std::set<std::string> names;
    for (const std::string& name : Names("/var/tmp"))
        if (name.starts_with("vinora-cd-")) names.insert(name);
    return names;
}

class AudioCDE2E : public ::testing::Test {
protected:
    // Runs vinora-cli in the home folder with the Virtual Burner set to `burner`.
    std::string Burn(const std::string& arguments, int* status, const std::string& burner) {
        return Cli(arguments, status, InHome() + Env("VINORA_VIRTUAL_BURNER", burner));
    }
    std::string InHome() const { return "cd " + ShellQuote(home.Path()) + " && "; }
    fs::path File(const std::string& name) const { return home.Path() / name; }

    TempHome home;
};

TEST_F(AudioCDE2E, ThreeFilesBecomeThreeTracksSampleForSample) {
    ASSERT_TRUE(SoxSynth(File("mono.wav"), 48000, 1, "1.3 sine 440 vol 0.5"));
    ASSERT_TRUE(SoxSynth(File("tone.wav"), 44100, 2, "1.5 sine 500 vol 0.5"));
    ASSERT_TRUE(SoxSynth(File("odd.wav"), 44100, 2, "2.01 sine 300 vol 0.5"));
    int status = -1;
    RunCommand(InHome() + "lame --quiet tone.wav song.mp3", &status);
    ASSERT_EQ(status, 0);
    const std::set<std::string> before = VarTmpFolders();
    const std::string disc = "cd-r:" + File("disc").string();
    const std::string output = Burn("burn-audio mono.wav song.mp3 odd.wav", &status, disc);
    ASSERT_EQ(status, 0) << output;
    EXPECT_EQ(VarTmpFolders(), before);

    RunCommand(InHome() + "bchunk -w disc.bin disc.cue t", &status);
    ASSERT_EQ(status, 0);
    RunCommand("cueprint " + ShellQuote(File("disc.cue")), &status);
    EXPECT_EQ(status, 0);
    const char* sources[] = {"mono.wav", "song.mp3", "odd.wav"};
    for (int i = 0; i < 3; ++i) {
        const std::string reference = "ref" + std::to_string(i) + ".wav";
        Cli(std::string("decode ") + sources[i] + " " + reference + " --rate 44100 --channels 2",
            &status, InHome());
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
    const std::string waiting =
        Cli("burn-audio odd.wav", &status,
            InHome() + Env("VINORA_VIRTUAL_BURNER", disc) + "timeout --preserve-status -s INT 3 ",
            "2>&1; echo exit=$?");
    EXPECT_NE(waiting.find("Please insert a media ..."), std::string::npos) << waiting;
    EXPECT_NE(waiting.find("exit=1\n"), std::string::npos) << waiting; // stopped
    EXPECT_EQ(fs::file_size(File("disc.bin")) % 2352, 0u);
    EXPECT_EQ(VarTmpFolders(), before);
}

// One used CD-RW through the commands in turn: what each says and whether the disc holds a
// burn after it.
TEST_F(AudioCDE2E, RewritableDiscsAndErrors) {
    ASSERT_TRUE(SoxSynth(File("a.wav"), 44100, 2, "0.2 sine 440"));
    const std::string rw = "cd-rw:" + File("rw").string() + ",used";
    const struct {
        const char* arguments;
        int status;
        std::vector<std::string> said;
        bool burnt;
    } steps[] = {
        {"burn-audio a.wav", 2, {"There appears to be no disk in the drive"}, false},
        {"burn-audio a.wav --erase", 0, {"Erasing rewritable disk..."}, true},
        {"burn-audio a.wav --drive 4", 2, {"The Selected drive does not exist"}, true},
        {"burn-audio missing.wav", 2, {"Error converting audio files for burning"}, true},
        {"erase --full", 0, {"Erasing rewritable disk..."}, false},
        {"drives", 0, {"0: Vinora Virtual Burner", "CD-RW, blank", "1:19:57.96"}, false},
        {"eject", 0, {}, false},
        {"drives", 0, {"No Disc in Drive"}, false},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.arguments);
        int status = -1;
        const std::string output = Burn(step.arguments, &status, rw);
        EXPECT_EQ(status, step.status) << output;
        for (const std::string& text : step.said)
            EXPECT_NE(output.find(text), std::string::npos) << output;
        if (step.said.empty()) {
            EXPECT_EQ(output, "");
        }
        EXPECT_EQ(fs::exists(File("rw.cue")), step.burnt);
    }
}

} // namespace
