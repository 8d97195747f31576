#include "platform/UpdateCheck.h"

#include "jobs/UserInteraction.h"
#include "platform/HttpClient.h"
#include "platform/NetworkHosts.h"
#include "platform/OpenURL.h"
#include "platform/ProgramInfo.h"

#include <string>

namespace {

constexpr const char* kVersionFile = "/versions/vinora_mac.txt";
constexpr std::size_t kReplySize = 2048;
constexpr unsigned int kTimeout = 5000;

} // namespace

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

int LAboutCheckForVersionUpdate(LProcessInterface& progress, bool askedByUser) {
    LProcessCheckForVersionUpdates job;
    const int result = Process(progress, job);
    LUserInteraction& user = UserInteraction();
    if (result == PROCESS_FAILED && askedByUser)
        user.ShowMessage(kProgramName,
                         "The check for updates could not be done: the version server could not "
                         "be reached or gave no answer. Check your network connection and try "
                         "again later.",
                         LMessageButtons::Ok);
    if (result != PROCESS_DONE) return result;
    if (job.latestVersion <= kProgramVersion + 1e-9) {
        user.ShowMessage("Version Current", "The current version is up-to-date",
                         LMessageButtons::Ok);
        return result;
    }
    const LMessageAnswer answer = user.ShowMessage(
        "Update Version Available",
        "An updated version of this software is now available for download online. Do you "
        "want to see more information about the new version?",
        LMessageButtons::ViewCancel);
    // Only a web page is opened, whatever else the server names.
    const std::string link = job.infoLink;
    if (answer == LMessageAnswer::Ok && (link.starts_with("http://") || link.starts_with("https://")))
        LOpenURL(job.infoLink);
    return result;
}
