// A recording session whose file cannot take more audio (a full disk) stops, keeps what was
// recorded and says so, instead of recording on into nothing.
#include "record/RecordingPage.h"

#include "codecs/WaveFile.h"
#include "jobs/PlainMainQueue.h"
#include "jobs/ScriptedUserInteraction.h"
#include "platform/FileOps.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sys/resource.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kRate = 44100;

class Session : public LRecordingHost, public LRecordingView {
public:
    explicit Session(const fs::path& home) : home_(home) {}

    std::string OutputFolder() override { return (home_ / "out").string(); }
    bool TempWavePath(char* out) override {
        return GetTempFile(home_.c_str(), out, ".wav");
    }
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

TEST(RecordingPageSafety, AFullDiskStopsTheRecordingAndKeepsWhatItHolds) {
    TempHome home;
    LPlainMainQueue queue;
    LMainThreadQueue::SetCurrent(&queue);
    LScriptedUserInteraction ui;
    SetUserInteraction(&ui);
    LUserSettingSet<int>("Settings", "dBNoiseFloor", -40);
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 0);

    // Eight seconds of tone, of which the disk takes four.
    const fs::path side = home.Path() / "side.wav";
    {
        LSoundSink sink = LWaveFile::OpenSinkPCM(side.c_str(), kRate, 2, 16, 0);
        std::vector<int> tone(static_cast<size_t>(8 * kRate) * 2);
        for (size_t i = 0; i < tone.size(); ++i)
            tone[i] = (i / 100) % 2 ? 262144 : -262144;
        sink->Write(tone.data(), 8 * kRate);
    }
    setenv("VINORA_VIRTUAL_TURNTABLE", (side.string() + ",speed=0").c_str(), 1);
    {
        Session session(home.Path());
        LRecordingPage page(session, session);
        page.SetDevice(LSoundRecordDevice("Virtual Turntable", 0));
        page.SetPaced(true);
        FileSizeLimit limit(4 * kRate * 4);
        page.CmRecord(false);
        EXPECT_TRUE(queue.RunUntil([&] { return !page.IsRecording(); }, 20000));

        ASSERT_EQ(ui.Calls().size(), 1u);
        EXPECT_NE(ui.Calls()[0].text.find("could not be written any further"), std::string::npos);
        ASSERT_EQ(session.queued.size(), 1u);
        LSoundSource kept = LWaveFile::OpenSource(session.queued[0].sourcePath);
        EXPECT_EQ(kept->GetError(), sndErrNone);
        EXPECT_GT(kept->GetEndSample(), 3 * kRate);
    }
    unsetenv("VINORA_VIRTUAL_TURNTABLE");
    SetUserInteraction(nullptr);
    LMainThreadQueue::SetCurrent(nullptr);
}
