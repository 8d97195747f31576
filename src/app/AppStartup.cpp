#include "app/AppStartup.h"

#include "app/ProcessListThread.h"
#include "drives/SystemDiscService.h"
#include "jobs/MainThreadQueue.h"
#include "jobs/UserInteraction.h"
#include "platform/FileOps.h"
#include "platform/Folders.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "platform/ProgramInfo.h"
#include "platform/UserFolders.h"
#include "restore/RecoveredRecordings.h"

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

namespace {

bool IsTemporaryRecording(const char* path) {
    return std::strncmp(path, kTemporaryRecordingFolder, std::strlen(kTemporaryRecordingFolder)) == 0 &&
           access(path, F_OK) == 0;
}

} // namespace

LAppStartup::LAppStartup(LMainThreadQueue& queue, LUserInteraction* interaction) {
    // Files and folders the code makes get exactly the modes it asks for (0644, 0755), and
    // whatever child processes or libraries make (the encoder, an unpacked component, the
    // settings file, a file saved by the sound editor) is never writable by others.
    umask(022);
    // A file that outgrows the user's file size limit fails its write with EFBIG, which the
    // jobs report and clean up after, instead of the signal killing the program mid-write.
    std::signal(SIGXFSZ, SIG_IGN);
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

void LAppStartup::InstallDrives() {
    InstallSystemDiscService();
}

std::string LQueueFilePath() {
    char folder[kPathBufferSize], path[kPathBufferSize];
    GetApplicationDataFolder(folder);
    _MakeFilePath(path, folder, "vnprocesses.list");
    return path;
}

std::vector<std::string> LQueuedOutputs() {
    std::vector<uint8_t> data;
    std::vector<std::string> outputs;
    if (!LoadFile(LQueueFilePath().c_str(), data, ProcessListFile::kLockWaitMs)) return outputs;
    for (std::size_t at = ProcessListFile::kHeaderSize; at + sizeof(LProcessConvert) <= data.size();
         at += sizeof(LProcessConvert)) {
        LProcessConvert request;
        std::memcpy(&request, data.data() + at, sizeof request);
        LTerminateRequestStrings(request);
        char path[kPathBufferSize];
        LGetRequestDestination(path, request);
        outputs.emplace_back(path);
    }
    return outputs;
}

std::vector<std::string> LRecoverDiscardedRequests(const std::vector<LProcessConvert>& requests) {
    std::vector<std::string> recovered;
    std::string folderShown;
    char folder[kPathBufferSize];
    for (LProcessConvert request : requests) {
        LTerminateRequestStrings(request);
        if (request.destinationPath[0]) {
            char partial[kPathBufferSize];
            LGetPartialOutputPath(partial, request.destinationPath);
            unlink(partial);
        }
        if (!IsTemporaryRecording(request.sourcePath)) continue;
        char name[kPathBufferSize], base[kPathBufferSize], target[kPathBufferSize];
        _GetFileFromPath(name, request.destinationPath[0] ? request.destinationPath : request.sourcePath);
        _GetFileNameFromPath(base, name);
        if (!LRecoverRecording(request.sourcePath, request.outputFolder, base, target)) continue;
        LOGWARN("The processing queue could not be resumed: the recording %s was kept as %s",
                request.sourcePath, target);
        recovered.emplace_back(target);
        _GetFolderFromPath(folder, target);
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
