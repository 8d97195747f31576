#include "E2ETestUtil.h"
#include "support/ToneSignals.h"

#include <fstream>

namespace {

constexpr int kRate = 44100;
constexpr double kToneAmplitude = 0.25 * 32767; // -12 dBFS
constexpr double kToneSeconds = 1.5;

std::string Play(const std::string& arguments, int* status, const std::string& prefix = "") {
    return Cli("play " + arguments, status, prefix);
}

using PlayE2E = PulseE2E;

// The tone played into the sound server's null sink is heard from its monitor whole: at its
// frequency and about its level, for as long as the file lasts.
TEST_F(PlayE2E, PlaysAToneFileIntoTheSoundServersSink) {
    const std::string tone = (home_.Path() / "tone.wav").string();
    ASSERT_TRUE(SoxSynth(tone, kRate, 2, std::to_string(kToneSeconds) + " sine 1000 vol 0.25"));

    // parec listens first, and hears some silence before the tone.
    MonitorRecording monitor(home_.Path() / "heard.raw", 4);
    monitor.Listen();
    int status = -1;
    const std::string output = Play(ShellQuote(tone) + " --device turntable", &status);
    ASSERT_EQ(status, 0) << output;
    const std::vector<int16_t> heard = monitor.Heard();

    // Ten-millisecond blocks that carry the tone: as many as the file has.
    constexpr size_t kBlock = kRate / 100;
    int loudBlocks = 0;
    size_t firstLoud = 0;
    for (size_t at = 0; at + kBlock <= heard.size() / 2; at += kBlock)
        if (RMS(Channel16(heard, 0, at, kBlock)) > kToneAmplitude / 2) {
            if (loudBlocks++ == 0) firstLoud = at;
        }
    EXPECT_NEAR(loudBlocks, kToneSeconds * 100, 3);

    // A second from 200 ms into the tone: 1 kHz at -12 dBFS on both channels.
    for (int channel = 0; channel < 2; ++channel) {
        const std::vector<double> middle = Channel16(heard, channel, firstLoud + kRate / 5, kRate);
        EXPECT_NEAR(DB(ToneAmplitude(middle, kRate, 1000) / kToneAmplitude), 0, 1.0) << channel;
        EXPECT_LT(ResidualDB(middle, kRate, 1000), -30) << channel;
        EXPECT_NEAR(RisingCrossings(middle), 1000, 2) << channel;
    }
}

// What cannot be played is refused with exit status 2 and says why. No sound server: only the
// virtual devices are there.
TEST(PlayE2EWithoutServer, RefusesWhatItCannotPlay) {
    TempHome home;
    const std::string text = (home.Path() / "notes.wav").string();
    std::ofstream(text) << "not audio at all\n";
    const std::string tone = (home.Path() / "tone.wav").string();
    ASSERT_TRUE(SoxSynth(tone, 8000, 1, "0.1 sine 500"));
    const struct {
        std::string arguments, said;
    } cases[] = {
        {ShellQuote(text), "Cannot play the selected file."},
        {ShellQuote(tone) + " --device 'Kitchen Radio'", "Kitchen Radio"},
        {"--device", "usage: vinora-cli play"},
    };
    for (const auto& c : cases) {
        int status = -1;
        const std::string output = Play(
            c.arguments, &status, Env("PULSE_SERVER", "unix:" + (home.Path() / "none").string()));
        EXPECT_EQ(status, 2) << c.arguments;
        EXPECT_NE(output.find(c.said), std::string::npos) << output;
    }
}

} // namespace
