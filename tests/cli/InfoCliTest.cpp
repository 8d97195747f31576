#include "CliTestUtil.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

std::string Info(const std::filesystem::path& file, int* status, const char* streams = "2>&1") {
    return Cli("info " + ShellQuote(file.string()), status, streams);
}

TEST(InfoCli, PrintsTheFormatOfWaveAndMP3Files) {
    TempHome home;
    const std::filesystem::path pcm = home.Path() / "side a.wav";
    int status = -1;
    RunCommand("sox -n -r 22050 -c 2 -b 16 " + ShellQuote(pcm.string()) + " synth 2.5 sine 440",
               &status);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(Info(pcm, &status), "format tag: 1\n"
                                  "codec: Microsoft PCM Format\n"
                                  "sample rate: 22050\n"
                                  "channels: 2\n"
                                  "bits: 16\n"
                                  "frames: 55125\n"
                                  "length: 0:00:02.500\n");
    EXPECT_EQ(status, 0);

    const std::filesystem::path ima = home.Path() / "ima.wav";
    RunCommand("sox -n -r 8000 -c 1 -e ima-adpcm " + ShellQuote(ima.string()) + " synth 1 sine 440",
               &status);
    ASSERT_EQ(status, 0);
    const std::string text = Info(ima, &status);
    EXPECT_EQ(status, 0);
    EXPECT_NE(text.find("format tag: 17\ncodec: Intel DVI ADPCM (IMA ADPCM)\n"), std::string::npos)
        << text;
    EXPECT_NE(text.find("frames: 8080\nlength: 0:00:01.010\n"), std::string::npos) << text;

    // An MP3 file, known by its extension in any case.
    const std::filesystem::path mp3 = home.Path() / "Tone.MP3";
    RunCommand("lame --quiet --resample 32 -a " + ShellQuote(pcm.string()) + " " +
                   ShellQuote(mp3.string()),
               &status);
    ASSERT_EQ(status, 0);
    const std::string mp3Text = Info(mp3, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(mp3Text.rfind("format tag: 85\ncodec: MPEG-1 Layer III\nsample rate: 32000\n"
                            "channels: 1\nbits: 0\n",
                            0),
              0u)
        << mp3Text;
}

TEST(InfoCli, FilesThatCannotBeReadFailWithTheReason) {
    TempHome home;
    int status = -1;
    const std::filesystem::path missing = home.Path() / "missing.wav";
    EXPECT_EQ(Info(missing, &status),
              "vinora-cli info: " + missing.string() + ": the file could not be opened\n");
    EXPECT_EQ(status, 2);

    const std::filesystem::path text = home.Path() / "notes.wav";
    std::ofstream(text) << "not a wave file at all";
    EXPECT_EQ(Info(text, &status, "2>&1 >/dev/null"),
              "vinora-cli info: " + text.string() + ": bad or damaged audio format\n");
    EXPECT_EQ(status, 2);

    const std::filesystem::path floats = home.Path() / "float.wav";
    RunCommand("sox -n -r 8000 -c 1 -e floating-point -b 32 " + ShellQuote(floats.string()) +
                   " synth 0.1 sine 440",
               &status);
    EXPECT_NE(Info(floats, &status).find("encoding is not supported"), std::string::npos);
    EXPECT_EQ(status, 2);

    Cli("info", &status);
    EXPECT_EQ(status, 2);
}

} // namespace
