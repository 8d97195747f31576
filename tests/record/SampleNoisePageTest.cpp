// The noise page on the Virtual Turntable: a measurement over steady hiss, one over hiss that
// music interrupts (warned of until the user ticks the box), and floors typed by hand.
#include "record/SampleNoisePage.h"

#include "codecs/WaveFile.h"
#include "jobs/PlainMainQueue.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

// A side of `seconds` of square-wave hiss at `db` on the level scale, then music at -6 dB.
void WriteSide(const std::string& path, int db, double hissSeconds, double musicSeconds) {
    LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), 44100, 2, 16, 0);
    const int hiss = static_cast<int>(131072 * std::pow(10.0, db / 20.0));
    const int music = static_cast<int>(131072 * std::pow(10.0, -6 / 20.0));
    std::vector<int> block(2 * 441);
    const int blocks = static_cast<int>((hissSeconds + musicSeconds) * 100);
    for (int b = 0; b < blocks; ++b) {
        const int amplitude = b < hissSeconds * 100 ? hiss : music;
        for (size_t i = 0; i < block.size(); ++i) block[i] = (i / 2) % 2 ? amplitude : -amplitude;
        sink->Write(block.data(), 441);
    }
}

class SampleNoisePageTest : public ::testing::Test {
protected:
    SampleNoisePageTest() {
        LMainThreadQueue::SetCurrent(&queue_);
        SetUserInteraction(&ui_);
        LUserSettingSet<int>("Recording", "Volume", 0); // the input as it is
    }
    ~SampleNoisePageTest() override {
        SetUserInteraction(nullptr);
        LMainThreadQueue::SetCurrent(nullptr);
    }

    // Measures over the side and returns the page's status; `then` runs on the page after.
    std::string Measure(const std::string& side,
                        const std::function<void(LSampleNoisePage&)>& then = {}) {
        setenv("VINORA_VIRTUAL_TURNTABLE", (side + ",speed=0").c_str(), 1);
        struct : LSampleNoiseView {
        } view;
        LSampleNoisePage page(view);
        page.SetDevice(LSoundRecordDevice("Virtual Turntable", 0));
        page.SetPaced(true);
        EXPECT_TRUE(page.StartRecorder());
        page.CmMeasure();
        EXPECT_FALSE(page.IsMeasureEnabled());
        EXPECT_TRUE(queue_.RunUntil([&] { return page.IsMeasureEnabled(); }, 20000))  << page.Status();
        if (then) then(page);
        return page.Status();
    }

    TempHome home_;
    LPlainMainQueue queue_;
    LScriptedUserInteraction ui_;
};

TEST_F(SampleNoisePageTest, AnInputThatEndsFirstGivesTheMeasurementUp) {
    const std::string shortSide = (home_.Path() / "short.wav").string();
    WriteSide(shortSide, -52, 0.5, 0);
    // Measuring again once the input has ended says why nothing can be measured.
    EXPECT_EQ(Measure(shortSide,
                      [](LSampleNoisePage& page) {
                          page.CmMeasure();
                          EXPECT_TRUE(page.IsMeasureEnabled());
                      }),
              "Noise floor is: -25 dB");
    ASSERT_EQ(ui_.Calls().size(), 2u);
    EXPECT_NE(ui_.Calls()[0].text.find("stopped before the noise floor"), std::string::npos);
    EXPECT_NE(ui_.Calls()[1].text.find("The sound input has stopped"), std::string::npos);
    EXPECT_EQ(LUserSettingGet<int>("Settings", "dBNoiseFloor", 0), 0);
}

TEST_F(SampleNoisePageTest, MeasuresHissAndWarnsOfMusicUntilToldNotTo) {
    const std::string hiss = (home_.Path() / "hiss.wav").string();
    WriteSide(hiss, -52, 4, 0);
    EXPECT_EQ(Measure(hiss), "Noise floor is: -52 dB");
    EXPECT_EQ(LUserSettingGet<int>("Settings", "dBNoiseFloor", 0), -52);
    EXPECT_TRUE(ui_.Calls().empty());

    const std::string music = (home_.Path() / "music.wav").string();
    WriteSide(music, -52, 1, 3);
    ui_.QueueAnswer(LMessageAnswer::Yes); // ticks "Don't Show This Warning Again"
    // The floor is the upper tenth of the levels heard, the music's here.
    EXPECT_EQ(Measure(music), "Noise floor is: -6 dB");
    EXPECT_EQ(LLastNoiseFloorText(), "Last Set Noise Floor: -6 dB");
    ASSERT_EQ(ui_.Calls().size(), 1u);
    EXPECT_EQ(ui_.Calls()[0].caption, "Warning");
    EXPECT_TRUE(LUserSettingGet<bool>("Settings", "dBNoiseFloorWarning", false));
    // Another file: the turntable goes on where it left a side it played before.
    const std::string again = (home_.Path() / "again.wav").string();
    WriteSide(again, -52, 1, 3);
    Measure(again);
    EXPECT_EQ(ui_.Calls().size(), 1u);
}

TEST_F(SampleNoisePageTest, TypedFloorsOutsideTheUsualRangeAreConfirmed) {
    struct : LSampleNoiseView {
    } view;
    LSampleNoisePage page(view);
    EXPECT_EQ(page.LastSetText(), "Last Set Noise Floor: Not set yet");
    EXPECT_TRUE(page.CmOk(true, -50));
    EXPECT_TRUE(ui_.Calls().empty());
    ui_.QueueAnswer(LMessageAnswer::Cancel);
    EXPECT_FALSE(page.CmOk(true, -61));
    EXPECT_EQ(LUserSettingGet<int>("Settings", "dBNoiseFloor", 0), -50);
    ui_.QueueAnswer(LMessageAnswer::Ok);
    EXPECT_TRUE(page.CmOk(true, 13));
    EXPECT_EQ(ui_.Calls().size(), 2u);
    EXPECT_EQ(LUserSettingGet<int>("Settings", "dBNoiseFloor", 0), 13);
    EXPECT_EQ(LSampleNoisePage(view).Status(), "[Custom Noise Floor Being Used]");
}

} // namespace
