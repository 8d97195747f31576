// The recording session's decisions without a sound device: track starts and ends from scripted
// level reports, naming, disc space and the meter's colours.
#include "record/DiscSpace.h"
#include "record/FileNamePattern.h"
#include "record/LevelMeterScale.h"
#include "record/RecordingOutput.h"
#include "record/TrackDetector.h"

#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kRate = 44100;
constexpr int kReport = kRate / 10; // frames per 100 ms report

LDBMC Levels(int db) {
    LDBMC levels;
    levels.count = 2;
    levels.values[0] = levels.values[1] = static_cast<int8_t>(db);
    return levels;
}

// Feeds one level per report while the recording grows by 100 ms each; returns the report
// indexes at which a start was verified and a track ended.
struct Outcome {
    std::vector<int> verified;
    std::vector<int> ended;
};

Outcome Feed(LTrackDetector& detector, const std::vector<int>& levels) {
    Outcome outcome;
    int position = 0;
    for (int i = 0; i < static_cast<int>(levels.size()); ++i) {
        position += kReport;
        const LTrackDetector::Result result = detector.OnLevel(Levels(levels[i]), position, kRate);
        if (result.verified) outcome.verified.push_back(i);
        if (result.ended) {
            outcome.ended.push_back(i);
            detector.Reset();
            position = 0;
        }
    }
    return outcome;
}

std::vector<int> Reports(int db, int reports) {
    return std::vector<int>(static_cast<std::size_t>(reports), db);
}

std::vector<int> operator+(std::vector<int> a, const std::vector<int>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Level reports one per 100 ms against a floor of -25 dB: a start is verified two seconds after
// the candidate; a report below -23 dB opens the end check, which closes the track 1.6 s later
// (16 reports of one eighth of a second each).
TEST(TrackDetectorTest, VerifiesStartsAndEndsTracksFromTheLevels) {
    TempHome home;
    const struct {
        const char* what;
        LTrackDetector::Settings settings;
        std::vector<int> levels;
        std::vector<int> verified, ended;
    } cases[] = {
        {"waiting at the floor, then music: the candidate at report 10", {.noiseFloor = -25},
         Reports(-40, 10) + Reports(-12, 30), {30}, {}},
        {"a candidate that settles back to the floor + 4 dB is dropped", {.noiseFloor = -25},
         Reports(-19, 1) + Reports(-21, 18) + Reports(-40, 10), {}, {}},
        {"without waiting for audio the first report verifies",
         {.noiseFloor = -25, .recordAudioOnly = false}, Reports(-60, 1), {0}, {}},
        {"a gap after the music", {.noiseFloor = -25, .autoSplitTime = 2},
         Reports(-10, 50) + Reports(-30, 20), {20}, {66}},
        {"a quiet passage the music comes back into", {.noiseFloor = -25},
         Reports(-10, 50) + Reports(-30, 5) + Reports(-8, 40), {20}, {}},
        {"a gap quieter than every bound", {.noiseFloor = -25}, Reports(-10, 50) + Reports(-45, 20),
         {20}, {66}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        LTrackDetector detector(c.settings);
        const Outcome outcome = Feed(detector, c.levels);
        EXPECT_EQ(outcome.verified, c.verified);
        EXPECT_EQ(outcome.ended, c.ended);
    }
    EXPECT_EQ(LUserSettingGet<int>("RecordingPage", "LastAveragedBLevel", 0), -10);
}

TEST(FileNamePatternTest, ReplacesArguments) {
    setenv("TZ", "UTC", 1);
    tzset();
    const std::time_t july5 = 1278331200; // 2010-07-05 12:00:00
    const struct {
        const char* pattern;
        int number;
        const char* expected;
    } cases[] = {
        {"Rec %YYYY%-%MM%-%DD% %autonumber%", 3, "Rec 2010-07-05 03"},
        {"Side %AUTONUMBER%", 123, "Side 123"},
        {"a%unknown%b", 1, "ab"},
        {"100%% %HH%:%MIN%:%SS%", 1, "100% 12:00:00"},
        {"open %YYYY", 1, "open 2010"},
    };
    for (const auto& c : cases) {
        char out[260];
        CreateFormatedFileName(out, c.pattern, c.number, july5);
        EXPECT_STREQ(out, c.expected) << c.pattern;
    }
}

TEST(RecordingNamesTest, SkipNamesOfFilesCopiesAndQueuedOutputs) {
    TempHome home;
    const fs::path output = home.Path() / "out";
    const fs::path copies = home.Path() / "copies";
    fs::create_directories(output);
    fs::create_directories(copies);
    LUserSettingSetString("OutputFormat", "FileNameFormat", "Side %autonumber% %YYYY%");
    char year[8];
    const std::time_t now = std::time(nullptr);
    std::strftime(year, sizeof year, "%Y", std::localtime(&now));
    const std::string y = year;
    // 03 is in the output folder, 04 among the copies, 05 waits in the queue (another case).
    std::ofstream(output / ("Side 03 " + y + ".mp3")) << "x";
    std::ofstream(copies / ("Side 04 " + y + ".wav")) << "x";
    const std::vector<std::string> queued = {(output / ("side 05 " + y + ".mp3")).string()};
    iNextAutoNumber = 3;
    char name[260];
    GetNewRecordingFileName(name, {output.string(), copies.string()}, queued);
    EXPECT_EQ(std::string(name), "Side 06 " + y);
    EXPECT_EQ(iNextAutoNumber, 7);
}

TEST(DiscSpaceTest, TextsForDataDiscsAndAudioCDs) {
    TempHome home;
    EXPECT_EQ(LRecordingBytes(LSoundTime(90'000)), 15'876'000);
    LUserSettingSetString("CD", "Capacity", "700 MB");
    EXPECT_EQ(GetRemainingCDSpace(2, LSoundTime(90'000), false, {}, {}), "684.859 MB");
    LUserSettingSet<int>("RecordingPage", "TotalSize", 700 * 1048576);
    EXPECT_EQ(GetRemainingCDSpace(3, LSoundTime(90'000), false, {}, {}),
              "-15.141 MB (Disc Capacity Exceeded)");
    LUserSettingSetString("CD", "Capacity", "0 MB");
    EXPECT_EQ(GetRemainingCDSpace(2, LSoundTime(0), false, {}, {}), "0.000 MB (Disc Already Used)");
    LUserSettingSetString("CD", "Capacity", "1:20:00");
    EXPECT_EQ(GetRemainingCDSpace(4, LSoundTime(60'000), false, LSoundTime(600'000), {}),
              "1:09:00.00");
    EXPECT_EQ(GetRemainingCDSpace(4, LSoundTime(60'000), false, LSoundTime(5'000'000), {}),
              "0:00:00.00 (Disc Capacity Exceeded)");
    LUserSettingSetString("CD", "Capacity", "no disc in drive");
    EXPECT_EQ(GetRemainingCDSpace(4, {}, false, {}, {}), "no disc in drive");
    EXPECT_EQ(GetRemainingCDSpace(1, {}, false, {}, {}), "N/A");
}

TEST(LevelMeterScaleTest, GreenYellowOrangeRed) {
    LDBMeterScale scale;
    scale.CalculateColours(200);
    EXPECT_EQ(scale.MapDBToPixel(-48), 0);
    EXPECT_EQ(scale.MapDBToPixel(-24), 100);
    using Colour = LDBMeterScale::Colour;
    EXPECT_EQ(scale.ColourAt(0), (Colour{0, 0xFF00, 0}));
    EXPECT_EQ(scale.ColourAt(scale.MapDBToPixel(-24)), (Colour{0xFF00, 0xFF00, 0}));
    EXPECT_EQ(scale.MapPixelToColour(200), (Colour{0xFF00, 0x9900, 0}));
    EXPECT_EQ(scale.MapPixelToColour(201), (Colour{0xFF00, 0, 0}));
    EXPECT_EQ(scale.LabelStep(), 6);
}

} // namespace
