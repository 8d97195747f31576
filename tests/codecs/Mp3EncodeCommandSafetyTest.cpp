// An output path that does not fit the encoder's command line whole is refused, rather than cut
// short into the name of some other file that the encoder would then write.
#include "codecs/Mp3EncodeCommand.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

TEST(Mp3EncodeCommandSafety, APathThatDoesNotFitWholeIsRefused) {
    TempHome home;
    const auto folder = home.DataHome() / "Brakwater Software" / "Components";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "mp3el") << "#!/bin/sh\n";

    // 240 characters: a path the program may use, but each "$" needs a backslash on the line.
    const std::string fits = "/x/" + std::string(233, 'a') + ".mp3";
    const std::string needsEscapes = "/x/" + std::string(20, '$') + std::string(213, 'a') + ".mp3";
    char command[kMp3CommandLineSize];
    int rate = 0;
    unsigned char channels = 0;
    EXPECT_TRUE(Mp3CreateEncoderCommandLine(command, rate, channels, fits.c_str(),
                                            LMp3EncodeSettings(), 44100, 2));
    EXPECT_FALSE(Mp3CreateEncoderCommandLine(command, rate, channels, needsEscapes.c_str(),
                                             LMp3EncodeSettings(), 44100, 2))
        << command;
}
