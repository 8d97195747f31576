// The processing queue of vinora-cli killed (SIGKILL) while it converts, then run again: what
// the next run does with the requests left in the queue file.
#include "E2ETestUtil.h"

#include "platform/FileOps.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <random>
#include <sys/prctl.h>
#include <sys/wait.h>
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

class QueueCrashE2E : public testing::Test {
protected:
    // Processes orphaned by the killed program (the encoder it was feeding) become children of
    // this test, so that it can wait for them to finish.
    void SetUp() override { ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0); }
    void TearDown() override { prctl(PR_SET_CHILD_SUBREAPER, 0); }

    fs::path PathOf(const std::string& name) const { return home_.Path() / name; }

    // A long and a short recording, queued as `outputs` from the long one on.
    void QueueLongThenShort(const std::vector<std::string>& outputs, const std::string& options) {
        ASSERT_TRUE(SoxSynth(PathOf("long.wav"), 44100, 2,
                             std::to_string(kLongSeconds) + " sine 300-3000 vol 0.5"));
        ASSERT_TRUE(SoxSynth(PathOf("short.wav"), 44100, 2,
                             std::to_string(kShortSeconds) + " sine 300-3000 vol 0.5"));
        for (size_t i = 0; i < outputs.size(); ++i) {
            int status = -1;
            const std::string printed =
                Cli("queue add " + ShellQuote(PathOf(i == 0 ? "long.wav" : "short.wav")) + " " +
                        ShellQuote(PathOf(outputs[i])) + " " + options,
                    &status);
            ASSERT_EQ(status, 0) << printed;
        }
    }

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

    // Waits until everything the killed run started has ended: the encoder sees the end of
    // its input and finishes what it wrote.
    static void WaitForGroup(pid_t child) {
        while (waitpid(-child, nullptr, 0) > 0 || errno == EINTR) {
        }
    }

    // Starts a queue run and kills it with SIGKILL as soon as `output` (the hidden file an
    // output is written to) holds kUnderWay bytes.
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
        WaitForGroup(child);
    }

    // The queue file's resume count and the number of whole records it holds.
    std::pair<int, std::size_t> QueueState() const {
        const std::string bytes = FileText(QueueFile(home_));
        if (bytes.size() < kHeaderSize) return {0, 0};
        return {static_cast<unsigned char>(bytes[2]) | static_cast<unsigned char>(bytes[3]) << 8,
                (bytes.size() - kHeaderSize) / kRecordSize};
    }

    std::uintmax_t QueueSize() const {
        return fs::exists(QueueFile(home_)) ? fs::file_size(QueueFile(home_)) : 0;
    }

    // The length sox decodes from the whole file, in seconds.
    double DecodedSeconds(const std::string& name) const {
        return SoxValue(RunCommand("sox " + ShellQuote(PathOf(name)) + " -n stat 2>&1"),
                        "Length (seconds):");
    }

    TempHome home_;
};

TEST_F(QueueCrashE2E, RequestsLeftByAKilledRunAreEachConvertedOnceByTheNext) {
    QueueLongThenShort({"out/a.mp3", "out/b.wav", "out/c.mp3"},
                       "--copy-to " + ShellQuote(PathOf("copies")));

    RunAndKillWhileWriting("out/.a.partial.mp3");
    // Everything is still queued; the killed run was the first resume, and nothing looks
    // finished.
    EXPECT_FALSE(fs::exists(PathOf("out/a.mp3")));
    EXPECT_EQ(QueueState(), std::make_pair(1, std::size_t{3}));
    EXPECT_FALSE(fs::exists(PathOf("copies")));

    int status = -1;
    const std::string printed = Cli("queue run", &status);
    ASSERT_EQ(status, 0) << printed;
    EXPECT_EQ(QueueSize(), 0u);
    const std::set<std::string> outputs{"a.mp3", "b.wav", "c.mp3"};
    EXPECT_EQ(Names(PathOf("out")), outputs);
    EXPECT_EQ(Names(PathOf("copies")), outputs);
    for (const char* name : {"out/a.mp3", "copies/a.mp3"})
        EXPECT_NEAR(DecodedSeconds(name), kLongSeconds, 0.1) << name;
    for (const char* name : {"out/b.wav", "out/c.mp3", "copies/c.mp3"})
        EXPECT_NEAR(DecodedSeconds(name), kShortSeconds, 0.1) << name;
    EXPECT_TRUE(fs::exists(PathOf("long.wav")));
}

// With "FailCount" at its default of 1, a list is resumed at most twice without a request
// finishing: at the third start it is discarded, every request in it.
TEST_F(QueueCrashE2E, AListWhoseHeadIsKilledTwiceIsDiscarded) {
    QueueLongThenShort({"out/a.mp3", "out/b.mp3"}, "");

    for (int resume = 1; resume <= 2; ++resume) {
        RunAndKillWhileWriting("out/.a.partial.mp3");
        EXPECT_EQ(QueueState(), std::make_pair(resume, std::size_t{2}));
        // So that the next run is seen writing its own.
        if (resume == 1) fs::remove(PathOf("out/.a.partial.mp3"));
    }

    int status = -1;
    const std::string printed = Cli("queue run", &status);
    ASSERT_EQ(status, 0) << printed;
    EXPECT_FALSE(fs::exists(QueueFile(home_)));
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
        ASSERT_TRUE(
            SoxSynth(recording, 44100, 2, std::to_string(seconds) + " sine 300-3000 vol 0.5"));
        const fs::path output = out / ("Track " + std::to_string(i + 1) + (i % 2 ? ".wav" : ".mp3"));
        ASSERT_TRUE(QueueRequest(home_, recording, out, output, output.extension(), true));
        queued.push_back({recording, output, seconds});
    }

    std::uniform_int_distribution<int> after(200, 3000);
    for (int kill = 0; kill < 10; ++kill) {
        const pid_t child = StartQueueRun();
        ASSERT_NE(child, -1);
        std::this_thread::sleep_for(std::chrono::milliseconds(after(random)));
        ::kill(-child, SIGKILL);
        waitpid(child, nullptr, 0);
        WaitForGroup(child);
    }
    int status = -1;
    Cli("queue run", &status);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(QueueSize(), 0u);

    const fs::path recovered = out / "Recovered Recordings";
    std::set<std::string> expected;
    for (const Queued& item : queued) {
        const bool converted = fs::exists(item.output);
        const fs::path kept = recovered / (item.output.stem().string() + ".wav");
        EXPECT_NE(converted, fs::exists(kept)) << item.output;
        if (converted) {
            expected.insert(item.output.filename().string());
            EXPECT_NEAR(SoxiSeconds(item.output), item.seconds, 0.1) << item.output;
        } else {
            expected.insert(recovered.filename().string());
            EXPECT_NEAR(SoxiSeconds(kept), item.seconds, 0.01) << kept;
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
