#include "platform/HttpUrl.h"
#include "platform/EscapeFilePath.h"
#include "platform/Paths.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(HttpUrlTest, SplitsHostAndPath) {
    char host[kPathBufferSize];
    char path[64];
    EXPECT_TRUE(ProcessHTTPSplitHost("http://example/a/b.txt", host, path, sizeof path));
    EXPECT_STREQ(host, "example");
    EXPECT_STREQ(path, "/a/b.txt");
    EXPECT_TRUE(ProcessHTTPSplitHost("http://example", host, path, sizeof path));
    EXPECT_STREQ(host, "example");
    EXPECT_STREQ(path, "");
    EXPECT_TRUE(ProcessHTTPSplitHost("example:8080/x", host, path, sizeof path));
    EXPECT_STREQ(host, "example:8080");
    EXPECT_STREQ(path, "/x");
    EXPECT_FALSE(ProcessHTTPSplitHost("http:///x", host, path, sizeof path));
    EXPECT_FALSE(ProcessHTTPSplitHost(("http://h/" + std::string(100, 'p')).c_str(), host, path,
                                      sizeof path))
        << "a path that does not fit";
}

TEST(HttpUrlTest, SplitsThePort) {
    std::string host;
    int port = 0;
    EXPECT_TRUE(LHTTPSplitHostPort("example", host, port));
    EXPECT_EQ(host, "example");
    EXPECT_EQ(port, 80);
    EXPECT_TRUE(LHTTPSplitHostPort("127.0.0.1:8123", host, port));
    EXPECT_EQ(host, "127.0.0.1");
    EXPECT_EQ(port, 8123);
    EXPECT_FALSE(LHTTPSplitHostPort("example:http", host, port));
    EXPECT_FALSE(LHTTPSplitHostPort("example:70000", host, port));
}

TEST(HttpUrlTest, ParentCutsOneSegment) {
    std::string parent;
    EXPECT_TRUE(LHTTPGetURLParent(parent, "http://example/a/b"));
    EXPECT_EQ(parent, "http://example/a");
    EXPECT_TRUE(LHTTPGetURLParent(parent, "http://example/a/"));
    EXPECT_EQ(parent, "http://example");
    EXPECT_FALSE(LHTTPGetURLParent(parent, "http://example"));
    EXPECT_FALSE(LHTTPGetURLParent(parent, "http://"));
}

TEST(HttpUrlTest, ResolvesRedirections) {
    std::string out;
    EXPECT_TRUE(LHTTPResolveRedirection(out, "http://example/a/b/c", "../x"));
    EXPECT_EQ(out, "http://example/a/x");
    EXPECT_TRUE(LHTTPResolveRedirection(out, "http://example/a/b/c", "/x"));
    EXPECT_EQ(out, "http://example/x");
    EXPECT_TRUE(LHTTPResolveRedirection(out, "http://example/a/b/c", "https://other/y"));
    EXPECT_EQ(out, "https://other/y");
    EXPECT_TRUE(LHTTPResolveRedirection(out, "http://example/a/b/c", "d"));
    EXPECT_EQ(out, "http://example/a/b/d");
    EXPECT_TRUE(LHTTPResolveRedirection(out, "http://example/a/b/c", "./../../d"));
    EXPECT_EQ(out, "http://example/d");
    EXPECT_TRUE(LHTTPResolveRedirection(out, "http://example/c", "../../d"));
    EXPECT_EQ(out, "http://example/d") << "never above the host";
    EXPECT_TRUE(LHTTPResolveRedirection(out, "http://example:81", "d"));
    EXPECT_EQ(out, "http://example:81/d");
    EXPECT_FALSE(LHTTPResolveRedirection(out, "http://example/a", ""));
}

TEST(HttpUrlTest, ReadsStatusLines) {
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
