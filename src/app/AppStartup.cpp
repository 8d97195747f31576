#include "app/AppStartup.h"

#include "app/ProcessListThread.h"
#include "jobs/MainThreadQueue.h"
#include "jobs/UserInteraction.h"
#include "platform/FileOps.h"
#include "platform/Folders.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "platform/ProgramInfo.h"
#include "platform/UserFolders.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace {

constexpr const char* kRecoveredFolder = "Recovered Recordings";

bool IsTemporaryRecording(const char* path) {
    return std::strncmp(path, kTemporaryRecordingFolder, std::strlen(kTemporaryRecordingFolder)) == 0 &&
           access(path, F_OK) == 0;
}

} // namespace

LAppStartup::LAppStartup(LMainThreadQueue& queue, LUserInteraction* interaction) {
    umask(0);
    LLog::FixFolder(true);
    LMainThreadQueue::SetCurrent(&queue);
    SetUserInteraction(interaction);
    SetConvertNotify(&gMainNotify);
    thrConvertList.SetDiscardHandler(LRecoverDiscardedRequests);
}

LAppStartup::~LAppStartup() {
    thrConvertList.StopThreadNow();
    thrConvertList.SetDiscardHandler({});
    gMainNotify.SetTarget(nullptr);
    SetConvertNotify(nullptr);
    SetUserInteraction(nullptr);
    LMainThreadQueue::SetCurrent(nullptr);
    LLog::FixFolder(false);
}

void LAppStartup::StartQueue(LMainNotifyTarget* target) {
    gMainNotify.SetTarget(target);
    thrConvertList.SetListFilePath(LQueueFilePath().c_str(), STOP_KEEP_LIST, true);
}

std::string LQueueFilePath() {
    char folder[kPathBufferSize], path[kPathBufferSize];
    GetApplicationDataFolder(folder);
    _MakeFilePath(path, folder, "vnprocesses.list");
    return path;
}

std::vector<std::string> LRecoverDiscardedRequests(const std::vector<LProcessConvert>& requests) {
    std::vector<std::string> recovered;
    std::string folderShown;
    for (const LProcessConvert& request : requests) {
        if (request.destinationPath[0]) {
            char partial[kPathBufferSize];
            LGetPartialOutputPath(partial, request.destinationPath);
            unlink(partial);
        }
        if (!IsTemporaryRecording(request.sourcePath)) continue;
        char folder[kPathBufferSize], name[kPathBufferSize], target[kPathBufferSize];
        _MakeFilePath(folder, request.outputFolder[0] ? request.outputFolder : ".", kRecoveredFolder);
        if (!CreateFolderTree(folder)) {
            LOGERROR("Could not create %s to keep the recording %s", folder, request.sourcePath);
            continue;
        }
        _GetFileFromPath(name, request.destinationPath[0] ? request.destinationPath : request.sourcePath);
        char base[kPathBufferSize];
        _GetFileNameFromPath(base, name);
        _MakeFilePath(target, folder, base, ".wav");
        for (int n = 2; access(target, F_OK) == 0; ++n)
            _MakeFilePath(target, folder, (std::string(base) + " (" + std::to_string(n) + ")").c_str(),
                          ".wav");
        if (!MoveFile(request.sourcePath, target)) {
            LOGERROR("Could not move the recording %s to %s", request.sourcePath, target);
            continue;
        }
        LOGWARN("The processing queue could not be resumed: the recording %s was kept as %s",
                request.sourcePath, target);
        recovered.emplace_back(target);
        folderShown = folder;
    }
    if (!recovered.empty())
        UserInteraction().ShowMessage(
            kProgramName,
            std::to_string(recovered.size()) +
                " recording(s) could not be converted after the program ended unexpectedly. They "
                "were kept in the folder \"" + folderShown + "\".",
            LMessageButtons::Ok);
    return recovered;
}
