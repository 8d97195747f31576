// Audio written into the MP3 sink comes back out of the MP3 file: the sink pipes it to the
// LAME encoder with the settings' command line, and the file is decoded with mpg123 and with
// this program's own decoder.
#include "Mp3TestUtil.h"

#include "codecs/MP3File.h"
#include "codecs/Mp3EncodeSink.h"
#include "codecs/PipeOut.h"
#include "jobs/ProcessInterfaceVoid.h"
#include "sound/SourceToSink.h"
#include "support/TempHome.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr double kAmplitude = 262144; // half of full scale

struct Decoded {
    int rate = 0;
    int channels = 0;
    std::vector<int> samples;
};

LMp3EncodeSettings Joint() {
    return WithMode(Mp3Cbr(128, true), LMp3EncodeSettings::modeJoint);
}

class Mp3EncodeRoundTripTest : public ::testing::Test {
protected:
    // Pumps two seconds of a 1 kHz tone (channel c at kAmplitude / (c + 1)) into the MP3 sink
    // and finishes the file.
    std::string Encode(const char* name, const LMp3EncodeSettings& settings, int channels,
                       int expectedSinkChannels) {
        const std::string path = (home_.Path() / name).string();
        LPRSourceToSink job;
        job.source =
            MakeSineSource(44100, static_cast<unsigned char>(channels), 1000, kAmplitude, 88200);
        job.sink = OpenMp3Sink(path.c_str(), settings, 44100, static_cast<unsigned char>(channels));
        EXPECT_EQ(job.sink->GetError(), 0);
        EXPECT_EQ(job.sink->GetChannels(), expectedSinkChannels);
        LProcessInterfaceVoid quiet;
        EXPECT_EQ(Process(quiet, job), PROCESS_DONE);
        job.sink.Close();
        return path;
    }

    // Decodes the file both ways and measures the tone on each channel over one second: its
    // level against `amplitudes` and what else the channel holds (noise, distortion, the other
    // channel's tone, a wrong rate).
    void CheckBothDecoders(const std::string& path, const std::vector<double>& amplitudes) {
        const LSoundSource source = LMP3File::OpenSource(path.c_str());
        ASSERT_EQ(source->GetError(), sndErrNone);
        const Decoded own{source->GetSampleRate(), source->GetChannels(), ReadToEnd(source)};
        const int channels = static_cast<int>(amplitudes.size());
        ASSERT_EQ(own.channels, channels);
        const Decoded reference{own.rate, channels, Mpg123Samples(path, true)};
        for (const Decoded* decoded : {&own, &reference}) {
            const char* who = decoded == &own ? "own decoder" : "mpg123";
            const int rate = decoded->rate;
            ASSERT_GE(decoded->samples.size(), size_t(3 * rate / 2 * channels)) << who;
            for (int c = 0; c < channels; ++c) {
                const std::vector<double> values =
                    ChannelValues(decoded->samples, channels, c, rate / 2, rate);
                const double level = DB(ToneAmplitude(values, rate, 1000) / amplitudes[c]);
                const double residual = ResidualDB(values, rate, 1000);
                std::printf("%-12s %-11s channel %d level %+.2f dB residual %.1f dB\n",
                            path.substr(path.rfind('/') + 1).c_str(), who, c, level, residual);
                EXPECT_NEAR(level, 0, 1.0) << who << " channel " << c;
                EXPECT_LT(residual, -30) << who << " channel " << c;
            }
        }
    }

    TempHome home_;
};

// Stereo keeps each channel at CBR and VBR, and mono stays mono. Mono chosen for a stereo
// source mixes both channels: full amplitude on the left and half on the right give three
// quarters. VBR from 8 to 16 kbps has the pump mix the stereo source down to mono at 22,050 Hz,
// and the encoder may lower the rate further.
TEST_F(Mp3EncodeRoundTripTest, EachChannelModeAndBitRateKeepsTheTone) {
    using Settings = LMp3EncodeSettings;
    const std::vector<double> both = {kAmplitude, kAmplitude / 2}, mix = {kAmplitude * 3 / 4};
    const struct {
        const char* name;
        Settings settings;
        int channels, sinkChannels;
        std::vector<double> amplitudes;
        int highestRate;
    } cases[] = {
        {"cbr.mp3", Joint(), 2, 2, both, 44100},
        {"vbr.mp3", WithMode(Mp3Vbr(32, 256), Settings::modeJoint), 2, 2, both, 44100},
        {"mono.mp3", Joint(), 1, 1, {kAmplitude}, 44100},
        {"downmix.mp3", WithMode(Joint(), Settings::modeMono), 2, 2, mix, 44100},
        {"low.mp3", WithMode(Mp3Vbr(8, 16), Settings::modeJoint), 2, 1, mix, 22050},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = Encode(c.name, c.settings, c.channels, c.sinkChannels);
        EXPECT_LE(LMP3File::OpenSource(path.c_str())->GetSampleRate(), c.highestRate);
        CheckBothDecoders(path, c.amplitudes);
    }
}

TEST_F(Mp3EncodeRoundTripTest, SinkOfAMissingEncoderIsAnErrorSink) {
    const char* oldPath = std::getenv("PATH");
    const std::string saved = oldPath ? oldPath : "";
    setenv("PATH", home_.Path().c_str(), 1);
    const LSoundSink sink = OpenMp3Sink((home_.Path() / "x.mp3").c_str(), Joint(), 44100, 2);
    setenv("PATH", saved.c_str(), 1);
    EXPECT_EQ(sink->GetError(), 1);
}

// The program runs with a cleared file-creation mask; the encoder it starts must still make a
// file that only its owner can change, and whatever it prints belongs in the log, not on the
// terminal of a user who ran vinora-cli.
TEST_F(Mp3EncodeRoundTripTest, TheEncoderMakesA0644FileAndPrintsOnlyToTheLog) {
    const mode_t oldMask = umask(0);
    const std::string printed = (home_.Path() / "stderr.txt").string();
    fflush(stderr);
    const int savedErr = dup(STDERR_FILENO);
    const int capture = open(printed.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(capture, STDERR_FILENO);
    const std::string mp3 = Encode("mode.mp3", Joint(), 2, 2);
    LPipeOut chatty;
    ASSERT_TRUE(chatty.Open("echo 'LAME banner' >&2; echo 'to stdout'; cat > /dev/null"));
    EXPECT_TRUE(chatty.Write("abc", 3));
    EXPECT_EQ(chatty.Close(), 0);
    fflush(stderr);
    dup2(savedErr, STDERR_FILENO);
    close(savedErr);
    close(capture);
    umask(oldMask);

    struct stat info {};
    ASSERT_EQ(stat(mp3.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0644u);
    std::ifstream in(printed);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "");
    std::string log;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home_.Path()))
        if (entry.path().extension() == ".txt" && entry.path().filename() != "stderr.txt") {
            std::ifstream file(entry.path());
            log += std::string(std::istreambuf_iterator<char>(file), {});
        }
    EXPECT_NE(log.find("LAME banner"), std::string::npos) << log;
    EXPECT_NE(log.find("to stdout"), std::string::npos) << log;
}

} // namespace
