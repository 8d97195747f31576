#include "platform/HttpUrl.h"
#include "platform/EscapeFilePath.h"
#include "platform/Paths.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(HttpUrlTest, SplitsHostAndPortAndRefusesWhatDoesNotFit) {
    char host[kPathBufferSize], path[64];
    EXPECT_TRUE(ProcessHTTPSplitHost("example:8080/x", host, path, sizeof path));
    EXPECT_EQ(std::string(host) + " " + path, "example:8080 /x");
    EXPECT_FALSE(ProcessHTTPSplitHost(("http://h/" + std::string(100, 'p')).c_str(), host, path,
                                      sizeof path));
    std::string name;
    int port = 0;
    EXPECT_TRUE(LHTTPSplitHostPort("example", name, port));
    EXPECT_EQ(name + ":" + std::to_string(port), "example:80");
    EXPECT_FALSE(LHTTPSplitHostPort("example:http", name, port));
    EXPECT_FALSE(LHTTPSplitHostPort("example:70000", name, port));
}

TEST(HttpUrlTest, ResolvesRedirectionsAndStatusLines) {
    const struct {
        const char* base;
        const char* location;
        const char* resolved; // nullptr: refused
    } redirections[] = {
        {"http://example/a/b/c", "../x", "http://example/a/x"},
        {"http://example/a/b/c", "/x", "http://example/x"},
        {"http://example/a/b/c", "https://other/y", "https://other/y"},
        {"http://example/a/b/c", "d", "http://example/a/b/d"},
        {"http://example/a/b/c", "./../../d", "http://example/d"},
        {"http://example/c", "../../d", "http://example/d"}, // never above the host
        {"http://example:81", "d", "http://example:81/d"},
        {"http://example/a", "", nullptr},
    };
    for (const auto& r : redirections) {
        std::string out;
        ASSERT_EQ(LHTTPResolveRedirection(out, r.base, r.location), r.resolved != nullptr)
            << r.location;
        if (r.resolved) {
            EXPECT_EQ(out, r.resolved) << r.base << " + " << r.location;
        }
    }

    EXPECT_EQ(LHTTPParseStatusLine("HTTP/1.0 200 OK"), 200);
    EXPECT_EQ(LHTTPParseStatusLine("http/1.1 302 Found"), 302);
    EXPECT_EQ(LHTTPParseStatusLine("ICY 200 OK"), -1);
    EXPECT_EQ(LHTTPParseStatusLine("HTTP/1.0"), -1);
}

TEST(EscapeFilePathTest, ProtectsWhatTheShellReadsInDoubleQuotes) {
    char out[kPathBufferSize];
    EscapeFilePath(out, "/a/\"b\" `c` $d \\e 'f'.mp3");
    EXPECT_STREQ(out, "/a/\\\"b\\\" \\`c\\` \\$d \\\\e 'f'.mp3");

    // Cut at 259 characters, but never between a backslash and what it protects.
    const std::string longPath = std::string(258, 'x') + "\"y";
    EscapeFilePath(out, longPath.c_str());
    EXPECT_EQ(std::string(out), std::string(258, 'x'));
    EscapeFilePath(out, std::string(300, 'z').c_str());
    EXPECT_EQ(std::string(out), std::string(259, 'z'));
}

} // namespace
