#include "CliTestUtil.h"

#include "tags/TagTestFiles.h"

#include <gtest/gtest.h>

using namespace tagtest;

namespace {

std::string Tags(const std::filesystem::path& file, const std::string& arguments, int* status,
                 const char* streams = "2>/dev/null") {
    return Cli("tags " + ShellQuote(file.string()) + " " + arguments, status, streams);
}

} // namespace

TEST(TagsCli, SetsPrintsAndRemovesMP3Tags) {
    TempHome home;
    const auto mp3 = MakeMp3(home.Path());
    int status = -1;
    EXPECT_EQ(Tags(mp3, "", &status), "");
    EXPECT_EQ(status, 0);

    Tags(mp3,
         "--set " + ShellQuote("TITLE=Caf\xC3\xA9 M\xC3\xBCller") +
             " --set ARTIST=Someone --set GENRE=rock --set TRACKNUMBER=3/12",
         &status);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(FFprobeTags(mp3)["title"], "Caf\xC3\xA9 M\xC3\xBCller");
    // Frames are read in turn, each placed before the ones already read.
    EXPECT_EQ(Tags(mp3, "", &status), "TRACKNUMBER=3/12\n"
                                      "GENRE=Rock\n"
                                      "ARTIST=Someone\n"
                                      "TITLE=Caf\xC3\xA9 M\xC3\xBCller\n");

    Tags(mp3, "--set ARTIST= --set GENRE=", &status);
    ASSERT_EQ(status, 0);
    const std::string output = Tags(mp3, "", &status);
    EXPECT_EQ(output.find("ARTIST"), std::string::npos) << output;
    EXPECT_EQ(output.find("GENRE"), std::string::npos) << output;
    EXPECT_EQ(FFprobeTags(mp3).count("artist"), 0u);
}

TEST(TagsCli, WaveModesAndMultiLineValues) {
    TempHome home;
    const auto wave = MakeWave(home.Path());
    int status = -1;
    Tags(wave, "--mode 0 --set TITLE=Hello --set " + ShellQuote("COMMENT=two\\r\\nlines"), &status);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(Tags(wave, "--mode 0", &status), "TITLE=Hello\nCOMMENT=two\\r\\nlines\n");
    EXPECT_EQ(Tags(wave, "--mode 1", &status), "");

    Tags(wave, "--mode 1 --set ORIGINATOR=Vinora", &status);
    ASSERT_EQ(status, 0);
    const std::string bext = Tags(wave, "--mode 1", &status);
    EXPECT_NE(bext.find("ORIGINATOR=Vinora\n"), std::string::npos) << bext;
    EXPECT_NE(bext.find("BWFVERSION=1\n"), std::string::npos) << bext;
    EXPECT_EQ(Tags(wave, "--mode 0", &status), "TITLE=Hello\nCOMMENT=two\\r\\nlines\n");
}

TEST(TagsCli, BadUsageFailsWithoutWriting) {
    TempHome home;
    const auto wave = MakeWave(home.Path());
    const std::vector<uint8_t> bytes = ReadFileBytes(wave);
    const auto text = home.Path() / "notes.txt";
    WriteFileBytes(text, {'h', 'i'});
    for (const std::string& arguments :
         {std::string("--mode 4"), std::string("--mode"), std::string("--set TITLE"),
          std::string("--set =x"), std::string("--frobnicate"), std::string("extra.wav")}) {
        int status = -1;
        EXPECT_EQ(Tags(wave, arguments, &status), "") << arguments;
        EXPECT_EQ(status, 2) << arguments;
    }
    EXPECT_EQ(ReadFileBytes(wave), bytes);

    int status = -1;
    const std::string error = Tags(home.Path() / "missing.mp3", "", &status, "2>&1");
    EXPECT_EQ(status, 2);
    EXPECT_NE(error.find("cannot open"), std::string::npos) << error;
    Tags(text, "--set TITLE=x", &status);
    EXPECT_EQ(status, 2);
    EXPECT_EQ(ReadFileBytes(text).size(), 2u);
    // A wave file name on a file that is not one.
    const auto fake = home.Path() / "fake.wav";
    WriteFileBytes(fake, {'n', 'o', 't', ' ', 'r', 'i', 'f', 'f'});
    const std::string failed = Tags(fake, "--set TITLE=x", &status, "2>&1");
    EXPECT_EQ(status, 2);
    EXPECT_NE(failed.find("cannot write the tags of"), std::string::npos) << failed;
    EXPECT_EQ(ReadFileBytes(fake).size(), 8u);
}
