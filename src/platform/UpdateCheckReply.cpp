// Reading the version server's reply.
#include "platform/UpdateCheck.h"

#include "platform/HttpUrl.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

namespace {

// The body of an HTTP reply; empty when the reply is not a "2xx" one.
std::string_view ReplyBody(std::string_view reply) {
    const int status = LHTTPParseStatusLine(std::string(reply.substr(0, 64)).c_str());
    if (status < 200 || status > 299) return {};
    const std::size_t end = reply.find("\r\n\r\n");
    return end == std::string_view::npos ? std::string_view() : reply.substr(end + 4);
}

} // namespace

bool LParseVersionReply(const char* reply, LProcessCheckForVersionUpdates& job) {
    const std::string_view body = ReplyBody(reply);
    const std::size_t version = body.find("version=");
    if (version == std::string_view::npos) return false;
    const char* first = body.data() + version + std::strlen("version=");
    const auto [end, error] = std::from_chars(first, body.data() + body.size(), job.latestVersion);
    if (error != std::errc()) return false;

    job.infoLink[0] = '\0';
    const std::size_t info = body.find("info=");
    if (info == std::string_view::npos) return false;
    std::string_view link = body.substr(info + std::strlen("info="));
    link = link.substr(0, std::min(link.find_first_of("&\r\n \t"), sizeof job.infoLink - 1));
    link.copy(job.infoLink, link.size());
    job.infoLink[link.size()] = '\0';
    return true;
}
