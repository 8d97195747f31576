#include "E2ETestUtil.h"

#include "codecs/WaveFile.h"
#include "support/ToneSignals.h"

namespace {

std::string Capture(const std::string& out, const std::string& arguments) {
    return std::string(VINORA_CLI) + " capture " + ShellQuote(out) + " " + arguments;
}

std::vector<int> ReadWave(const std::string& path) {
    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    EXPECT_EQ(source->GetError(), sndErrNone) << path;
    return ReadFrames(source, source->GetEndSample());
}

using CaptureE2E = PulseE2E;

// A 1 kHz tone at -12 dBFS played into the sound server's null sink is recorded from its monitor:
// the file is 44.1 kHz stereo 16-bit, starts when the tone arrives (threshold), holds three
// seconds of it at its frequency and level, and the tone runs on without a gap or jump (one sine
// fits all of it).
TEST_F(CaptureE2E, RecordsAToneFromTheSinkMonitor) {
    const std::string tone = (home_.Path() / "tone.wav").string();
    const std::string out = (home_.Path() / "out.wav").string();
    ASSERT_TRUE(SoxSynth(tone, 44100, 2, "30 sine 1000 vol 0.25"));

    int status = -1;
    const std::string output =
        RunCommand("paplay --device=turntable " + ShellQuote(tone) + " & player=$!; " +
                       Capture(out, "--device turntable.monitor --seconds 3 --threshold -40") +
                       " 2>&1; status=$?; kill $player; wait $player; exit $status",
                   &status);
    ASSERT_EQ(status, 0) << output;

    const std::string info = RunCommand("soxi " + ShellQuote(out));
    for (const char* line :
         {"Channels       : 2", "Sample Rate    : 44100", "Precision      : 16-bit"})
        EXPECT_NE(info.find(line), std::string::npos) << info;
    const std::vector<int> samples = ReadWave(out);
    const int frames = static_cast<int>(samples.size() / 2);
    EXPECT_GE(frames, 3 * 44100);
    EXPECT_LT(frames, 3 * 44100 + 4410);

    // Past the start of the tone (the first buffer may hold some silence before it); sox
    // estimates the frequency of one channel only.
    const std::string trimmed = "sox " + ShellQuote(out) + " -n trim 0.2 ";
    EXPECT_NEAR(SoxValue(RunCommand(trimmed + "remix 1 stat 2>&1"), "Rough   frequency:"), 1000,
                10);
    EXPECT_NEAR(SoxValue(RunCommand(trimmed + "stats 2>&1"), "RMS lev dB"), -12.04 - 3.01, 1.0);
    for (int channel = 0; channel < 2; ++channel) {
        const std::vector<double> values =
            ChannelValues(samples, 2, channel, 8820, frames - 8820 - 441);
        EXPECT_LT(ResidualDB(values, 44100, 1000), -40) << "channel " << channel;
    }
}

// SIGTERM while recording stops it with exit code 1 and leaves a finished, readable file.
TEST(CaptureDemoE2E, TerminatedCaptureKeepsAValidFile) {
    TempHome home;
    const std::string out = (home.Path() / "stopped.wav").string();
    int status = -1;
    RunCommand("VINORA_VIRTUAL_TURNTABLE=,speed=1 " +
                   Capture(out, "--device virtual-turntable 2>/dev/null & capture=$!; ") +
                   "while kill -0 $capture 2>/dev/null && [ $(stat -c %s " + ShellQuote(out) +
                   " 2>/dev/null || echo 0) -lt 100000 ]; do sleep 0.05; done; "
                   "kill -TERM $capture; wait $capture",
               &status);
    EXPECT_EQ(status, 1);

    const std::string stats = RunCommand("sox " + ShellQuote(out) + " -n stats 2>&1", &status);
    ASSERT_EQ(status, 0) << stats;
    EXPECT_GT(SoxiSeconds(out), 0.5);
    // The header holds the true size: as many frames as the data that follows it.
    EXPECT_EQ(std::stoul(RunCommand("soxi -s " + ShellQuote(out))) * 4 + 46,
              std::filesystem::file_size(out));
}

} // namespace
