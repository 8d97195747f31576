// The HTTP client against servers on 127.0.0.1 that the tests start and stop.
#include "HttpTestServer.h"

#include "platform/HttpClient.h"
#include "support/TempHome.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

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

TEST_F(HttpClientTest, DownloadsBinaryBodiesWithOrWithoutALength) {
    HttpTestServer server;
    const std::string payload = Payload(100000);
    server.Serve("/sized", HttpTestServer::Reply(200, payload));
    server.Serve("/unsized", HttpTestServer::Reply(200, payload.substr(0, 5000), false));
    const std::string local = Local("file");
    EXPECT_EQ(ProcessHTTPDownloadFile(progress_, server.Url("/sized").c_str(), local.c_str(), true),
              PROCESS_DONE);
    EXPECT_EQ(ReadFile(local), payload);
    ASSERT_FALSE(progress_.progress.empty());
    EXPECT_DOUBLE_EQ(progress_.progress.back(), 1.0);
    EXPECT_TRUE(std::is_sorted(progress_.progress.begin(), progress_.progress.end()));

    // Without a length the body ends when the server closes.
    EXPECT_EQ(
        ProcessHTTPDownloadFile(progress_, server.Url("/unsized").c_str(), local.c_str(), true),
        PROCESS_DONE);
    EXPECT_EQ(ReadFile(local), payload.substr(0, 5000));
}

TEST_F(HttpClientTest, ShortBodyErrorStatusOrStopLeavesNoFile) {
    HttpTestServer server;
    server.Serve("/short", HttpTestServer::Reply(200, "only this", true, 5000));
    server.Serve("/gone", HttpTestServer::Reply(404, "no such file"));
    server.Serve("/odd", "SOMETHING ELSE\r\n\r\n");
    const std::string local = Local("file");
    for (const char* path : {"/short", "/gone", "/odd"}) {
        EXPECT_EQ(ProcessHTTPDownloadFile(progress_, server.Url(path).c_str(), local.c_str(), true),
                  PROCESS_FAILED)
            << path;
        EXPECT_FALSE(std::filesystem::exists(local)) << path;
    }

    // A silent server would hold the download for its time-outs; the stop ends it.
    HttpTestServer silent;
    silent.SetSilent(true);
    progress_.StopAfter(300);
    EXPECT_EQ(ProcessHTTPDownloadFile(progress_, silent.Url("/file").c_str(), local.c_str(), true),
              PROCESS_STOPPED);
    EXPECT_FALSE(std::filesystem::exists(local));
}

TEST_F(HttpClientTest, FollowsRedirectionsOnlyWhenAskedAndNotInCircles) {
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

TEST_F(HttpClientTest, GetReadsTheReplyIntoTheBufferOrFailsWithoutAServer) {
    HttpTestServer server;
    server.Serve("/versions/v.txt", HttpTestServer::Reply(200, "version=1.6"));
    char reply[2048];
    ASSERT_EQ(
        ProcessHTTPGet(progress_, server.Url("/versions/v.txt").c_str(), reply, sizeof reply, 5000),
        PROCESS_DONE);
    EXPECT_EQ(std::string(reply), HttpTestServer::Reply(200, "version=1.6"));
    char small[16];
    ASSERT_EQ(
        ProcessHTTPGet(progress_, server.Url("/versions/v.txt").c_str(), small, sizeof small, 5000),
        PROCESS_DONE);
    EXPECT_EQ(std::string(small), "HTTP/1.0 200 Te") << "cut to fit, terminator included";

    int port = 0;
    {
        HttpTestServer closed;
        port = std::stoi(closed.Host().substr(closed.Host().find(':') + 1));
    }
    const std::string url = "http://127.0.0.1:" + std::to_string(port) + "/x";
    EXPECT_EQ(ProcessHTTPGet(progress_, url.c_str(), reply, sizeof reply, 2000), PROCESS_FAILED);
    EXPECT_EQ(ProcessHTTPGet(progress_, "http:///x", reply, sizeof reply, 2000), PROCESS_FAILED);
}

} // namespace
