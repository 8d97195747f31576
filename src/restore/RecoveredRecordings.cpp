#include "restore/RecoveredRecordings.h"

#include "platform/FileOps.h"
#include "platform/Folders.h"
#include "platform/Log.h"
#include "platform/Paths.h"


#include <string>

namespace {

constexpr const char* kRecoveredFolder = "Recovered Recordings";

} // namespace

bool LRecoverRecording(const char* recording, const char* outputFolder, const char* name,
                       char* kept) {
    char folder[kPathBufferSize];
    _MakeFilePath(folder, outputFolder[0] ? outputFolder : ".", kRecoveredFolder);
    if (!CreateFolderTree(folder)) {
        LOGERROR("Could not create %s to keep the recording %s", folder, recording);
        return false;
    }
    _MakeFilePath(kept, folder, name, ".wav");
    for (int n = 2; IsNameTaken(kept); ++n)
        _MakeFilePath(kept, folder, (std::string(name) + " (" + std::to_string(n) + ")").c_str(),
                      ".wav");
    if (!MoveFile(recording, kept)) {
        LOGERROR("Could not move the recording %s to %s", recording, kept);
        return false;
    }
    return true;
}
