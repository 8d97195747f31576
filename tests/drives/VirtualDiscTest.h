#pragma once

#include "drives/VirtualDisc.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

// A test of the Virtual Burner: a folder for its disc files and discs made from a setting.
class VirtualDiscTest : public ::testing::Test {
public:
    // "dvd+r" or "dvd+r,used": the media, then this test's disc file, then the options.
    std::shared_ptr<LVirtualDisc> Disc(const std::string& setting) {
        const size_t comma = setting.find(',');
        const std::string text = setting.substr(0, comma) + ":" + path +
                                 (comma == std::string::npos ? "" : setting.substr(comma));
        LVirtualBurnerOptions options;
        std::string error;
        EXPECT_TRUE(LVirtualBurnerOptions::Parse(text, options, error)) << error;
        return std::make_shared<LVirtualDisc>(options);
    }

    TempHome home;
    std::string folder = home.Path().string();
    std::string path = folder + "/disc";
};
