// A recording session whose file cannot take more audio (a full disk) stops, keeps what was
// recorded and says so, instead of recording on into nothing. A recording left by a program
// that was killed while it recorded is kept at the next start, and one still being recorded is
// left alone.
#include "record/RecordingPage.h"

#include "codecs/WaveFile.h"
#include "jobs/PlainMainQueue.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/FileOps.h"
#include "platform/Settings.h"
#include "record/RecordingsInProgress.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sys/resource.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kRate = 44100;

class Session : public LRecordingHost, public LRecordingView {
public:
    explicit Session(const fs::path& home) : home_(home) {}

    std::string OutputFolder() override { return (home_ / "out").string(); }
    bool TempWavePath(char* out) override { return GetTempFile(home_.c_str(), out, ".wav"); }
    bool QueueConversion(const LProcessConvert& request) override {
        queued.push_back(request);
        return true;
    }
    std::vector<std::string> QueuedOutputs() override { return {}; }
    void PostToMainWindow(int, int) override {}

    std::vector<LProcessConvert> queued;

private:
    fs::path home_;
};

// While it lives, no file this process writes grows past `bytes`; a write beyond fails with
// EFBIG, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &old_);
        signal_ = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, old_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, signal_);
    }

private:
    rlimit old_{};
    void (*signal_)(int) = nullptr;
};

} // namespace

class RecordingPageSafety : public testing::Test {
protected:
    RecordingPageSafety() {
        LMainThreadQueue::SetCurrent(&queue_);
        SetUserInteraction(&ui_);
        LUserSettingSet<int>("Settings", "dBNoiseFloor", -40);
        LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 0);
    }
    ~RecordingPageSafety() override {
        unsetenv("VINORA_VIRTUAL_TURNTABLE");
        SetUserInteraction(nullptr);
        LMainThreadQueue::SetCurrent(nullptr);
    }

    // A wave file of `seconds` of loud tone.
    fs::path Tone(const char* name, int seconds) {
        const fs::path path = home_.Path() / name;
        LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), kRate, 2, 16, 0);
        std::vector<int> tone(static_cast<size_t>(seconds * kRate) * 2);
        for (size_t i = 0; i < tone.size(); ++i)
            tone[i] = (i / 100) % 2 ? 262144 : -262144;
        sink->Write(tone.data(), seconds * kRate);
        return path;
    }

    // The session of a page recording `side` from the Virtual Turntable.
    std::unique_ptr<LRecordingPage> Page(const fs::path& side) {
        setenv("VINORA_VIRTUAL_TURNTABLE", (side.string() + ",speed=0").c_str(), 1);
        auto page = std::make_unique<LRecordingPage>(session_, session_);
        page->SetDevice(LSoundRecordDevice("Virtual Turntable", 0));
        page->SetPaced(true);
        return page;
    }

    TempHome home_;
    LPlainMainQueue queue_;
    LScriptedUserInteraction ui_;
    Session session_{home_.Path()};
};

TEST_F(RecordingPageSafety, AFullDiskStopsTheRecordingAndKeepsWhatItHolds) {
    // Eight seconds of tone, of which the disk takes four.
    std::unique_ptr<LRecordingPage> page = Page(Tone("side.wav", 8));
    {
        FileSizeLimit limit(4 * kRate * 4);
        page->CmRecord(false);
        EXPECT_TRUE(queue_.RunUntil([&] { return !page->IsRecording(); }, 20000));
    }
    ASSERT_EQ(ui_.Calls().size(), 1u);
    EXPECT_NE(ui_.Calls()[0].text.find("could not be written any further"), std::string::npos);
    ASSERT_EQ(session_.queued.size(), 1u);
    LSoundSource kept = LWaveFile::OpenSource(session_.queued[0].sourcePath);
    EXPECT_EQ(kept->GetError(), sndErrNone);
    EXPECT_GT(kept->GetEndSample(), 3 * kRate);
}

TEST_F(RecordingPageSafety, ARecordingLeftByAKilledProgramIsKeptAtTheNextStart) {
    const std::string output = session_.OutputFolder();
    std::unique_ptr<LRecordingPage> page = Page(Tone("side.wav", 8));
    page->CmRecord(false);
    ASSERT_TRUE(queue_.RunUntil([&] { return page->CurrentPosition() >= 3 * kRate; }, 20000));
    // Another program starting meanwhile leaves the recording being made alone.
    EXPECT_TRUE(LRecoverAbandonedRecordings(output).empty());
    page->CmStopSession(false);
    ASSERT_EQ(session_.queued.size(), 1u);
    // Queued, it is the queue's: nothing is left to recover.
    EXPECT_TRUE(LRecoverAbandonedRecordings(output).empty());
    EXPECT_TRUE(fs::exists(session_.queued[0].sourcePath));

    // A program killed while it recorded never says that its recording ended.
    const fs::path left = Tone("0AbCdEf.wav", 1);
    LNoteRecordingStarted(left.c_str(), "Untitled 07");
    const std::vector<std::string> recovered = LRecoverAbandonedRecordings(output);
    const fs::path kept = fs::path(output) / "Recovered Recordings" / "Untitled 07.wav";
    EXPECT_EQ(recovered, std::vector<std::string>{kept.string()});
    EXPECT_EQ(LWaveFile::OpenSource(kept.c_str())->GetError(), sndErrNone);
    EXPECT_TRUE(LRecoverAbandonedRecordings(output).empty());
}
