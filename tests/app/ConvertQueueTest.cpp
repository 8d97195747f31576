// The program's queue of conversion requests running the real conversion job.
#include "app/ProcessListThread.h"

#include "codecs/WaveFile.h"
#include "jobs/PlainMainQueue.h"
#include "sound/SourceToSink.h"
#include "support/RecordingProgress.h"
#include "support/TempHome.h"
#include "support/ToneSignals.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

class NamesTarget : public LMainNotifyTarget {
public:
    std::vector<std::pair<int, std::string>> messages;
    void OnMainNotify(int message, const std::string& text, int) override {
        if (message != WM_NOTIFY_PROGRESS) messages.emplace_back(message, text);
    }
};

TEST(ConvertQueue, ConvertsEveryRequestAndAnnouncesTheOutputs) {
    TempHome home;
    LPlainMainQueue queue;
    NamesTarget target;
    gMainNotify.SetTarget(&target, &queue);

    LProcessListThread<LProcessConvert, MainProcessNotify> list;
    list.SetListFilePath((home.Path() / "vnprocesses.list").c_str(), STOP_KEEP_LIST, true);
    std::vector<std::pair<int, std::string>> expected;
    for (const char* name : {"one", "two"}) {
        const fs::path source = home.Path() / (std::string(name) + ".wav");
        {
            LPRSourceToSink pump;
            pump.source = MakeSineSource(22050, 1, 440, 100000, 22050);
            pump.sink = LWaveFile::OpenSinkPCM(source.c_str(), 22050, 1, 16, 0);
            RecordingProgress progress;
            ASSERT_EQ(Process(progress, pump), PROCESS_DONE);
        }
        LProcessConvert request;
        std::snprintf(request.sourcePath, sizeof request.sourcePath, "%s", source.c_str());
        std::snprintf(request.outputFolder, sizeof request.outputFolder, "%s",
                      (home.Path() / "out").c_str());
        std::snprintf(request.outputExtension, sizeof request.outputExtension, ".wav");
        request.restore = 0;
        request.deleteSource = 1;
        list.Add(request);
        const fs::path output = home.Path() / "out" / (std::string(name) + ".wav");
        expected.emplace_back(WM_NOTIFY_FILE, output.filename().string());
        expected.emplace_back(WM_NOTIFY_ADD, output.string());
    }
    EXPECT_TRUE(queue.RunUntil([&] { return !list.IsRunning(); }, 10000));
    queue.RunPending();
    gMainNotify.SetTarget(nullptr, nullptr);

    EXPECT_EQ(target.messages, expected);
    EXPECT_FALSE(fs::exists(home.Path() / "one.wav"));
    EXPECT_EQ(LWaveFile::OpenSource((home.Path() / "out" / "two.wav").c_str())->GetEndSample(),
              22050);
    EXPECT_EQ(fs::file_size(home.Path() / "vnprocesses.list"), 0u);
}

} // namespace
