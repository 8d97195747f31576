// The HTTP client against servers on 127.0.0.1 that the tests start and stop.
#include "HttpTestServer.h"

#include "platform/HttpClient.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

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

class HttpClientTest : public ::testing::Test {
protected:
    std::string Local(const char* name) const { return (home_.Path() / name).string(); }

    TempHome home_;
    TimedStopProgress progress_;
};

TEST_F(HttpClientTest, DownloadsWithContentLength) {
    HttpTestServer server;
    const std::string payload = Payload(100000);
    server.Serve("/components/mp3el", HttpTestServer::Reply(200, payload));
    const std::string local = Local("mp3el");
    EXPECT_EQ(ProcessHTTPDownloadFile(progress_, server.Url("/components/mp3el").c_str(),
                                      local.c_str(), true),
              PROCESS_DONE);
    EXPECT_EQ(ReadFile(local), payload);
    ASSERT_FALSE(progress_.progress.empty());
    EXPECT_DOUBLE_EQ(progress_.progress.back(), 1.0);
    EXPECT_TRUE(std::is_sorted(progress_.progress.begin(), progress_.progress.end()));
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

} // namespace
