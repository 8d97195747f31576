#include "Mp3TestUtil.h"

#include "codecs/Mp3EncodeCommand.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

// A private home with an encoder component installed, so that the command lines name a
// known encoder path.
class Mp3CommandLineTest : public ::testing::Test {
protected:
    void SetUp() override {
        const auto folder = home_.DataHome() / "Brakwater Software" / "Components";
        std::filesystem::create_directories(folder);
        encoder_ = (folder / "mp3el").string();
        std::ofstream(encoder_) << "#!/bin/sh\n";
    }

    struct Result {
        bool ok;
        std::string command;
        int rate;
        int channels;
    };

    Result Build(const LMp3EncodeSettings& settings, int rate, int channels,
                 const char* output = "/x/a.mp3") {
        char command[kMp3CommandLineSize];
        int sinkRate = 0;
        unsigned char sinkChannels = 0;
        const bool ok =
            Mp3CreateEncoderCommandLine(command, sinkRate, sinkChannels, output, settings, rate,
                                        static_cast<unsigned char>(channels));
        return {ok, command, sinkRate, sinkChannels};
    }

    std::string Quoted() const { return "\"" + encoder_ + "\""; }

    TempHome home_;
    std::string encoder_;
};

TEST(Mp3EncodeSettingsTest, StoredSettingsComeBackWithAWideVbrRangeNarrowed) {
    TempHome home;
    LMp3EncodeSettings changed = Mp3Vbr(24, 192, 2);
    changed.errorProtection = 1;
    changed.channelMode = LMp3EncodeSettings::modeForce;
    changed.SaveAsDefaultSettings();
    EXPECT_EQ(LUserSettingGetString("MP3Encoder", "VBRMinBitRate"), "24");

    const LMp3EncodeSettings loaded;
    EXPECT_EQ(loaded.constantBitRate, 0);
    EXPECT_EQ(loaded.vbrMinBitRate, 32) << "below 32 with a maximum above 160 is raised";
    EXPECT_EQ(loaded.vbrMaxBitRate, 192);
    EXPECT_EQ(loaded.vbrQuality, 2);
    EXPECT_EQ(loaded.errorProtection, 1);
    EXPECT_EQ(loaded.channelMode, LMp3EncodeSettings::modeForce);
}

TEST(Mp3CorrectSampleRateTest, SnapsToEncoderRates) {
    // {source rate, rate given to the encoder} at CBR 128 kbps: every edge of the table.
    const int cases[][2] = {{96000, 48000}, {48000, 48000}, {47999, 44100}, {44101, 44100},
                            {44099, 44100}, {32001, 44100}, {32000, 32000}, {24001, 32000},
                            {24000, 24000}, {23999, 22050}, {22051, 22050}, {22049, 22050},
                            {16001, 22050}, {16000, 16000}, {15999, 11025}, {11026, 11025},
                            {11025, 11025}, {11024, 11025}, {8001, 11025},  {8000, 8000},
                            {7999, 8000},   {0, 8000}};
    for (const auto& [rate, expected] : cases)
        EXPECT_EQ(LMp3CorrectSampleRate(Mp3Cbr(128), rate), expected) << rate;

    // Bit rates above 160 kbps need a high rate, those up to 31 kbps a low one.
    EXPECT_EQ(LMp3CorrectSampleRate(Mp3Cbr(320), 22050), 44100);
    EXPECT_EQ(LMp3CorrectSampleRate(Mp3Cbr(160), 22050), 22050);
    EXPECT_EQ(LMp3CorrectSampleRate(Mp3Vbr(32, 192), 8000), 44100);
    EXPECT_EQ(LMp3CorrectSampleRate(Mp3Cbr(64), 96000), 48000);
    EXPECT_EQ(LMp3CorrectSampleRate(Mp3Cbr(24), 44100), 22050);
    EXPECT_EQ(LMp3CorrectSampleRate(Mp3Cbr(32), 44100), 44100);
    EXPECT_EQ(LMp3CorrectSampleRate(Mp3Vbr(8, 16), 48000), 22050);
}

TEST_F(Mp3CommandLineTest, SettingsGiveTheEncoderSwitchesAndTheSinkFormat) {
    using Mode = LMp3EncodeSettings::ChannelMode;
    const LMp3EncodeSettings joint = WithMode(Mp3Cbr(128, true), Mode::modeJoint);
    LMp3EncodeSettings vbrCrc = Mp3Vbr(32, 128);
    vbrCrc.errorProtection = 1;
    const struct {
        LMp3EncodeSettings settings;
        int rate, channels;
        const char* switches;
        int sinkRate, sinkChannels;
    } cases[] = {
        {joint, 44100, 2, "-m j -b 128 -h -r -x -s 44.100", 44100, 2},
        {vbrCrc, 48000, 2, "-m s -p -v -b 32 -B 128 -V 4 -r -x -s 48.000", 48000, 2},
        {WithMode(Mp3Cbr(192), Mode::modeForce), 32000, 2, "-m f -b 192 -r -x -s 32.000", 32000, 2},
        {WithMode(Mp3Cbr(128), 7), 44100, 2, "-m s -b 128 -r -x -s 44.100", 44100, 2},
        // Mono chosen for a stereo source: LAME gets two channels and mixes them down.
        {WithMode(Mp3Cbr(128), Mode::modeMono), 44100, 2, "-a -m m -b 128 -r -x -s 44.100", 44100,
         2},
        // A mono source is encoded as mono whatever the mode.
        {joint, 44100, 1, "-m m -b 128 -h -r -x -s 44.100", 44100, 1},
        // 23 kbps and less: the sink itself is mono, so no downmix switch.
        {Mp3Vbr(8, 16), 44100, 2, "-m m -v -b 8 -B 16 -V 4 -r -x -s 22.050", 22050, 1},
        {Mp3Cbr(24), 44100, 2, "-m s -b 24 -r -x -s 22.050", 22050, 2},
    };
    for (const auto& c : cases) {
        const Result result = Build(c.settings, c.rate, c.channels);
        ASSERT_TRUE(result.ok);
        EXPECT_EQ(result.command, Quoted() + " " + c.switches + " -S - \"/x/a.mp3\"");
        EXPECT_EQ(result.rate, c.sinkRate) << c.switches;
        EXPECT_EQ(result.channels, c.sinkChannels) << c.switches;
    }
}

TEST_F(Mp3CommandLineTest, OutputPathIsQuotedAndEscapedForTheShell) {
    const Result result = Build(Mp3Cbr(128), 11025, 2, "/m/Say \"Hi\" `now` $HOME\\x.mp3");
    EXPECT_EQ(result.command, Quoted() + " -m s -b 128 -r -x -s 11.025 -S - "
                                         "\"/m/Say \\\"Hi\\\" \\`now\\` \\$HOME\\\\x.mp3\"");
}

} // namespace
