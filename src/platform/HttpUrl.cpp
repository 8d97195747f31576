#include "platform/HttpUrl.h"

#include "platform/Paths.h"

#include <charconv>
#include <cstring>
#include <string_view>
#include <strings.h>

namespace {

// Where the host starts: after the first "//", or at 0 without one.
std::size_t HostStart(std::string_view url) {
    const std::size_t slashes = url.find("//");
    return slashes == std::string_view::npos ? 0 : slashes + 2;
}

// The scheme and host of a URL, without any path.
std::string_view SchemeAndHost(std::string_view url) {
    const std::size_t start = HostStart(url);
    return url.substr(0, url.find('/', start));
}

// Copies text into a buffer of `size` bytes; false when it had to be cut.
bool CopyCut(char* out, std::size_t size, std::string_view text) {
    if (size == 0) return text.empty();
    const std::size_t length = std::min(text.size(), size - 1);
    if (length > 0) std::memcpy(out, text.data(), length);
    out[length] = '\0';
    return length == text.size();
}

} // namespace

bool ProcessHTTPSplitHost(const char* url, char* host, char* path, std::size_t pathSize) {
    const std::string_view text = url;
    const std::size_t start = HostStart(text);
    const std::size_t slash = text.find('/', start);
    const std::string_view hostPart = text.substr(start, slash - start);
    const std::string_view pathPart =
        slash == std::string_view::npos ? std::string_view() : text.substr(slash);
    const bool hostWhole = CopyCut(host, kPathBufferSize, hostPart);
    const bool pathWhole = CopyCut(path, pathSize, pathPart);
    return hostWhole && pathWhole && !hostPart.empty();
}

bool LHTTPSplitHostPort(const char* hostAndPort, std::string& host, int& port) {
    const std::string_view text = hostAndPort;
    const std::size_t colon = text.rfind(':');
    host = text.substr(0, colon);
    port = 80;
    if (colon == std::string_view::npos) return true;
    const std::string_view digits = text.substr(colon + 1);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    return error == std::errc() && end == digits.data() + digits.size() && port >= 1 &&
           port <= 65535;
}

bool LHTTPGetURLParent(std::string& out, const char* url) {
    std::string_view text = url;
    const std::size_t hostStart = HostStart(text);
    if (text.size() >= 2 && text.ends_with("//")) return false;
    if (text.ends_with('/')) text.remove_suffix(1);
    const std::size_t slash = text.rfind('/');
    if (slash == std::string_view::npos || slash < hostStart) return false;
    out = std::string(text.substr(0, slash));
    return true;
}

bool LHTTPResolveRedirection(std::string& out, const char* base, const char* location) {
    std::string_view rest = location;
    if (rest.empty()) return false;
    if (rest.find("://") != std::string_view::npos) {
        out = rest;
        return true;
    }
    const std::string_view baseText = base;
    const std::string_view root = SchemeAndHost(baseText);
    if (rest.front() == '/') {
        out = std::string(root) + std::string(rest);
        return true;
    }
    // The folder of the base: everything before its last "/", or the host alone.
    const std::size_t lastSlash = baseText.rfind('/');
    std::string folder(lastSlash != std::string_view::npos && lastSlash >= root.size()
                           ? baseText.substr(0, lastSlash)
                           : root);
    while (true) {
        if (rest.starts_with("../")) {
            rest.remove_prefix(3);
            if (folder.size() > root.size()) LHTTPGetURLParent(folder, folder.c_str());
        } else if (rest.starts_with("./")) {
            rest.remove_prefix(2);
        } else {
            break;
        }
    }
    out = folder + "/" + std::string(rest);
    return true;
}

int LHTTPParseStatusLine(const char* line) {
    if (strncasecmp(line, "HTTP", 4) != 0) return -1;
    // The code follows the protocol version and one space: "HTTP/1.1 200 OK".
    const char* space = std::strchr(line, ' ');
    if (!space) return -1;
    int status = -1;
    const char* first = space + 1;
    std::from_chars(first, first + std::strlen(first), status);
    return status;
}
