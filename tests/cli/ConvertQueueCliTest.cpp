#include "CliTestUtil.h"

#include "platform/Log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

// Peak and mean of a file as sox measures them, as fractions of full scale.
struct Levels {
    double peak = -1;
    double mean = -1;
};

Levels Measure(const std::string& path) {
    const std::string stat = RunCommand("sox " + ShellQuote(path) + " -n stat 2>&1");
    auto value = [&](const char* name) {
        const std::size_t at = stat.find(name);
        return at == std::string::npos ? NAN : std::atof(stat.c_str() + stat.find(':', at) + 1);
    };
    return {std::max(value("Maximum amplitude"), -value("Minimum amplitude")),
            value("Mean    amplitude")};
}

class ConvertCli : public ::testing::Test {
protected:
    std::string PathOf(const char* name) const { return (home_.Path() / name).string(); }

    // A stereo 440 Hz tone of one second made by sox, with sox effects after it.
    void MakeWave(const char* name, const std::string& effects = "vol 0.5") {
        int status = -1;
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(PathOf(name)) + " synth 1 sine 440 " +
                       effects,
                   &status);
        ASSERT_EQ(status, 0);
    }

    // Converts in.wav into `output` with the options; the exit status.
    int Convert(const char* output, const std::string& options) {
        int status = -1;
        const std::string printed = Cli("convert " + ShellQuote(PathOf("in.wav")) + " " +
                                            ShellQuote(PathOf(output)) + " " + options,
                                        &status);
        EXPECT_NE(status, -1) << printed;
        return status;
    }

    static std::string Log() {
        char folder[260];
        if (!LLog::GetFolder(folder)) return {};
        std::string all;
        for (const auto& entry : fs::directory_iterator(folder))
            all += FileText(entry.path());
        return all;
    }

    TempHome home_;
};

TEST_F(ConvertCli, ConvertsAndCopies) {
    MakeWave("in.wav");
    ASSERT_EQ(Convert("out/in.mp3", "--copy-to " + ShellQuote(PathOf("copies"))), 0);
    EXPECT_TRUE(fs::exists(PathOf("out/in.mp3")));
    EXPECT_TRUE(fs::exists(PathOf("copies/in.mp3")));
    EXPECT_TRUE(fs::exists(PathOf("in.wav")));

    EXPECT_EQ(Convert("out/in.ogg", ""), 2);
    int status = -1;
    Cli("convert " + ShellQuote(PathOf("in.wav")), &status);
    EXPECT_EQ(status, 2);
}

// A quiet tone (peak 0.15) on a DC offset of 0.05, with the stored settings asking for DC
// offset removal and normalisation.
TEST_F(ConvertCli, StepOptionsReplaceTheStoredRestorationForOneRun) {
    MakeWave("in.wav", "vol 0.1 dcshift 0.05");
    int status = -1;
    for (const std::string setting :
         {"AudioRestoration DCOffset 1", "AudioRestoration HPF 0", "AudioRestoration ClickPop 0",
          "AudioRestoration NoiseReduce 0", "AudioRestoration Equalization 0",
          "AudioRestoration Normalization 1", "RecordingSource RecordingSpeed 0"}) {
        Cli("settings set " + setting, &status);
        ASSERT_EQ(status, 0) << setting;
    }
    const fs::path settings = home_.ConfigHome() / "Brakwater Software/Vinora.conf";
    const std::string stored = FileText(settings);

    ASSERT_EQ(Convert("normalized.wav", "--normalize"), 0);
    const Levels normalized = Measure(PathOf("normalized.wav"));
    EXPECT_NEAR(normalized.peak, 0.8, 0.005);
    EXPECT_NEAR(normalized.mean, 0.05 * 0.8 / 0.15, 0.005) << "the offset is kept";

    ASSERT_EQ(Convert("centred.wav", "--dc"), 0);
    const Levels centred = Measure(PathOf("centred.wav"));
    EXPECT_NEAR(centred.peak, 0.1, 0.005) << "not normalised";
    EXPECT_NEAR(centred.mean, 0, 0.002);

    ASSERT_EQ(Convert("stored.wav", "--restore"), 0);
    const Levels both = Measure(PathOf("stored.wav"));
    EXPECT_NEAR(both.peak, 0.8, 0.005);
    EXPECT_NEAR(both.mean, 0, 0.005);

    // 45 RPM played back as 33 RPM: slower, so longer.
    ASSERT_EQ(Convert("slowed.wav", "--speed 1"), 0);
    const double seconds =
        std::atof(RunCommand("soxi -D " + ShellQuote(PathOf("slowed.wav"))).c_str());
    EXPECT_NEAR(seconds, 1 / 0.733, 0.01);
    const Levels slowed = Measure(PathOf("slowed.wav"));
    EXPECT_NEAR(slowed.mean, 0.05, 0.005) << "no other step ran";

    ASSERT_EQ(Convert("plain.wav", "--speed 0"), 0);
    EXPECT_NEAR(Measure(PathOf("plain.wav")).peak, 0.15, 0.005);
    EXPECT_EQ(Log().find("Applying Audio Restoration", Log().find("plain.wav")), std::string::npos);

    EXPECT_EQ(Convert("bad.wav", "--speed 3"), 2);
    EXPECT_EQ(Convert("bad.wav", "--speed"), 2);
    EXPECT_FALSE(fs::exists(PathOf("bad.wav")));
    EXPECT_EQ(FileText(settings), stored);
}

// Stand-ins for the encoder component that write part of the file and then fail.
TEST_F(ConvertCli, AFailingEncoderFailsTheConversion) {
    MakeWave("in.wav");
    const fs::path encoder = home_.DataHome() / "Brakwater Software/Components/mp3el";
    fs::create_directories(encoder.parent_path());
    const char* scripts[] = {
        // Takes all the audio, then reports failure.
        "#!/bin/sh\n[ \"$1\" = --version ] && exit 0\nfor out; do :; done\ncat > \"$out\"\nexit 3\n",
        // Killed part-way through the audio.
        "#!/bin/sh\n[ \"$1\" = --version ] && exit 0\nfor out; do :; done\nhead -c 40000 > "
        "\"$out\"\nkill -KILL $$\n",
    };
    for (const char* script : scripts) {
        std::ofstream(encoder) << script;
        fs::permissions(encoder, fs::perms::owner_all);
        EXPECT_EQ(Convert("out/in.mp3", ""), 2) << script;
        EXPECT_FALSE(fs::exists(PathOf("out/in.mp3"))) << script;
        EXPECT_TRUE(fs::exists(PathOf("in.wav")));
    }
    const std::string log = Log();
    EXPECT_NE(log.find("The encoder ended with exit status 3"), std::string::npos) << log;
    // The short recording fits in the pipe, so the kill is what shows.
    EXPECT_NE(log.find("The encoder ended with exit status 137"), std::string::npos) << log;
    EXPECT_NE(log.find("File conversion FAILED: could not write to the sink file " +
                       PathOf("out/in.mp3")),
              std::string::npos)
        << log;
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
    // Step options are for one conversion; a queued request keeps only --restore.
    Cli("queue add " + ShellQuote(PathOf("a.wav")) + " " + ShellQuote(PathOf("out/c.wav")) +
            " --dc",
        &status);
    EXPECT_EQ(status, 2);
    const std::string output = Cli("queue run", &status);
    ASSERT_EQ(status, 0) << output;
    EXPECT_TRUE(fs::exists(PathOf("out/a.wav")));
    EXPECT_TRUE(fs::exists(PathOf("out/b.wav")));
    EXPECT_EQ(Cli("queue list", &status), "");
    Cli("queue frobnicate", &status);
    EXPECT_EQ(status, 2);
}

// On a full disk (a file size limit: the program ignores SIGXFSZ, as a full disk gives no signal) a
// conversion and a queue append fail with an error and leave every existing file as it was.
TEST_F(ConvertCli, AFullDiskFailsWithoutTouchingExistingFiles) {
    MakeWave("in.wav");
    fs::create_directories(PathOf("out"));
    std::ofstream(PathOf("out/in.wav")) << "the earlier conversion";
    // 2,048 bytes: room for the queue's first request, not for a second.
    const auto limited = [](const std::string& arguments, int* status) {
        return CliOnFullDisk(arguments, 2048, status);
    };
    int status = -1;
    std::string printed = limited("convert " + ShellQuote(PathOf("in.wav")) + " " +
                                      ShellQuote(PathOf("out/in.wav")),
                                  &status);
    EXPECT_EQ(status, 2) << printed;
    EXPECT_NE(printed.find("the conversion failed"), std::string::npos) << printed;
    EXPECT_EQ(FileText(PathOf("out/in.wav")), "the earlier conversion");
    EXPECT_EQ(std::distance(fs::directory_iterator(PathOf("out")), fs::directory_iterator()), 1);

    Cli("queue add " + ShellQuote(PathOf("in.wav")) + " " + ShellQuote(PathOf("out/a.wav")),
        &status);
    ASSERT_EQ(status, 0);
    const fs::path queue = home_.DataHome() / "Brakwater Software/Vinora/vnprocesses.list";
    const std::string before = FileText(queue);
    for (int i = 0; i < 2; ++i) {
        printed = limited("queue add " + ShellQuote(PathOf("in.wav")) + " " +
                              ShellQuote(PathOf("out/b.wav")),
                          &status);
        EXPECT_EQ(status, 2) << printed;
        EXPECT_NE(printed.find("cannot be written"), std::string::npos) << printed;
        EXPECT_EQ(FileText(queue), before);
    }
}

} // namespace

namespace {

// The largest change from one 16-bit sample to the next in a stereo wave file.
int LargestJump(const std::string& path) {
    const std::string raw = RunCommand("sox " + ShellQuote(path) + " -t s16 -");
    int largest = 0;
    for (size_t i = 4; i + 1 < raw.size(); i += 2) {
        const auto at = [&](size_t k) { return int16_t(uint8_t(raw[k]) | uint8_t(raw[k + 1]) << 8); };
        largest = std::max(largest, std::abs(at(i) - at(i - 4)));
    }
    return largest;
}

} // namespace

// A side recorded too hot (two sines normalised to full scale, raised 6 dB and clipped) through
// the noise gates alone: the gates may overshoot, but the limiter brings the output back
// instead of letting it wrap around into jumps from one end of the range to the other.
TEST_F(ConvertCli, LoudAudioThroughTheNoiseGatesDoesNotWrapAround) {
    int status = -1;
    RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(PathOf("tones.wav")) +
                   " synth 2 sine 220 sine 3150 remix 1,2 1,2 && sox " +
                   ShellQuote(PathOf("tones.wav")) + " " + ShellQuote(PathOf("in.wav")) +
                   " gain -n 0 gain 6 2>/dev/null",
               &status);
    ASSERT_EQ(status, 0);
    ASSERT_EQ(Convert("gated.wav", "--noise"), 0);
    const int source = LargestJump(PathOf("in.wav"));
    EXPECT_LT(LargestJump(PathOf("gated.wav")), 4 * source) << "source " << source;
}

// Whatever the user's file-creation mask, what the program makes, itself or through the
// encoder or its settings library, is readable by all and writable by the user alone.
TEST_F(ConvertCli, FilesAreMadeWithMode0644WhateverTheMask) {
    MakeWave("in.wav");
    int status = -1;
    RunCommand("umask 0; " + std::string(VINORA_CLI) + " convert " + ShellQuote(PathOf("in.wav")) +
                   " " + ShellQuote(PathOf("out/in.mp3")) + " 2>&1 && umask 0 && " + VINORA_CLI +
                   " settings set Settings UseMinTime 0",
               &status);
    ASSERT_EQ(status, 0);
    for (const fs::path& path :
         {fs::path(PathOf("out/in.mp3")), home_.ConfigHome() / "Brakwater Software/Vinora.conf"}) {
        EXPECT_EQ(fs::status(path).permissions(),
                  fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read |
                      fs::perms::others_read)
            << path;
    }
    EXPECT_EQ(fs::status(PathOf("out")).permissions() & fs::perms::others_write, fs::perms::none);
}
