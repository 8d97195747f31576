#include "support/PulseServer.h"
#include "support/TempHome.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int kRate = 44100;
// Four seconds of stereo 16-bit audio from the sink's monitor.
constexpr int kRecordedBytes = 4 * kRate * 2 * 2;
constexpr double kToneAmplitude = 0.25 * 32767; // -12 dBFS
constexpr double kToneSeconds = 1.5;

std::string Cli(const std::string& arguments) {
    return std::string(VINORA_CLI) + " play " + arguments + " 2>&1";
}

// One channel of interleaved 16-bit stereo, frames [first, first + count).
std::vector<double> Channel(const std::vector<int16_t>& samples, int channel, size_t first,
                            size_t count) {
    std::vector<double> values;
    for (size_t f = first; f < first + count && 2 * f + 1 < samples.size(); ++f)
        values.push_back(samples[2 * f + channel]);
    return values;
}

// The tone played into the sound server's null sink is heard from its monitor whole: at its
// frequency and about its level, for as long as the file lasts.
TEST(PlayE2E, PlaysAToneFileIntoTheSoundServersSink) {
    if (!PulseServer::IsInstalled()) GTEST_SKIP() << "pulseaudio is not installed";
    TempHome home;
    PulseServer server;
    ASSERT_TRUE(server.IsRunning()) << server.Error();
    const std::string tone = (home.Path() / "tone.wav").string();
    const std::string raw = (home.Path() / "heard.raw").string();
    int status = -1;
    RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(tone) + " synth " +
                   std::to_string(kToneSeconds) + " sine 1000 vol 0.25",
               &status);
    ASSERT_EQ(status, 0);

    // parec listens first, and has heard some silence before the tone; the player's exit status is
    // the script's.
    const std::string script =
        "parec --device=turntable.monitor --format=s16le --rate=44100 --channels=2 --raw "
        "2>/dev/null | "
        "head -c " +
        std::to_string(kRecordedBytes) + " > " + ShellQuote(raw) +
        " & recorder=$!; "
        "for i in $(seq 500); do [ -n \"$(pactl list short source-outputs)\" ] && break; "
        "sleep 0.01; done; sleep 0.5; " +
        Cli(ShellQuote(tone) + " --device turntable") + "; status=$?; wait $recorder; exit $status";
    const std::string output = RunCommand(script, &status);
    ASSERT_EQ(status, 0) << output;

    std::ifstream file(raw, std::ios::binary);
    std::vector<int16_t> heard(kRecordedBytes / 2);
    file.read(reinterpret_cast<char*>(heard.data()), kRecordedBytes);
    ASSERT_EQ(file.gcount(), kRecordedBytes);

    // Ten-millisecond blocks that carry the tone: as many as the file has.
    constexpr size_t kBlock = kRate / 100;
    int loudBlocks = 0;
    size_t firstLoud = 0;
    for (size_t at = 0; at + kBlock <= heard.size() / 2; at += kBlock)
        if (RMS(Channel(heard, 0, at, kBlock)) > kToneAmplitude / 2) {
            if (loudBlocks++ == 0) firstLoud = at;
        }
    EXPECT_NEAR(loudBlocks, kToneSeconds * 100, 3);

    // A second from 200 ms into the tone: 1 kHz at -12 dBFS on both channels.
    for (int channel = 0; channel < 2; ++channel) {
        const std::vector<double> middle = Channel(heard, channel, firstLoud + kRate / 5, kRate);
        EXPECT_NEAR(DB(ToneAmplitude(middle, kRate, 1000) / kToneAmplitude), 0, 1.0) << channel;
        EXPECT_LT(ResidualDB(middle, kRate, 1000), -30) << channel;
        EXPECT_NEAR(RisingCrossings(middle), 1000, 2) << channel;
    }
}

// What cannot be played is refused with exit status 2 and says why.
TEST(PlayE2E, RefusesWhatItCannotPlay) {
    TempHome home;
    const std::string text = (home.Path() / "notes.wav").string();
    std::ofstream(text) << "not audio at all\n";
    // No sound server: only the virtual devices are there.
    const std::string noServer =
        "PULSE_SERVER=" + ShellQuote("unix:" + (home.Path() / "none").string()) + " ";

    int status = -1;
    std::string output = RunCommand(noServer + Cli(ShellQuote(text)), &status);
    EXPECT_EQ(status, 2);
    EXPECT_NE(output.find("Cannot play the selected file."), std::string::npos) << output;

    const std::string tone = (home.Path() / "tone.wav").string();
    RunCommand("sox -n -r 8000 -c 1 -b 16 " + ShellQuote(tone) + " synth 0.1 sine 500", &status);
    ASSERT_EQ(status, 0);
    output = RunCommand(noServer + Cli(ShellQuote(tone) + " --device 'Kitchen Radio'"), &status);
    EXPECT_EQ(status, 2);
    EXPECT_NE(output.find("Kitchen Radio"), std::string::npos) << output;

    output = RunCommand(noServer + Cli("--device"), &status);
    EXPECT_EQ(status, 2);
    EXPECT_NE(output.find("usage: vinora-cli play"), std::string::npos) << output;
}

} // namespace
