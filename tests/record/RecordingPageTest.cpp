// The recording session's commands over the Virtual Turntable playing a test file as fast as
// the session takes its level reports: record, pause, resume, stop, discard, the minimum length,
// a queue that refuses, and exit; what is kept, queued, told and posted to the main window.
#include "record/RecordingPage.h"

#include "codecs/WaveFile.h"
#include "jobs/PlainMainQueue.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/FileOps.h"
#include "platform/Settings.h"
#include "record/RecordingOutput.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kRate = 44100;

// Plays the turntable, keeps what the session hands over and what it tells.
class RecordingPageTest : public testing::Test, public LRecordingHost, public LRecordingView {
protected:
    RecordingPageTest() {
        LMainThreadQueue::SetCurrent(&queue_);
        SetUserInteraction(&ui_);
        fs::create_directories(Output());
        fs::create_directories(home_.Path() / "tmp");
        LUserSettingSet<int>("Settings", "dBNoiseFloor", -40);
        LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 0);
        iNextAutoNumber = 1;
    }
    ~RecordingPageTest() override {
        unsetenv("VINORA_VIRTUAL_TURNTABLE");
        SetUserInteraction(nullptr);
        LMainThreadQueue::SetCurrent(nullptr);
    }

    fs::path Output() const { return home_.Path() / "out"; }

    // A side of `seconds` of a 440 Hz tone at half of full scale, played as the input. Each
    // side needs its own name: the turntable keeps its place in a file between recordings.
    void PlaySide(const std::string& name, double seconds) {
        const fs::path side = home_.Path() / name;
        int status = -1;
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(side) + " synth " +
                       std::to_string(seconds) + " sine 440 vol 0.5",
                   &status);
        ASSERT_EQ(status, 0);
        setenv("VINORA_VIRTUAL_TURNTABLE", (side.string() + ",speed=0").c_str(), 1);
    }

    std::unique_ptr<LRecordingPage> Page() {
        auto page = std::make_unique<LRecordingPage>(*this, *this);
        page->SetDevice(LSoundRecordDevice("Virtual Turntable", 0));
        page->SetPaced(true);
        return page;
    }

    // Lets the session record until its file holds `seconds`.
    void RecordUntil(LRecordingPage& page, double seconds) {
        ASSERT_TRUE(queue_.RunUntil(
            [&] { return page.CurrentPosition() >= static_cast<int>(seconds * kRate); }, 20000));
    }

    bool Posted(int message, int value) const {
        return std::ranges::find(posted_, std::pair{message, value}) != posted_.end();
    }

    std::string OutputFolder() override { return Output().string(); }
    bool TempWavePath(char* out) override {
        return GetTempFile((home_.Path() / "tmp").c_str(), out, ".wav");
    }
    bool QueueConversion(const LProcessConvert& request) override {
        if (refuse_) return false;
        queued_.push_back(request);
        return true;
    }
    std::vector<std::string> QueuedOutputs() override {
        std::vector<std::string> outputs;
        for (const LProcessConvert& request : queued_)
            outputs.emplace_back(request.destinationPath);
        return outputs;
    }
    void PostToMainWindow(int message, int value) override { posted_.emplace_back(message, value); }
    void TrackKept(const std::string& name, const std::string&, LSoundTime length,
                   LSoundTime) override {
        kept_.push_back({name, length});
    }
    void TrackDiscarded(const std::string& name, LSoundTime) override { discarded_.push_back(name); }

    TempHome home_;
    LPlainMainQueue queue_;
    LScriptedUserInteraction ui_;
    bool refuse_ = false;
    std::vector<LProcessConvert> queued_;
    std::vector<std::pair<int, int>> posted_;
    struct Kept {
        std::string name;
        LSoundTime length;
    };
    std::vector<Kept> kept_;
    std::vector<std::string> discarded_;
};

// A track verified before a pause is kept by a Stop, a resume and a Stop, or the end of the
// input, before the detector has verified it again; the recorded time goes on from the pause
// instead of counting the part before it twice.
TEST_F(RecordingPageTest, AVerifiedTrackSurvivesPauseResumeAndStop) {
    enum class Then { StopPaused, ResumeAndStop, ResumeToTheEnd };
    for (const Then then : {Then::StopPaused, Then::ResumeAndStop, Then::ResumeToTheEnd}) {
        PlaySide("side" + std::to_string(static_cast<int>(then)) + ".wav", 6);
        kept_.clear();
        queued_.clear();
        std::unique_ptr<LRecordingPage> page = Page();
        page->CmRecord(false);
        EXPECT_TRUE(Posted(WM_RECORDING_SESSION_ENDED, 0));
        RecordUntil(*page, 2.8);
        EXPECT_EQ(page->Status(), "Recording");
        page->CmRecordPause();
        ASSERT_TRUE(page->IsPaused());
        const int paused = page->CurrentPosition();
        if (then == Then::StopPaused) {
            page->CmStopSession(false);
        } else {
            page->CmRecord(true);
            EXPECT_EQ(page->Status(), "Recording");
            RecordUntil(*page, paused / double(kRate) + 1.0);
            LSoundTime shown;
            shown.SetText(page->RecordedTime().c_str());
            EXPECT_NEAR(shown.GetMS(), page->CurrentPosition() * 1000.0 / kRate, 250);
            if (then == Then::ResumeAndStop)
                page->CmStopSession(false);
            else
                ASSERT_TRUE(queue_.RunUntil([&] { return !page->IsRecording(); }, 20000));
        }
        ASSERT_EQ(kept_.size(), 1u);
        ASSERT_EQ(queued_.size(), 1u);
        EXPECT_TRUE(fs::exists(queued_[0].sourcePath));
        EXPECT_GE(kept_[0].length.GetMS(), paused * 1000LL / kRate);
        EXPECT_FALSE(Posted(WM_RECORDING_DISCARDED, 0));
        fs::remove(queued_[0].sourcePath);
    }
}

// A recorder that cannot start again leaves the paused recording as it was: still there,
// still paused, kept by a later Stop.
TEST_F(RecordingPageTest, AResumeThatFailsKeepsThePausedRecording) {
    PlaySide("side.wav", 6);
    std::unique_ptr<LRecordingPage> page = Page();
    page->CmRecord(false);
    RecordUntil(*page, 2.8);
    page->CmRecordPause();
    const char* side = std::getenv("VINORA_VIRTUAL_TURNTABLE");
    const std::string playing = side;
    setenv("VINORA_VIRTUAL_TURNTABLE", (home_.Path() / "gone.wav,speed=0").c_str(), 1);
    page->CmRecord(true);
    setenv("VINORA_VIRTUAL_TURNTABLE", playing.c_str(), 1);
    ASSERT_EQ(ui_.Calls().size(), 1u);
    EXPECT_NE(ui_.Calls()[0].text.find("cannot open the sound device"), std::string::npos);
    EXPECT_TRUE(page->IsRecording());
    EXPECT_TRUE(page->IsPaused());
    EXPECT_EQ(std::distance(fs::directory_iterator(home_.Path() / "tmp"), {}), 1);

    page->CmStopSession(false);
    ASSERT_EQ(queued_.size(), 1u);
    EXPECT_TRUE(fs::exists(queued_[0].sourcePath));
    EXPECT_TRUE(Posted(WM_RECORDING_SESSION_ENDED, 1));
}

// What is not kept gives its name's number back and tells the main window; a recording the
// queue refuses is kept where the user finds it, and the user is told.
TEST_F(RecordingPageTest, DiscardsShortRecordingsAndKeepsWhatTheQueueRefuses) {
    const fs::path tmp = home_.Path() / "tmp";
    PlaySide("side.wav", 30);
    std::unique_ptr<LRecordingPage> page = Page();

    // Stop and discard.
    page->CmRecord(false);
    EXPECT_EQ(page->Name(), "Untitled 01");
    RecordUntil(*page, 2.5);
    page->CmStopSession(true);
    EXPECT_EQ(discarded_, std::vector<std::string>{"Untitled 01"});
    EXPECT_TRUE(Posted(WM_RECORDING_DISCARDED, 0));
    EXPECT_EQ(iNextAutoNumber, 1);

    // A stop before any verified start.
    posted_.clear();
    page->CmRecord(false);
    EXPECT_EQ(page->Name(), "Untitled 01");
    RecordUntil(*page, 1.0);
    page->CmStopSession(false);
    EXPECT_TRUE(Posted(WM_RECORDING_DISCARDED, 0));
    EXPECT_TRUE(queued_.empty());

    // Verified but shorter than the minimum.
    posted_.clear();
    LUserSettingSet<bool>("Settings", "UseMinTime", true);
    LUserSettingSetString("Settings", "MinTime", "0:00:05.00");
    page->CmRecord(false);
    RecordUntil(*page, 3.0);
    page->CmStopSession(false);
    EXPECT_TRUE(queued_.empty());
    EXPECT_TRUE(Posted(WM_RECORDING_DISCARDED, 0));
    EXPECT_EQ(iNextAutoNumber, 1);
    EXPECT_TRUE(fs::is_empty(tmp));
    LUserSettingSet<bool>("Settings", "UseMinTime", false);

    // The queue refuses: the recording moves to "Recovered Recordings" under its name.
    ui_.ClearCalls();
    refuse_ = true;
    page->CmRecord(false);
    RecordUntil(*page, 3.0);
    page->CmStopSession(false);
    const fs::path kept = Output() / "Recovered Recordings" / "Untitled 01.wav";
    EXPECT_TRUE(fs::exists(kept));
    EXPECT_EQ(LWaveFile::OpenSource(kept.c_str())->GetError(), sndErrNone);
    EXPECT_TRUE(fs::is_empty(tmp));
    ASSERT_EQ(ui_.Calls().size(), 1u);
    EXPECT_NE(ui_.Calls()[0].text.find(kept.string()), std::string::npos);

    // The next name is free of the queued outputs; exit while recording asks, and discards.
    refuse_ = false;
    page->CmRecord(false);
    EXPECT_EQ(page->Name(), "Untitled 02");
    RecordUntil(*page, 1.0);
    ui_.QueueAnswer(LMessageAnswer::Cancel);
    EXPECT_FALSE(page->CmExit());
    EXPECT_TRUE(page->IsRecording());
    EXPECT_TRUE(page->CmExit());
    EXPECT_FALSE(page->IsRecording());
    EXPECT_TRUE(fs::is_empty(tmp));
}

// A name typed for the recording that an existing file or a queued output already has gets a
// number, so the conversion has no file to replace.
TEST_F(RecordingPageTest, ATypedNameThatIsTakenGetsANumber) {
    PlaySide("side.wav", 12);
    std::ofstream(Output() / "Side A.wav") << "keep";
    std::unique_ptr<LRecordingPage> page = Page();
    for (const char* expected : {"Side A (2).wav", "Side A (3).wav"}) {
        page->CmRecord(false);
        page->SetName("Side A");
        RecordUntil(*page, 3.0);
        page->CmStopSession(false);
        ASSERT_FALSE(queued_.empty());
        EXPECT_EQ(fs::path(queued_.back().destinationPath).filename(), expected);
    }
}

// A session that starts on a disc already too full shows the capacity tip once.
TEST_F(RecordingPageTest, ASessionStartingOverTheDiscCapacityShowsTheTipOnce) {
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 2);
    LUserSettingSetString("CD", "Capacity", "1 MB");
    LUserSettingSet<int>("RecordingPage", "TotalSize", 2 * 1048576);
    for (int session = 0; session < 2; ++session) {
        ui_.ClearCalls();
        std::unique_ptr<LRecordingPage> page = Page();
        EXPECT_NE(page->RemainingDiscSpace().find("(Disc Capacity Exceeded)"), std::string::npos);
        ASSERT_EQ(ui_.Calls().size(), 1u) << session;
        EXPECT_EQ(ui_.Calls()[0].kind, LInteractionKind::Tip);
        EXPECT_EQ(ui_.Calls()[0].caption, "Disc Capacity Exceeded");
        page->CmRecord(false);
        page->CmStopSession(true);
        EXPECT_EQ(ui_.Calls().size(), 1u) << "once a session";
    }
}

} // namespace
