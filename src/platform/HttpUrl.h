#pragma once

#include <cstddef>
#include <string>

// Taking URLs and status lines apart and resolving redirections, for the HTTP client. URLs are of
// the form [scheme://]host[:port][/path].

// Splits a URL: the scheme (everything up to and including the first "//") is skipped, `host`
// (260 bytes) gets the text up to the next "/" (at most 259 characters) and `path` (pathSize
// bytes) the rest with its "/", empty when there is none. False when the host is empty or
// either part had to be cut.
bool ProcessHTTPSplitHost(const char* url, char* host, char* path, std::size_t pathSize);

// Separates an optional ":port" from a host; `port` is 80 without one. False for a port that
// is not a number from 1 to 65535.
bool LHTTPSplitHostPort(const char* hostAndPort, std::string& host, int& port);

// The URL one level up: one trailing "/" is removed, then the last path segment with its "/".
// False when nothing is left to cut (the URL is only a scheme and a host).
bool LHTTPGetURLParent(std::string& out, const char* url);

// The URL a "Location:" of a reply to `base` points at. A location with its own "://" is
// taken as it is; one starting with "/" replaces the whole path of the base; any other is
// relative to the base's folder, where each leading "../" goes one folder up (never above the
// host) and each leading "./" is dropped. False for an empty location.
bool LHTTPResolveRedirection(std::string& out, const char* base, const char* location);

// The status code of a reply's status line ("HTTP/1.0 200 OK" gives 200), or -1 when the
// line does not start with "HTTP".
int LHTTPParseStatusLine(const char* line);
