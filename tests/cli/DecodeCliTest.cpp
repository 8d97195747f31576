#include "CliTestUtil.h"

#include <gtest/gtest.h>

namespace {

class DecodeCli : public ::testing::Test {
protected:
    std::string PathOf(const char* name) const { return (home_.Path() / name).string(); }

    // Runs a shell command that must succeed.
    void Run(const std::string& command) {
        int status = -1;
        const std::string output = RunCommand(command + " 2>&1", &status);
        ASSERT_EQ(status, 0) << command << "\n" << output;
    }

    std::string Decode(const std::string& arguments, int* status) {
        return Cli("decode " + arguments, status);
    }

    std::string Soxi(const char* option, const std::string& path) {
        return RunCommand(std::string("soxi ") + option + " " + ShellQuote(path));
    }

    // A figure of `sox FILE -n remix 1 stat` (first channel), such as "Rough   frequency".
    double SoxStat(const std::string& path, const std::string& name) {
        const std::string stat = RunCommand("sox " + ShellQuote(path) + " -n remix 1 stat 2>&1");
        const std::string::size_type at = stat.find(name + ":");
        return at == std::string::npos ? -1 : std::stod(stat.substr(at + name.size() + 1));
    }

    TempHome home_;
};

TEST_F(DecodeCli, CopiesAWaveFileSampleForSample) {
    const std::string in = PathOf("ima.wav"), out = PathOf("out.wav");
    Run("sox -n -r 11025 -c 1 -e ima-adpcm " + ShellQuote(in) + " synth 0.7 sine 440 vol 0.5");
    int status = -1;
    EXPECT_EQ(Decode(ShellQuote(in) + " " + ShellQuote(out), &status), "");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Soxi("-r", out), "11025\n");
    EXPECT_EQ(Soxi("-b", out), "16\n");
    EXPECT_EQ(Soxi("-s", out), Soxi("-s", in));
    // sox decodes the ADPCM input and the PCM output to the same samples.
    EXPECT_EQ(RunCommand("sox " + ShellQuote(out) + " -t s16 - | md5sum"),
              RunCommand("sox " + ShellQuote(in) + " -t s16 - | md5sum"));
}

// The options convert the rate and channels; the tone keeps its pitch.
TEST_F(DecodeCli, WritesAiffForTheCdFromMp3) {
    const std::string wave = PathOf("tone.wav"), mp3 = PathOf("tone.mp3"), out = PathOf("cd.aif");
    Run("sox -n -r 32000 -c 1 -b 16 " + ShellQuote(wave) + " synth 1 sine 440");
    Run("lame --quiet " + ShellQuote(wave) + " " + ShellQuote(mp3));
    int status = -1;
    Decode(ShellQuote(mp3) + " " + ShellQuote(out) + " --rate 44100 --channels 2", &status);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(Soxi("-t", out), "aiff\n");
    EXPECT_EQ(Soxi("-r", out), "44100\n");
    EXPECT_EQ(Soxi("-c", out), "2\n");
    EXPECT_NEAR(SoxStat(out, "Rough   frequency"), 440, 5);
}

TEST_F(DecodeCli, FailsWithTheReason) {
    const std::string in = PathOf("in.wav");
    Run("sox -n -r 8000 -c 1 -b 16 " + ShellQuote(in) + " synth 0.1 sine 440");
    int status = -1;
    EXPECT_EQ(Decode(ShellQuote(PathOf("none.wav")) + " " + ShellQuote(PathOf("o.wav")), &status),
              "vinora-cli decode: " + PathOf("none.wav") + ": the file could not be opened\n");
    EXPECT_EQ(status, 2);
    EXPECT_NE(Decode(ShellQuote(in) + " " + ShellQuote(PathOf("no/such/o.wav")), &status)
                  .find("could not be written"),
              std::string::npos);
    EXPECT_EQ(status, 2);
    for (const char* options : {" --rate", " --rate 0", " --channels 3", " --rate x"}) {
        EXPECT_EQ(Decode(ShellQuote(in) + " " + ShellQuote(PathOf("o.wav")) + options, &status),
                  "usage: vinora-cli decode IN OUT [--rate R] [--channels C]\n")
            << options;
        EXPECT_EQ(status, 2);
    }
    EXPECT_EQ(Decode(ShellQuote(in), &status).find("usage:"), 0u);
}

} // namespace
