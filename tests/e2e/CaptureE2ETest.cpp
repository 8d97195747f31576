#include "codecs/WaveFile.h"
#include "devices/DemoSide.h"

#include "support/PulseServer.h"
#include "support/TempHome.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

class CaptureE2E : public testing::Test {
protected:
    std::string PathOf(const char* name) const { return (home_.Path() / name).string(); }

    std::string Capture(const std::string& arguments) const {
        return std::string(VINORA_CLI) + " capture " + arguments;
    }

    // The number that a sox report gives after `label`.
    static double SoxValue(const std::string& report, const std::string& label) {
        const size_t at = report.find(label);
        if (at == std::string::npos) {
            ADD_FAILURE() << "no \"" << label << "\" in:\n" << report;
            return 0;
        }
        return std::strtod(report.c_str() + at + label.size(), nullptr);
    }

    static std::vector<int> ReadWave(const std::string& path) {
        LSoundSource source = LWaveFile::OpenSource(path.c_str());
        EXPECT_EQ(source->GetError(), sndErrNone) << path;
        return ReadFrames(source, source->GetEndSample());
    }

    TempHome home_;
};

} // namespace

// A 1 kHz tone at -12 dBFS played into the sound server's null sink is recorded from its monitor:
// the file is 44.1 kHz stereo 16-bit, starts when the tone arrives (threshold), holds three
// seconds of it at its frequency and level, and the tone runs on without a gap or jump (one sine
// fits all of it).
TEST_F(CaptureE2E, RecordsAToneFromTheSinkMonitor) {
    if (!PulseServer::IsInstalled()) GTEST_SKIP() << "pulseaudio is not installed";
    PulseServer server;
    ASSERT_TRUE(server.IsRunning()) << server.Error();
    const std::string tone = PathOf("tone.wav");
    const std::string out = PathOf("out.wav");
    int status = -1;
    RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(tone) + " synth 30 sine 1000 vol 0.25",
               &status);
    ASSERT_EQ(status, 0);

    const std::string script =
        "paplay --device=turntable " + ShellQuote(tone) + " & player=$!; " +
        Capture(ShellQuote(out) + " --device turntable.monitor --seconds 3 --threshold -40") +
        " 2>&1; status=$?; kill $player; wait $player; exit $status";
    const std::string output = RunCommand(script, &status);
    ASSERT_EQ(status, 0) << output;

    EXPECT_EQ(RunCommand("soxi -r " + ShellQuote(out)), "44100\n");
    EXPECT_EQ(RunCommand("soxi -c " + ShellQuote(out)), "2\n");
    EXPECT_EQ(RunCommand("soxi -b " + ShellQuote(out)), "16\n");
    const std::vector<int> samples = ReadWave(out);
    const int frames = static_cast<int>(samples.size() / 2);
    EXPECT_GE(frames, 3 * 44100);
    EXPECT_LT(frames, 3 * 44100 + 4410);

    // Past the start of the tone (the first buffer may hold some silence before it).
    const std::string trimmed = ShellQuote(out) + " -n trim 0.2";
    // sox estimates the frequency of one channel only.
    const std::string stat = RunCommand("sox " + trimmed + " remix 1 stat 2>&1");
    EXPECT_NEAR(SoxValue(stat, "Rough   frequency:"), 1000, 10);
    const std::string stats = RunCommand("sox " + trimmed + " stats 2>&1");
    EXPECT_NEAR(SoxValue(stats, "RMS lev dB"), -12.04 - 3.01, 1.0);
    for (int channel = 0; channel < 2; ++channel) {
        const std::vector<double> values =
            ChannelValues(samples, 2, channel, 8820, frames - 8820 - 441);
        EXPECT_LT(ResidualDB(values, 44100, 1000), -40) << "channel " << channel;
    }
}

// The Virtual Turntable's demo side, read as fast as the recorder takes it, is recorded whole
// and bit for bit: it ends with the side (rounded up to a 100 ms buffer) and exits 0.
TEST_F(CaptureE2E, RecordsTheWholeDemoSideOfTheVirtualTurntable) {
    const std::string out = PathOf("side.wav");
    int status = -1;
    const std::string output =
        RunCommand("VINORA_VIRTUAL_TURNTABLE=,speed=0 " +
                       Capture(ShellQuote(out) + " --device 'Virtual Turntable'") + " 2>&1",
                   &status);
    ASSERT_EQ(status, 0) << output;

    LSoundSource side(new LDemoSide);
    const int length = side->GetEndSample();
    const std::vector<int> recorded = ReadWave(out);
    const int frames = static_cast<int>(recorded.size() / 2);
    ASSERT_GE(frames, length);
    ASSERT_LT(frames, length + 4410);
    std::vector<int> expected = ReadFrames(side, frames);
    for (int& value : expected)
        value = std::clamp((value + 8) >> 4, -32768, 32767) * 16;
    EXPECT_TRUE(recorded == expected);
}

// SIGTERM while recording stops it with exit code 1 and leaves a finished, readable file.
TEST_F(CaptureE2E, TerminatedCaptureKeepsAValidFile) {
    const std::string out = PathOf("stopped.wav");
    const std::string script = "VINORA_VIRTUAL_TURNTABLE=,speed=1 " +
                               Capture(ShellQuote(out) + " --device virtual-turntable") +
                               " 2>/dev/null & capture=$!; "
                               "while kill -0 $capture 2>/dev/null && "
                               "[ $(stat -c %s " +
                               ShellQuote(out) +
                               " 2>/dev/null || echo 0) -lt 100000 ]; do sleep 0.05; done; "
                               "kill -TERM $capture; wait $capture";
    int status = -1;
    RunCommand(script, &status);
    EXPECT_EQ(status, 1);

    const std::string stats = RunCommand("sox " + ShellQuote(out) + " -n stats 2>&1", &status);
    ASSERT_EQ(status, 0) << stats;
    const double seconds = std::stod(RunCommand("soxi -D " + ShellQuote(out)));
    EXPECT_GT(seconds, 0.5);
    // The header holds the true size: as many frames as the data that follows it.
    const auto bytes = std::filesystem::file_size(out);
    EXPECT_EQ(std::stoul(RunCommand("soxi -s " + ShellQuote(out))) * 4 + 46, bytes);
}
