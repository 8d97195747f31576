#include "platform/Log.h"
#include "platform/Paths.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

namespace fs = std::filesystem;

time_t gNow = 0;
time_t TestClock() {
    return gNow;
}

time_t LocalTime(int year, int month, int day, int hour, int minute, int second) {
    tm local{};
    local.tm_year = year - 1900;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1;
    return mktime(&local);
}

class Log : public ::testing::Test {
protected:
    TempHome home;
    const fs::path folder = home.DataHome() / "Brakwater Software/Vinora/Logs";

    Log() { LLog::SetClock(TestClock); }
    ~Log() override { LLog::SetClock(nullptr); }

    std::string Contents(const char* day) const {
        std::ifstream in(folder /
                             (std::string(day) + " Vinora Records Vinyl to CD Converter Log.txt"),
                         std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
};

} // namespace

TEST_F(Log, EntriesGoToTheFileOfTheirDayAndLongLinesAreCut) {
    gNow = LocalTime(2024, 12, 31, 23, 59, 59);
    LOG("Conversion of \"%s\" started", "side A.wav");
    LOGWARN("Level %d dB", -25);
    gNow += 2;
    LOGERROR("after midnight");
    EXPECT_EQ(Contents("2024-12-31"), "23:59:59 Conversion of \"side A.wav\" started\r\n"
                                      "23:59:59 Level -25 dB\r\n");

    // A line is at most 8191 bytes; the next line starts cleanly after it.
    LOG("%s", std::string(10000, 'x').c_str());
    LLog::Log("next");
    const std::string contents = Contents("2025-01-01");
    const std::string first = "00:00:01 after midnight\r\n";
    ASSERT_EQ(contents.size(), first.size() + 8191u + 15u);
    EXPECT_EQ(contents.substr(0, first.size() + 9), first + "00:00:01 ");
    EXPECT_EQ(contents.substr(first.size() + 9, 8182), std::string(8182, 'x'));
    EXPECT_EQ(contents.substr(first.size() + 8191), "00:00:01 next\r\n");

    char logFolder[kPathBufferSize];
    EXPECT_TRUE(LLog::GetFolder(logFolder));
    EXPECT_EQ(fs::path(logFolder), folder);
}

TEST(LogFolder, FixedAtStartEvenWhenTheUsersFoldersChange) {
    TempHome first;
    char fixed[kPathBufferSize];
    LLog::FixFolder(true);
    ASSERT_TRUE(LLog::GetFolder(fixed));
    {
        TempHome second;
        char now[kPathBufferSize];
        LLog::GetFolder(now);
        EXPECT_STREQ(now, fixed);
        LLog::FixFolder(false);
        LLog::GetFolder(now);
        EXPECT_STRNE(now, fixed);
    }
}
