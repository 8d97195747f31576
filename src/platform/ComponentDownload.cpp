#include "platform/ComponentDownload.h"

#include "platform/Components.h"
#include "platform/EscapeFilePath.h"
#include "platform/Folders.h"
#include "platform/HttpClient.h"
#include "platform/Log.h"
#include "platform/NetworkHosts.h"
#include "platform/Paths.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char* kRemoteFolder = "/components/mac/";

// Runs a command through the shell; true when it exits normally with status 0.
bool RunShellCommand(const std::string& command) {
    const int status = std::system(command.c_str());
    return status != -1 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string Quoted(const char* path) {
    char escaped[kPathBufferSize];
    EscapeFilePath(escaped, path);
    return std::string("\"") + escaped + "\"";
}

// Downloads from the host stored under the key; a host that is not set fails.
int DownloadFrom(LProcessInterface& pi, const char* hostKey, const char* name, char* localPath) {
    const std::string host = LGetNetworkHost(hostKey);
    if (host.empty()) {
        LOGERROR("No server is set for downloading components (setting %s/%s)", kNetworkSection,
                 hostKey);
        return PROCESS_FAILED;
    }
    return ProcessDownloadComponent(pi, host.c_str(), name, localPath);
}

} // namespace

int Process(LProcessInterface& pi, LProcessGetComponentPath& job) {
    if (GetComponentPath(job.name, job.path, true)) return PROCESS_DONE;
    if (ProcessDownloadAndInstallComponent(pi, job.name) == PROCESS_STOPPED) return PROCESS_STOPPED;
    return GetComponentPath(job.name, job.path, true) ? PROCESS_DONE : PROCESS_FAILED;
}

int ProcessDownloadComponent(LProcessInterface& pi, const char* host, const char* name,
                             char* localPath) {
    localPath[0] = '\0';
    char folder[kPathBufferSize];
    if (!GetComponentFolder(folder)) return PROCESS_FAILED;
    char fileName[kPathBufferSize];
    LGetComponentServerFileName(fileName, name);
    _MakeFilePath(localPath, folder, fileName);

    // The download goes to a hidden name and takes the component's name only when complete.
    const std::string url = std::string("http://") + host + kRemoteFolder + fileName;
    char partial[kPathBufferSize];
    _MakeFilePath(partial, folder, (std::string(".") + fileName + ".download").c_str());
    // The hidden name is the program's own: what an earlier try left there (a link included)
    // goes first, so the download never writes through it.
    unlink(partial);
    int result = ProcessHTTPDownloadFile(pi, url.c_str(), partial, false);
    if (result == PROCESS_DONE && (chmod(partial, 0755) != 0 || std::rename(partial, localPath) != 0))
        result = PROCESS_FAILED;
    unlink(partial);
    if (result == PROCESS_DONE && LIsZipComponent(name))
        result = LInstallZipComponent(name, localPath);
    if (result != PROCESS_DONE) unlink(localPath);
    return result;
}

int ProcessDownloadAndInstallComponent(LProcessInterface& pi, const char* name) {
    pi.SetStatus("Download install-on-demand", 0);
    pi.SetStatus(name, 1);
    char path[kPathBufferSize];
    if (GetComponentPath(name, path, true)) return PROCESS_DONE;

    char localPath[kPathBufferSize] = "";
    int result = DownloadFrom(pi, kComponentHostKey, name, localPath);
    if (result == PROCESS_FAILED) result = DownloadFrom(pi, kWebHostKey, name, localPath);
    if (result != PROCESS_DONE && localPath[0]) unlink(localPath);
    if (result == PROCESS_DONE)
        LOG("Installed the component %s", name);
    else if (result == PROCESS_FAILED)
        LOGERROR("Could not download the component %s", name);
    return result;
}

int LInstallZipComponent(const char* name, const char* zipPath) {
    char folder[kPathBufferSize];
    if (!GetComponentFolder(folder)) {
        unlink(zipPath);
        return PROCESS_FAILED;
    }
    char baseName[kPathBufferSize];
    _GetFileNameFromPath(baseName, zipPath);
    char installed[kPathBufferSize];
    _MakeFilePath(installed, folder, baseName);

    RunShellCommand("/usr/bin/unzip -qq -o " + Quoted(zipPath) + " -d " + Quoted(folder));
    unlink(zipPath);
    if (!IsFolder(installed)) {
        LOGERROR("The component %s did not unpack into a folder", name);
        return PROCESS_FAILED;
    }
    RunShellCommand("/bin/chmod -R u+rwx,go+rx,go-w " + Quoted(installed));
    return PROCESS_DONE;
}

bool GetComponentPathDownload(const char* name, char* out, LProcessInterface& progress) {
    if (GetComponentPath(name, out, true)) return true;
    LProcessGetComponentPath job{name, out};
    return Process(progress, job) == PROCESS_DONE;
}
