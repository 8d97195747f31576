// The processing queue of vinora-cli killed (SIGKILL) while it converts, then run again: what
// the next run does with the requests left in the queue file.
#include "app/ProcessListThread.h"
#include "platform/FileOps.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <set>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kRecordSize = 1825;
// The first request is this long, so that the kill surely comes while it is being written.
constexpr int kLongSeconds = 60;
constexpr int kShortSeconds = 5;
// Output that shows the encoder is well into the first request (four seconds of 128 kbit/s).
constexpr std::uintmax_t kUnderWay = 64 * 1024;

std::set<std::string> Names(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

class QueueCrashE2E : public testing::Test {
protected:
    // Processes orphaned by the killed program (the encoder it was feeding) become children of
    // this test, so that it can wait for them to finish.
    void SetUp() override { ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0); }
    void TearDown() override { prctl(PR_SET_CHILD_SUBREAPER, 0); }

    std::string PathOf(const std::string& name) const { return (home_.Path() / name).string(); }
    fs::path QueueFile() const {
        return home_.DataHome() / "Brakwater Software/Vinora/vnprocesses.list";
    }

    std::string Cli(const std::string& arguments, int* status) const {
        return RunCommand(std::string(VINORA_CLI) + " " + arguments + " 2>&1", status);
    }

    void MakeWave(const std::string& name, int seconds) const {
        int status = -1;
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(PathOf(name)) + " synth " +
                       std::to_string(seconds) + " sine 300-3000 vol 0.5",
                   &status);
        ASSERT_EQ(status, 0);
    }

    void Queue(const std::string& source, const std::string& destination,
               const std::string& options = "") const {
        int status = -1;
        const std::string printed = Cli("queue add " + ShellQuote(PathOf(source)) + " " +
                                            ShellQuote(PathOf(destination)) + " " + options,
                                        &status);
        ASSERT_EQ(status, 0) << printed;
    }

    // Starts "vinora-cli queue run" in its own process group and kills it with SIGKILL as soon
    // as `output` (the hidden file an output is written to) holds kUnderWay bytes; then waits
    // until everything it started has ended.
    // Starts "vinora-cli queue run" in a process group of its own; its process ID.
    static pid_t StartQueueRun() {
        const pid_t child = fork();
        if (child == 0) {
            setpgid(0, 0);
            const int null = open("/dev/null", O_WRONLY);
            dup2(null, STDOUT_FILENO);
            dup2(null, STDERR_FILENO);
            execl(VINORA_CLI, VINORA_CLI, "queue", "run", static_cast<char*>(nullptr));
            _exit(127);
        }
        if (child > 0) setpgid(child, child);
        return child;
    }

    void RunAndKillWhileWriting(const std::string& output) const {
        const pid_t child = StartQueueRun();
        ASSERT_NE(child, -1);
        int status = 0;
        bool ended = false;
        std::error_code ignored;
        while (!(ended = waitpid(child, &status, WNOHANG) == child) &&
               !(fs::exists(PathOf(output)) && fs::file_size(PathOf(output), ignored) >= kUnderWay))
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (ended) {
            ADD_FAILURE() << "vinora-cli queue run ended before it was killed, status " << status;
            return;
        }
        kill(child, SIGKILL);
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        // The encoder sees the end of its input and finishes what it wrote.
        while (waitpid(-child, nullptr, 0) > 0 || errno == EINTR) {
        }
    }

    // The queue file's resume count and the number of whole records it holds.
    std::pair<int, std::size_t> QueueState() const {
        std::ifstream in(QueueFile(), std::ios::binary);
        unsigned char header[kHeaderSize] = {};
        in.read(reinterpret_cast<char*>(header), kHeaderSize);
        const std::uintmax_t size = fs::file_size(QueueFile());
        return {header[2] | header[3] << 8,
                size > kHeaderSize ? (size - kHeaderSize) / kRecordSize : 0};
    }

    // The length sox decodes from the whole file, in seconds; -1 when it cannot.
    double DecodedSeconds(const std::string& name) const {
        int status = -1;
        const std::string report =
            RunCommand("sox " + ShellQuote(PathOf(name)) + " -n stat 2>&1", &status);
        const std::size_t at = report.find("Length (seconds):");
        if (status != 0 || at == std::string::npos) return -1;
        return std::atof(report.c_str() + at + 17);
    }

    TempHome home_;
};

TEST_F(QueueCrashE2E, RequestsLeftByAKilledRunAreEachConvertedOnceByTheNext) {
    MakeWave("long.wav", kLongSeconds);
    MakeWave("short.wav", kShortSeconds);
    Queue("long.wav", "out/a.mp3", "--copy-to " + ShellQuote(PathOf("copies")));
    Queue("short.wav", "out/b.wav", "--copy-to " + ShellQuote(PathOf("copies")));
    Queue("short.wav", "out/c.mp3", "--copy-to " + ShellQuote(PathOf("copies")));

    RunAndKillWhileWriting("out/.a.partial.mp3");
    // Everything is still queued; the killed run was the first resume, and nothing looks
    // finished.
    EXPECT_FALSE(fs::exists(PathOf("out/a.mp3")));
    EXPECT_EQ(QueueState(), std::make_pair(1, std::size_t{3}));
    EXPECT_FALSE(fs::exists(PathOf("copies")));

    int status = -1;
    const std::string printed = Cli("queue run", &status);
    ASSERT_EQ(status, 0) << printed;
    EXPECT_EQ(fs::exists(QueueFile()) ? fs::file_size(QueueFile()) : 0, 0u);
    const std::set<std::string> outputs{"a.mp3", "b.wav", "c.mp3"};
    EXPECT_EQ(Names(PathOf("out")), outputs);
    EXPECT_EQ(Names(PathOf("copies")), outputs);
    EXPECT_NEAR(DecodedSeconds("out/a.mp3"), kLongSeconds, 0.1);
    EXPECT_NEAR(DecodedSeconds("copies/a.mp3"), kLongSeconds, 0.1);
    for (const char* name : {"out/b.wav", "out/c.mp3", "copies/c.mp3"})
        EXPECT_NEAR(DecodedSeconds(name), kShortSeconds, 0.1) << name;
    EXPECT_TRUE(fs::exists(PathOf("long.wav")));
}

// With "FailCount" at its default of 1, a list is resumed at most twice without a request
// finishing: at the third start it is discarded, every request in it.
TEST_F(QueueCrashE2E, AListWhoseHeadIsKilledTwiceIsDiscarded) {
    MakeWave("long.wav", kLongSeconds);
    MakeWave("short.wav", kShortSeconds);
    Queue("long.wav", "out/a.mp3");
    Queue("short.wav", "out/b.mp3");

    for (int resume = 1; resume <= 2; ++resume) {
        RunAndKillWhileWriting("out/.a.partial.mp3");
        EXPECT_EQ(QueueState(), std::make_pair(resume, std::size_t{2}));
        // So that the next run is seen writing its own.
        if (resume == 1) fs::remove(PathOf("out/.a.partial.mp3"));
    }

    int status = -1;
    const std::string printed = Cli("queue run", &status);
    ASSERT_EQ(status, 0) << printed;
    EXPECT_FALSE(fs::exists(QueueFile()));
    EXPECT_TRUE(Names(PathOf("out")).empty());
    EXPECT_EQ(Cli("queue list", &status), "");
    EXPECT_TRUE(fs::exists(PathOf("long.wav")));
    EXPECT_TRUE(fs::exists(PathOf("short.wav")));
}

// Five recordings queued as a recording session queues them, ten runs killed at random moments,
// then one run to the end: each recording ends as exactly one whole output, or, when the list
// had to be given up, safe in "Recovered Recordings"; nothing half-written is left anywhere.
TEST_F(QueueCrashE2E, RandomKillsNeverLoseOrHalveARecording) {
    const unsigned seed = static_cast<unsigned>(std::random_device{}());
    std::mt19937 random(seed);
    SCOPED_TRACE("seed " + std::to_string(seed));
    const fs::path out = PathOf("out");
    fs::create_directories(out);
    fs::create_directories(QueueFile().parent_path());
    struct Queued {
        std::string recording;
        fs::path output;
        double seconds;
    };
    std::vector<Queued> queued;
    for (int i = 0; i < 5; ++i) {
        char recording[260];
        ASSERT_TRUE(GetTempFile("/var/tmp/", recording, ".wav"));
        const double seconds = 3 + i;
        RunCommand("sox -n -r 44100 -c 2 -b 16 " + ShellQuote(recording) + " synth " +
                   std::to_string(seconds) + " sine 300-3000 vol 0.5 2>/dev/null");
        LProcessConvert request;
        const fs::path output = out / ("Track " + std::to_string(i + 1) + (i % 2 ? ".wav" : ".mp3"));
        std::snprintf(request.sourcePath, sizeof request.sourcePath, "%s", recording);
        std::snprintf(request.destinationPath, sizeof request.destinationPath, "%s", output.c_str());
        std::snprintf(request.outputFolder, sizeof request.outputFolder, "%s", out.c_str());
        std::snprintf(request.outputExtension, sizeof request.outputExtension, "%s",
                      output.extension().c_str());
        request.restore = 0;
        request.deleteSource = 1;
        ASSERT_TRUE(ProcessListFile::Append(QueueFile().c_str(), &request, sizeof request));
        queued.push_back({recording, output, seconds});
    }

    std::uniform_int_distribution<int> after(200, 3000);
    for (int kill = 0; kill < 10; ++kill) {
        const pid_t child = StartQueueRun();
        ASSERT_NE(child, -1);
        std::this_thread::sleep_for(std::chrono::milliseconds(after(random)));
        ::kill(-child, SIGKILL);
        waitpid(child, nullptr, 0);
        while (waitpid(-child, nullptr, 0) > 0 || errno == EINTR) {
        }
    }
    int status = -1;
    Cli("queue run", &status);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(fs::exists(QueueFile()) ? fs::file_size(QueueFile()) : 0u, 0u);

    const fs::path recovered = out / "Recovered Recordings";
    std::set<std::string> expected;
    for (const Queued& item : queued) {
        const bool converted = fs::exists(item.output);
        const fs::path kept = recovered / (item.output.stem().string() + ".wav");
        EXPECT_NE(converted, fs::exists(kept)) << item.output;
        if (converted) {
            expected.insert(item.output.filename().string());
            const double length = std::atof(
                RunCommand("soxi -D " + ShellQuote(item.output.string()) + " 2>/dev/null").c_str());
            EXPECT_NEAR(length, item.seconds, 0.1) << item.output;
        } else {
            expected.insert(recovered.filename().string());
            EXPECT_NEAR(std::atof(RunCommand("soxi -D " + ShellQuote(kept.string())).c_str()),
                        item.seconds, 0.01);
        }
        EXPECT_FALSE(fs::exists(item.recording)) << item.recording;
    }
    // No half-written or hidden file anywhere in the output folder.
    EXPECT_EQ(Names(out), expected);
    if (fs::exists(recovered)) {
        for (const std::string& name : Names(recovered))
            EXPECT_NE(name[0], '.') << name;
    }
}

} // namespace
