#include "platform/UpdateCheck.h"

#include "jobs/UserInteraction.h"
#include "platform/HttpClient.h"
#include "platform/NetworkHosts.h"
#include "platform/OpenURL.h"
#include "platform/ProgramInfo.h"

#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr const char* kVersionFile = "/versions/vinora_mac.txt";
constexpr std::size_t kReplySize = 2048;
constexpr unsigned int kTimeout = 5000;

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
    if (info != std::string_view::npos) {
        std::string_view link = body.substr(info + std::strlen("info="));
        link = link.substr(0, std::min(link.find_first_of("&\r\n \t"), sizeof job.infoLink - 1));
        link.copy(job.infoLink, link.size());
        job.infoLink[link.size()] = '\0';
    }
    return true;
}

int Process(LProcessInterface& pi, LProcessCheckForVersionUpdates& job) {
    pi.SetStatus(kCheckingForUpdatesCaption, 0);
    pi.SetStatus("Please wait...", 1);
    pi.SetProgressIndeterminateOn();
    const std::string host = LGetNetworkHost(kVersionHostKey);
    if (host.empty()) return PROCESS_FAILED;
    const std::string url = "http://" + host + kVersionFile;
    char reply[kReplySize];
    const int result = ProcessHTTPGet(pi, url.c_str(), reply, sizeof reply, kTimeout);
    if (result != PROCESS_DONE) return result;
    return LParseVersionReply(reply, job) ? PROCESS_DONE : PROCESS_FAILED;
}

int LAboutCheckForVersionUpdate(LProcessInterface& progress) {
    LProcessCheckForVersionUpdates job;
    const int result = Process(progress, job);
    LUserInteraction& user = UserInteraction();
    if (result == PROCESS_FAILED) {
        user.ShowMessage(kProgramName,
                         "Unable to check for updates. Please check your Internet connection "
                         "and try again later.",
                         LMessageButtons::Ok);
    }
    if (result != PROCESS_DONE) return result;
    if (job.latestVersion <= kProgramVersion + 1e-9) {
        user.ShowMessage("Version Current", "The current version is up-to-date",
                         LMessageButtons::Ok);
        return result;
    }
    // OK stands for the "View" button.
    const LMessageAnswer answer = user.ShowMessage(
        "Update Version Available",
        "An updated version of this software is now available for download online. Do you "
        "want to see more information about the new version?",
        LMessageButtons::OkCancel);
    if (answer == LMessageAnswer::Ok && job.infoLink[0]) LOpenURL(job.infoLink);
    return result;
}
