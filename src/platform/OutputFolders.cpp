#include "platform/OutputFolders.h"

#include "platform/FileOps.h"
#include "platform/Folders.h"
#include "platform/Paths.h"
#include "platform/Settings.h"
#include "platform/UserFolders.h"

namespace {

constexpr const char* kOutputFolderKey = "AppOutputFolder";

std::string ApplicationDataFolder() {
    char dataFolder[kPathBufferSize];
    GetApplicationDataFolder(dataFolder);
    return dataFolder;
}

} // namespace

std::string GetVNOutputFolder() {
    return LUserSettingGetString("Settings", kOutputFolderKey, ApplicationDataFolder().c_str());
}

std::string GetDefaultOutputFolder() {
    char music[kPathBufferSize];
    GetUserMusicFolder(music);
    char folder[kPathBufferSize];
    _MakeFilePath(folder, music, "Vinora");
    return folder;
}

bool SetVNOutputFolder(const char* folder, bool* changed) {
    if (!folder) return false;
    std::string target = folder;
    if (target.empty())
        target = ApplicationDataFolder();
    else if (!IsFolder(folder) || !TestFolderWritable(folder))
        return false;
    if (changed) *changed = target != GetVNOutputFolder();
    LUserSettingSetString("Settings", kOutputFolderKey, target.c_str());
    return true;
}

bool GetTempWaveFilePath(char* out) {
    CreateFolderTree(kTemporaryRecordingFolder);
    return GetTempFile(kTemporaryRecordingFolder, out, ".wav");
}
