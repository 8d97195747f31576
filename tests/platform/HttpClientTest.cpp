// The HTTP client against servers on 127.0.0.1 that the tests start and stop: Python's
// http.server for plain files and a server of the test's own for the awkward replies.
#include "HttpTestServer.h"

#include "platform/HttpClient.h"
#include "platform/HttpSocket.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace {

using namespace std::chrono;

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// Bytes that are not text, so that nothing on the way may treat them as text.
std::string Payload(size_t size) {
    std::string bytes(size, '\0');
    uint32_t x = 12345;
    for (char& c : bytes) {
        x = x * 1103515245 + 12345;
        c = char(x >> 24);
    }
    return bytes;
}

// "python3 -m http.server" serving a folder on 127.0.0.1, on a port the system picks.
class PythonHttpServer {
public:
    explicit PythonHttpServer(const std::filesystem::path& folder) {
        int out[2];
        if (pipe2(out, O_CLOEXEC) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        const std::string directory = folder.string();
        const char* argv[] = {"python3", "-u",        "-m",          "http.server",
                              "--bind",  "127.0.0.1", "--directory", directory.c_str(),
                              "0",       nullptr};
        if (posix_spawnp(&pid_, "python3", &actions, nullptr, const_cast<char**>(argv), environ) !=
            0)
            pid_ = 0;
        posix_spawn_file_actions_destroy(&actions);
        close(out[1]);
        // "Serving HTTP on 127.0.0.1 port 40123 (http://127.0.0.1:40123/) ..."
        std::string line;
        const auto give_up = steady_clock::now() + seconds(10);
        while (pid_ && line.find('\n') == std::string::npos && steady_clock::now() < give_up) {
            pollfd entry{out[0], POLLIN, 0};
            if (poll(&entry, 1, 100) <= 0) continue;
            char buffer[256];
            const ssize_t got = read(out[0], buffer, sizeof buffer);
            if (got <= 0) break;
            line.append(buffer, size_t(got));
        }
        close(out[0]);
        const size_t at = line.find(" port ");
        if (at != std::string::npos) port_ = std::atoi(line.c_str() + at + 6);
    }
    ~PythonHttpServer() {
        if (!pid_) return;
        kill(pid_, SIGTERM);
        int status = 0;
        waitpid(pid_, &status, 0);
    }

    bool IsRunning() const { return port_ > 0; }
    std::string Url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }

private:
    pid_t pid_ = 0;
    int port_ = 0;
};

class HttpClientTest : public ::testing::Test {
protected:
    std::string Local(const char* name) const { return (home_.Path() / name).string(); }

    TempHome home_;
    TimedStopProgress progress_;
};

TEST_F(HttpClientTest, DownloadsFromARealServer) {
    const auto site = home_.Path() / "site";
    std::filesystem::create_directories(site / "components");
    const std::string payload = Payload(100000);
    std::ofstream(site / "components" / "mp3el", std::ios::binary) << payload;
    PythonHttpServer server(site);
    if (!server.IsRunning()) GTEST_SKIP() << "python3 -m http.server could not be started";

    const std::string local = Local("mp3el");
    EXPECT_EQ(ProcessHTTPDownloadFile(progress_, server.Url("/components/mp3el").c_str(),
                                      local.c_str(), true),
              PROCESS_DONE);
    EXPECT_EQ(ReadFile(local), payload);
    ASSERT_FALSE(progress_.progress.empty());
    EXPECT_DOUBLE_EQ(progress_.progress.back(), 1.0);
    EXPECT_TRUE(std::is_sorted(progress_.progress.begin(), progress_.progress.end()));

    const std::string missing = Local("missing");
    EXPECT_EQ(ProcessHTTPDownloadFile(progress_, server.Url("/components/none").c_str(),
                                      missing.c_str(), true),
              PROCESS_FAILED);
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(HttpClientTest, ShortBodyOrErrorStatusLeavesNoFile) {
    HttpTestServer server;
    server.Serve("/short", HttpTestServer::Reply(200, "only this", true, 5000));
    server.Serve("/gone", HttpTestServer::Reply(404, "no such file"));
    server.Serve("/odd", "SOMETHING ELSE\r\n\r\n");
    for (const char* path : {"/short", "/gone", "/odd"}) {
        const std::string local = Local("file");
        EXPECT_EQ(ProcessHTTPDownloadFile(progress_, server.Url(path).c_str(), local.c_str(), true),
                  PROCESS_FAILED)
            << path;
        EXPECT_FALSE(std::filesystem::exists(local)) << path;
    }
}

TEST_F(HttpClientTest, BodyWithoutLengthEndsWhenTheServerCloses) {
    HttpTestServer server;
    const std::string payload = Payload(5000);
    server.Serve("/file", HttpTestServer::Reply(200, payload, false));
    const std::string local = Local("file");
    EXPECT_EQ(ProcessHTTPDownloadFile(progress_, server.Url("/file").c_str(), local.c_str(), true),
              PROCESS_DONE);
    EXPECT_EQ(ReadFile(local), payload);
}

TEST_F(HttpClientTest, FollowsRedirectionsOnlyWhenAsked) {
    HttpTestServer server;
    server.Serve("/old/a.zip", HttpTestServer::Reply(302, "", true, -1, "Location:   b.zip\r\n"));
    server.Serve("/old/b.zip", HttpTestServer::Reply(200, "the file"));
    server.Serve("/loop", HttpTestServer::Reply(301, "", true, -1, "location: /loop\r\n"));
    const std::string local = Local("a.zip");
    EXPECT_EQ(
        ProcessHTTPDownloadFile(progress_, server.Url("/old/a.zip").c_str(), local.c_str(), true),
        PROCESS_DONE);
    EXPECT_EQ(ReadFile(local), "the file");
    EXPECT_EQ(server.Requests(), (std::vector<std::string>{"/old/a.zip", "/old/b.zip"}));

    std::filesystem::remove(local);
    EXPECT_EQ(
        ProcessHTTPDownloadFile(progress_, server.Url("/old/a.zip").c_str(), local.c_str(), false),
        PROCESS_FAILED);
    EXPECT_FALSE(std::filesystem::exists(local));
    EXPECT_EQ(ProcessHTTPDownloadFile(progress_, server.Url("/loop").c_str(), local.c_str(), true),
              PROCESS_FAILED);
}

TEST_F(HttpClientTest, StopEndsAWaitForASilentServerWithinASecond) {
    HttpTestServer server;
    server.SetSilent(true);
    const std::string local = Local("file");
    progress_.StopAfter(300);
    EXPECT_EQ(ProcessHTTPDownloadFile(progress_, server.Url("/file").c_str(), local.c_str(), true),
              PROCESS_STOPPED);
    EXPECT_LT(steady_clock::now() - progress_.StopAt(), seconds(1));
    EXPECT_FALSE(std::filesystem::exists(local));

    // Without a stop, the wait ends with the time-out.
    TimedStopProgress patient;
    char reply[256];
    const auto start = steady_clock::now();
    EXPECT_EQ(ProcessHTTPGet(patient, server.Url("/v").c_str(), reply, sizeof reply, 500),
              PROCESS_FAILED);
    EXPECT_LT(steady_clock::now() - start, seconds(2));
}

TEST_F(HttpClientTest, GetReadsTheWholeReplyIntoTheBuffer) {
    HttpTestServer server;
    server.Serve("/versions/v.txt", HttpTestServer::Reply(200, "version=1.6"));
    char reply[2048];
    ASSERT_EQ(
        ProcessHTTPGet(progress_, server.Url("/versions/v.txt").c_str(), reply, sizeof reply, 5000),
        PROCESS_DONE);
    EXPECT_EQ(std::string(reply), HttpTestServer::Reply(200, "version=1.6"));

    // A reply larger than the buffer is cut to fit, terminator included.
    char small[16];
    ASSERT_EQ(
        ProcessHTTPGet(progress_, server.Url("/versions/v.txt").c_str(), small, sizeof small, 5000),
        PROCESS_DONE);
    EXPECT_EQ(std::string(small), "HTTP/1.0 200 Te");
}

TEST_F(HttpClientTest, UnreachableServersFail) {
    int port = 0;
    {
        HttpTestServer closed;
        port = std::stoi(closed.Host().substr(closed.Host().find(':') + 1));
    }
    char reply[64];
    const std::string url = "http://127.0.0.1:" + std::to_string(port) + "/x";
    EXPECT_EQ(ProcessHTTPGet(progress_, url.c_str(), reply, sizeof reply, 2000), PROCESS_FAILED);
    EXPECT_EQ(ProcessHTTPGet(progress_, "http:///x", reply, sizeof reply, 2000), PROCESS_FAILED);
}

TEST_F(HttpClientTest, ReadsLinesAndExactByteCounts) {
    HttpTestServer server;
    server.Serve("/lines", "first\r\nsecond\nthird");
    LTcpSocket socket;
    ASSERT_EQ(
        ProcessConnect(progress_, socket, "127.0.0.1", std::stoi(server.Host().substr(10)), 2000),
        PROCESS_DONE);
    ASSERT_EQ(ProcessSendString(progress_, socket, "GET /lines HTTP/1.0\r\n\r\n", 2000),
              PROCESS_DONE);
    std::string line;
    ASSERT_EQ(ProcessRecvLine(progress_, socket, line, 2000), PROCESS_DONE);
    EXPECT_EQ(line, "first");
    ASSERT_EQ(ProcessRecvLine(progress_, socket, line, 2000), PROCESS_DONE);
    EXPECT_EQ(line, "second");
    char bytes[3];
    ASSERT_EQ(ProcessRecvBytes(progress_, socket, bytes, 3, 2000), PROCESS_DONE);
    EXPECT_EQ(std::string(bytes, 3), "thi");
    EXPECT_EQ(ProcessRecvBytes(progress_, socket, bytes, 3, 2000), PROCESS_FAILED)
        << "the server closes after two more bytes";
}

} // namespace
