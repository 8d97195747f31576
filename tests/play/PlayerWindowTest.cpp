// The play-and-split window's logic with a scripted player: the position and its waveform
// view, End, scanning and its follow-ups, split points, and the waveform's columns.
#include "play/PlayerWindow.h"

#include "jobs/ScriptedUserInteraction.h"
#include "platform/Settings.h"
#include "restore/CueSpeed.h"
#include "support/BufferSource.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

namespace fs = std::filesystem;

namespace {

// Plays nothing; tells its listener of a stop at once, as the sound player does.
class ScriptedOutput : public LPlayerOutput {
public:
    bool Start(LSoundSource& source) override {
        playing = true;
        started = source;
        ++starts;
        return true;
    }
    void Stop() override {
        if (!std::exchange(playing, false)) return;
        if (listener) listener->spntfStop(0);
    }
    bool IsPlaying() const override { return playing; }
    void SetPlayVolume(LDB db) override { volume = db; }
    void SetDevice(const LSoundPlayDevice&) override {}
    void SetListener(LSoundPlayerNotify* target, long) override { listener = target; }

    bool playing = false;
    int starts = 0;
    int volume = 0;
    LSoundSource started;
    LSoundPlayerNotify* listener = nullptr;
};

struct FakeView : LPlayerView {
    void SetTrackLengthText(const std::string& text) override { length = text; }
    void SetTimeText(const std::string& text) override { time = text; }
    void SetSlider(int percent) override { slider = percent; }
    void SetLevel(const LDBMC&) override {}
    void ClearLevel() override {}
    void ControlsChanged() override {}
    void CursorChanged() override {}
    void SplitPointsChanged() override {}
    void ShowSplitTip(const char* text) override { tip = text; }
    void Close() override { closed = true; }

    std::string length, time, tip;
    int slider = -1;
    bool closed = false;
};

class PlayerWindowTest : public testing::Test {
protected:
    PlayerWindowTest() {
        SetUserInteraction(&ui);
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(song) + " synth 5 sine 440 vol 0.5");
    }
    ~PlayerWindowTest() override { SetUserInteraction(nullptr); }

    // The first frame and the length of the waveform view.
    std::pair<int, int> View() {
        LWaveControl& wave = dialog.Wave();
        wave.SetWidth(1);
        return {wave.FrameAtX(0), wave.FrameAtX(1) - wave.FrameAtX(0)};
    }

    TempHome home;
    fs::path song = home.Path() / "song.wav";
    LScriptedUserInteraction ui;
    LVinoraPlayerInfo info{song.string()};
    ScriptedOutput output;
    FakeView view;
    std::vector<std::vector<int>> splits;
    int reloads = 0;
    LVNPlayDlg dialog{info, output, view,
                      [this](const std::string&, const std::vector<int>& positions) {
                          splits.push_back(positions);
                      },
                      [this] { ++reloads; }};
};

TEST_F(PlayerWindowTest, TheTimeMovesTheSliderAndATwoSecondWaveformView) {
    dialog.InitDialog();
    EXPECT_EQ(view.length, "Track Length: 0:00:05.000");
    EXPECT_TRUE(output.playing);

    dialog.spntfTime(LSoundTime(3000), 0);
    EXPECT_EQ(view.time, "0:00:03.000");
    EXPECT_EQ(view.slider, 60);
    EXPECT_EQ(dialog.Wave().GetCursor(), 132300);
    EXPECT_EQ(View(), std::make_pair(88200, 88200));
    dialog.SetTime(LSoundTime(-20));
    EXPECT_EQ(view.time, "0:00:00.000");
    EXPECT_EQ(View(), std::make_pair(0, 88200));

    // End while playing goes 1.5 seconds before the end and plays on from there.
    dialog.Command(pcEnd);
    EXPECT_EQ(dialog.GetTime().GetMS(), 3500);
    EXPECT_EQ(output.started->GetPositionSample(), 154350);
    EXPECT_TRUE(output.playing);
    // Stopped, it goes to the end itself.
    dialog.Command(pcStop);
    EXPECT_EQ(dialog.GetTime().GetMS(), 0);
    dialog.Command(pcEnd);
    EXPECT_EQ(dialog.GetTime().GetMS(), 5000);
    EXPECT_FALSE(output.playing);

    dialog.Command(pcSlider, 50);
    EXPECT_EQ(dialog.GetTime().GetMS(), 2500);
    dialog.Command(pcPlayEnd);
    EXPECT_EQ(output.started->GetPositionSample(), 88200);
    dialog.Command(pcClose);
    EXPECT_TRUE(view.closed);
}

TEST_F(PlayerWindowTest, ScanningUsesTheSpeedStageAndThenDoesWhatThePlayerWasDoing) {
    dialog.InitDialog();
    dialog.spntfTime(LSoundTime(2000), 0);
    struct Case {
        const char* state;
        std::vector<int> into; // the commands that bring the player into the state
        int down, up;
        bool playingAfter, pausedAfter;
    } cases[] = {
        {"playing", {pcPlay}, pcForwardDown, pcForwardUp, true, false},
        {"paused", {pcPlay, pcPause}, pcBackDown, pcBackUp, false, true},
        {"stopped", {pcStop}, pcForwardKey, pcForwardUp2, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.state);
        for (const int command : c.into)
            dialog.Command(command);
        dialog.spntfTime(LSoundTime(2000), 0);
        dialog.Command(c.down);
        EXPECT_NE(dialog.GetScan(), LPlayerBaseDlg::Scan::None);
        EXPECT_NE(dynamic_cast<LSRCSpeed*>(output.started.Get()), nullptr);
        const int starts = output.starts;
        dialog.Command(c.down); // a second press while scanning does nothing
        EXPECT_EQ(output.starts, starts);
        dialog.spntfTime(LSoundTime(2500), 0); // where the scan got to
        dialog.Command(c.up);
        EXPECT_EQ(dialog.GetScan(), LPlayerBaseDlg::Scan::None);
        EXPECT_EQ(output.playing, c.playingAfter);
        EXPECT_EQ(dialog.IsPaused(), c.pausedAfter);
        EXPECT_EQ(dialog.GetTime().GetMS(), 2500);
        if (c.playingAfter) {
            EXPECT_EQ(output.started->GetPositionSample(), 110250);
        }
    }
    // Playback that ends during a scan ends the scan.
    dialog.Command(pcForwardDown);
    output.Stop();
    EXPECT_EQ(dialog.GetScan(), LPlayerBaseDlg::Scan::None);
}

TEST_F(PlayerWindowTest, SplitPointsComeFromTheCursorOnceEachAndGoOutSorted) {
    dialog.InitDialog();
    dialog.Command(pcSplit);
    EXPECT_EQ(view.tip, "Please add one or more split points");

    dialog.Wave().SetCursor(0);
    dialog.Command(pcAddCursorPoint);
    dialog.Wave().SetCursor(220500);
    dialog.Command(pcAddCursorPoint);
    dialog.Wave().SetCursor(230000); // beyond the end
    dialog.Command(pcAddCursorPoint);
    ASSERT_EQ(ui.Calls().size(), 2u);
    EXPECT_EQ(ui.Calls()[0].caption, "Add Cursor Point");
    EXPECT_NE(ui.Calls()[0].text.find("at the start"), std::string::npos);
    EXPECT_NE(ui.Calls()[1].text.find("at the end"), std::string::npos);
    EXPECT_TRUE(dialog.SplitPoints().empty());

    dialog.SetTime(LSoundTime(3000)); // the view starts at 88,200
    dialog.Wave().SetWidth(100);      // 882 frames per pixel
    dialog.OnWaveClick(50);
    EXPECT_EQ(dialog.Wave().GetCursor(), 88200 + 44100);
    dialog.Command(pcAddCursorPoint);
    dialog.Command(pcAddCursorPoint);
    dialog.Wave().SetCursor(44100);
    dialog.Command(pcAddCursorPoint);
    EXPECT_EQ(dialog.SplitPoints(), (std::vector<std::string>{"0:00:03.000", "0:00:01.000"}));
    EXPECT_EQ(dialog.SelectedPoint(), 1);

    dialog.Command(pcSplit);
    ASSERT_EQ(splits.size(), 1u);
    EXPECT_EQ(splits[0], (std::vector<int>{44100, 132300}));

    dialog.Command(pcRemovePoint);
    EXPECT_EQ(dialog.SplitPoints(), std::vector<std::string>{"0:00:03.000"});
    EXPECT_EQ(dialog.SelectedPoint(), 0);
}

TEST_F(PlayerWindowTest, AVanishedFileIsReportedAndTheListReloaded) {
    fs::remove(song);
    dialog.InitDialog();
    ASSERT_EQ(ui.Calls().size(), 1u);
    EXPECT_NE(ui.Calls()[0].text.find("doesn't exist!"), std::string::npos);
    EXPECT_EQ(reloads, 1);
    EXPECT_FALSE(output.playing);
    EXPECT_EQ(LVinoraPlayerInfo("/x/a.WAV").OpenSource()->GetError(), sndErrClosed);
}

TEST_F(PlayerWindowTest, TheDeviceChoiceIsStored) {
    dialog.Command(pcDevice, 0);
    EXPECT_EQ(LUserSettingGetString("Player", "Device", ""), "[Default Sound Out]");
    dialog.Command(pcVolume, -6);
    EXPECT_EQ(output.volume, -6);
}

// Waits until the control shows columns (the scan thread's first pass).
std::vector<uint8_t> WaitForColumns(LWaveControl& wave, uint8_t at, size_t column) {
    std::vector<uint8_t> columns;
    for (int tries = 0; tries < 500; ++tries) {
        wave.CopyColumns(columns);
        if (columns.size() > column && columns[column] == at) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return columns;
}

TEST(WaveControlTest, ColumnsHoldEachColumnsPeakAndFollowTheView) {
    EXPECT_EQ(LWaveControl::ColumnValue(1023), 0);
    EXPECT_EQ(LWaveControl::ColumnValue(1024), 1);
    EXPECT_EQ(LWaveControl::ColumnValue(261120), 255);
    EXPECT_EQ(LWaveControl::ColumnValue(524272), 255);

    // Frames 0..999 at a peak of 10,240 (10), 1000..1999 at 102,400 (100), the rest silent.
    std::vector<int> samples(4000, 0);
    for (int i = 0; i < 2000; ++i)
        samples[i] = (i % 2 ? -1 : 1) * (i < 1000 ? 10240 : 102400);
    LWaveControl wave;
    std::vector<std::pair<int, int>> invalidated;
    std::mutex lock;
    wave.SetInvalidate([&](int first, int last) {
        std::lock_guard hold(lock);
        invalidated.emplace_back(first, last);
    });
    wave.SetWidth(4);
    wave.SetFrame(0, 2000);
    wave.SetSource(MakeBufferSource(samples, 44100, 1));
    EXPECT_EQ(WaitForColumns(wave, 100, 3), (std::vector<uint8_t>{10, 10, 100, 100}));

    // Moving by one column keeps three and measures the new one.
    wave.SetFrame(500, 2000);
    EXPECT_EQ(WaitForColumns(wave, 0, 3), (std::vector<uint8_t>{10, 100, 100, 0}));
    wave.StopScan();
    std::vector<uint8_t> columns;
    wave.CopyColumns(columns);
    EXPECT_EQ(columns, std::vector<uint8_t>(4, 0));
    std::lock_guard hold(lock);
    ASSERT_GE(invalidated.size(), 2u);
    EXPECT_EQ(invalidated.front(), std::make_pair(0, 4));
}

// A file source that finds out on reading that its samples end before its header said: it
// lowers its end then, and leaves in the buffer what an earlier read put there.
class ShortFileSource : public LSoundSourceBase {
public:
    // Loud up to `loud`, silent up to `end`; the header says `told`.
    ShortFileSource(int loud, int end, int told)
        : LSoundSourceBase(44100, 1, 524272), loud_(loud), realEnd_(end), end_(told) {}
    void Read(int* buffer, int frames) override {
        for (int f = 0; f < frames; ++f, ++position_)
            if (position_ < realEnd_) buffer[f] = position_ < loud_ ? 102400 : 0;
        if (position_ > realEnd_) end_ = std::min(end_, realEnd_);
    }
    int GetPositionSample() const override { return position_; }
    int GetEndSample() const override { return end_; }
    void Seek(int frame) override { position_ = frame; }

private:
    int loud_;
    int realEnd_;
    int end_;
    int position_ = 0;
};

TEST(WaveControlTest, AFileShorterThanItsHeaderShowsNothingPastItsEnd) {
    LWaveControl wave;
    wave.SetWidth(4);
    wave.SetFrame(0, 40000);
    // The first column is loud, the second quiet until the samples end halfway through it.
    wave.SetSource(LSoundSource(new ShortFileSource(10000, 15000, 40000)));
    EXPECT_EQ(WaitForColumns(wave, 100, 0), (std::vector<uint8_t>{100, 0, 0, 0}));
    wave.StopScan();
}

} // namespace
