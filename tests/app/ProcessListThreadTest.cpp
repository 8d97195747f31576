// The processing queue: the queue file, resuming, progress and stopping with a stand-in job
// that waits until the test lets it finish; the main window's reporter.
#include "app/ProcessListThread.h"

#include "jobs/PlainMainQueue.h"
#include "platform/File.h"
#include "platform/Settings.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

namespace fs = std::filesystem;

namespace {

// A request of the real request's size, naming itself.
struct TestRecord {
    char name[sizeof(LProcessConvert)] = {};
};

// What the stand-in jobs did, and how many of them may finish.
std::atomic<int> gAllowed{0};
std::atomic<int> gStarted{0};
std::atomic<double> gReport{-1};
std::mutex gRanMutex;
std::vector<std::string> gRan;

LProcessResult Process(LProcessInterface& progress, TestRecord& record) {
    const int index = gStarted++;
    while (gAllowed <= index)
        if (progress.ProcessWait(5)) return PROCESS_STOPPED;
    if (gReport >= 0) progress.SetProgress(gReport);
    std::lock_guard guard(gRanMutex);
    gRan.emplace_back(record.name);
    return PROCESS_DONE;
}

TestRecord Record(const char* name) {
    TestRecord record;
    std::strcpy(record.name, name);
    return record;
}

using TestList = LProcessListThread<TestRecord, MainProcessNotify>;
constexpr std::size_t kRecord = sizeof(TestRecord);

std::vector<uint8_t> Bytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

std::vector<uint8_t> Header(uint16_t version, uint16_t resumes, uint32_t size) {
    return {uint8_t(version), uint8_t(version >> 8), uint8_t(resumes),    uint8_t(resumes >> 8),
            uint8_t(size),    uint8_t(size >> 8),    uint8_t(size >> 16), uint8_t(size >> 24)};
}

// A header and the named records, then `extra` stray bytes.
void WriteList(const fs::path& path, std::vector<uint8_t> header,
               const std::vector<const char*>& names, std::size_t extra = 0) {
    for (const char* name : names) {
        const TestRecord record = Record(name);
        header.insert(header.end(), record.name, record.name + kRecord);
    }
    header.resize(header.size() + extra, 0);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(header.data()), std::streamsize(header.size()));
}

bool WaitFor(const std::function<bool()>& done) {
    for (int i = 0; i < 1000 && !done(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return done();
}

// Keeps the messages posted to the main window.
class RecordingTarget : public LMainNotifyTarget {
public:
    std::vector<std::tuple<int, std::string, int>> messages;
    void OnMainNotify(int message, const std::string& text, int value) override {
        messages.emplace_back(message, text, value);
    }
};

class ProcessListThreadTest : public testing::Test {
protected:
    void SetUp() override {
        gAllowed = 0;
        gStarted = 0;
        gReport = -1;
        gRan.clear();
        path_ = home_.Path() / "vnprocesses.list";
    }

    void Wait(TestList& list) {
        gAllowed = 1000;
        EXPECT_TRUE(WaitFor([&] { return !list.IsRunning(); }));
    }

    TempHome home_;
    fs::path path_;
};

TEST_F(ProcessListThreadTest, AddWritesTheHeaderOnceAndRunsInOrder) {
    std::ofstream(path_).close(); // an empty file is an empty queue
    TestList list;
    list.SetListFilePath(path_.c_str(), STOP_KEEP_LIST, true);
    EXPECT_FALSE(fs::exists(path_));

    list.Add(Record("one"));
    list.Add(Record("two"));
    const std::vector<uint8_t> bytes = Bytes(path_);
    ASSERT_EQ(bytes.size(), 8 + 2 * kRecord);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 8), Header(1, 0, 1825));
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data() + 8 + kRecord), "two");
    Wait(list);
    EXPECT_EQ(gRan, (std::vector<std::string>{"one", "two"}));
    EXPECT_EQ(fs::file_size(path_), 0u);

    // The ended thread starts again for the next request.
    list.Add(Record("three"));
    Wait(list);
    EXPECT_EQ(gRan.back(), "three");
}

// Another program running the queue (a command-line run beside the desktop program) holds it:
// the head is converted by one of them only, and a stop while waiting keeps the list.
TEST_F(ProcessListThreadTest, WaitsWhileAnotherProgramRunsTheQueue) {
    const std::string lock = path_.string() + ".lock";
    auto holdRun = [&] {
        LFile other(open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
        EXPECT_EQ(flock(other.GetFd(), LOCK_EX | LOCK_NB), 0);
        return other;
    };
    TestList list;
    list.SetListFilePath(path_.c_str(), STOP_KEEP_LIST, true);
    gAllowed = 1000;
    {
        const LFile other = holdRun();
        list.Add(Record("one"));
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        EXPECT_EQ(gStarted, 0);
        EXPECT_EQ(Bytes(path_).size(), 8 + kRecord);
    }
    Wait(list);
    EXPECT_EQ(gRan, (std::vector<std::string>{"one"}));

    const LFile other = holdRun();
    list.Add(Record("two"));
    list.StopThreadNow();
    EXPECT_EQ(gStarted, 1);
    EXPECT_EQ(Bytes(path_).size(), 8 + kRecord);
}

TEST_F(ProcessListThreadTest, ResumesALeftListAndKeepsTheStoppedRequest) {
    WriteList(path_, Header(1, 0, 1825), {"a", "b"});
    TestList list;
    list.SetListFilePath(path_.c_str(), STOP_KEEP_LIST, true);
    ASSERT_TRUE(WaitFor([] { return gStarted == 1; }));
    EXPECT_EQ(Bytes(path_)[2], 1); // resumed once
    gAllowed = 1;
    ASSERT_TRUE(WaitFor([] { return gStarted == 2; }));
    const std::vector<uint8_t> bytes = Bytes(path_);
    EXPECT_EQ(bytes.size(), 8 + kRecord);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 8), Header(1, 0, 1825));
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data() + 8), "b");
    list.StopThreadNow();
    EXPECT_EQ(Bytes(path_), bytes);

    // "FailCount" raises the number of resumes without progress.
    LUserSettingSet<int>("Settings", "FailCount", 5);
    WriteList(path_, Header(1, 5, 1825), {"a"});
    TestList().SetListFilePath(path_.c_str(), STOP_KEEP_LIST, false);
    EXPECT_EQ(Bytes(path_)[2], 6);
}

TEST_F(ProcessListThreadTest, StartUpDeletesForeignDamagedAndTooOftenResumedLists) {
    struct Case {
        std::vector<uint8_t> header;
        std::vector<const char*> records;
        std::size_t extra;
    };
    const Case cases[] = {
        {Header(2, 0, 1825), {"a"}, 0}, {Header(1, 0, 1824), {"a"}, 0},
        {Header(1, 0, 0), {"a"}, 0},    {Header(1, 2, 1825), {"a"}, 0}, // resumed twice already
        {{'a', 'b', 'c'}, {}, 0},       {Header(1, 0, 1825), {}, 100},  // partial head record
    };
    TestList list;
    for (const Case& c : cases) {
        WriteList(path_, c.header, c.records, c.extra);
        list.SetListFilePath(path_.c_str(), STOP_KEEP_LIST, true);
        Wait(list);
        EXPECT_FALSE(fs::exists(path_));
    }
    EXPECT_EQ(gStarted, 0);

    // A partial record after a whole one is dropped with it.
    WriteList(path_, Header(1, 0, 1825), {"a"}, 100);
    list.SetListFilePath(path_.c_str(), STOP_KEEP_LIST, true);
    Wait(list);
    EXPECT_EQ(gRan, std::vector<std::string>{"a"});
    EXPECT_EQ(fs::file_size(path_), 0u);
}

TEST_F(ProcessListThreadTest, StopBehaviours) {
    for (PROCESS_STOP_BEHAVIOR behaviour : {STOP_KEEP_LIST, STOP_DROP_ITEM, STOP_DELETE_LIST}) {
        gAllowed = 0;
        gStarted = 0;
        fs::remove(path_);
        TestList list;
        list.SetListFilePath(path_.c_str(), behaviour, true);
        list.Add(Record("first"));
        list.Add(Record("second"));
        ASSERT_TRUE(WaitFor([] { return gStarted == 1; }));
        list.StopThreadNow();
        if (behaviour == STOP_DELETE_LIST)
            EXPECT_FALSE(fs::exists(path_));
        else
            EXPECT_EQ(fs::file_size(path_), 8 + (behaviour == STOP_KEEP_LIST ? 2 : 1) * kRecord);
    }
    EXPECT_TRUE(gRan.empty());
}

TEST_F(ProcessListThreadTest, OverallProgressCountsTheRequestsOfThisRun) {
    LPlainMainQueue queue;
    RecordingTarget target;
    gMainNotify.SetTarget(&target, &queue);
    gReport = 0.5;

    TestList list;
    list.SetListFilePath(path_.c_str(), STOP_KEEP_LIST, true);
    for (const char* name : {"a", "b", "c"})
        list.Add(Record(name));
    Wait(list);
    queue.RunPending();
    gMainNotify.SetTarget(nullptr, nullptr);

    std::vector<int> percents;
    for (const auto& [message, text, value] : target.messages)
        if (message == WM_NOTIFY_PROGRESS) percents.push_back(value);
    // Half of the first of three is 16 %; the end shows 0.
    EXPECT_EQ(percents, (std::vector<int>{16, 50, 83, 0}));
}

TEST(MainNotify, PostsThroughTheMainThreadQueue) {
    LPlainMainQueue queue;
    RecordingTarget target;
    MainNotify notify;
    notify.NotifyProgress(0.5); // no window yet: dropped
    notify.SetTarget(&target, &queue);
    notify.SetStatusText("Converting...");
    notify.NotifyProgress(1.0);
    notify.NotifyProgress(1.5);
    notify.NotifyProgress(1.509);
    notify.SetStatusText("");
    notify.NotifyProgress(0.25);
    notify.NotifyFile("a.mp3");
    notify.NotifyAdd(std::string(300, 'x').c_str());
    EXPECT_TRUE(target.messages.empty());
    queue.RunPending();

    using M = std::tuple<int, std::string, int>;
    EXPECT_EQ(target.messages, (std::vector<M>{{2046, "Converting...", 100},
                                               {2046, "Converting...", 50},
                                               {2046, "", 25},
                                               {2045, "a.mp3", 0},
                                               {2042, std::string(259, 'x'), 0}}));

    // Posts still on their way when the window goes reach nothing.
    target.messages.clear();
    notify.NotifyFile("b.mp3");
    notify.SetTarget(nullptr);
    queue.RunPending();
    EXPECT_TRUE(target.messages.empty());
}

} // namespace
