#include "app/Preferences.h"

#include "app/WizardPages.h"
#include "jobs/UserInteraction.h"
#include "platform/OutputFolders.h"
#include "platform/Paths.h"
#include "platform/ProgramInfo.h"
#include "platform/Settings.h"
#include "record/NoiseFloor.h"

#include <algorithm>
#include <cstdio>

namespace {

bool Flag(const char* section, const char* key, bool fallback) {
    return LUserSettingGet<bool>(section, key, fallback);
}

void SetFlag(const char* section, const char* key, bool value) {
    LUserSettingSet<bool>(section, key, value);
}

} // namespace

LGeneralPage::LGeneralPage(std::function<bool(const std::string&)> setOutputFolder,
                           std::function<void(const LDBMC&)> levels)
    : setOutputFolder_(std::move(setOutputFolder)), meter_(std::move(levels)) {}

void LGeneralPage::InitDialog(const std::string& folder) {
    deleteFiles = Flag("Settings", "DeleteFiles", true);
    outputFolder = folder;
    device = LSettingGetSoundRecordDevice("Settings", "SoundInDevice");
    volume = LUserSettingGet<int>("Recording", "Volume", 0);
    recordTone = Flag("Settings", "RecordTone", false);
    useMinTime = Flag("Settings", "UseMinTime", false);
    minTime = LUserSettingGet<int>("Settings", "MinTime", 2);
}

void LGeneralPage::StartRecorder() {
    meter_.Start(device, volume);
}

bool LGeneralPage::CmOk() {
    SetFlag("Settings", "DeleteFiles", deleteFiles);
    if (!setOutputFolder_(outputFolder)) {
        char text[kPathBufferSize + 256];
        std::snprintf(text, sizeof text,
                      "The specified recording folder \"%s\" does not exist or it is not writable "
                      "for you! Please choose another one or leave it blank to reset to default "
                      "folder.",
                      outputFolder.c_str());
        UserInteraction().ShowMessage(kProgramName, text, LMessageButtons::Ok);
        return false;
    }
    LSettingSetSoundRecordDevice("Settings", "SoundInDevice", device);
    LUserSettingSet<int>("Recording", "Volume", volume);
    SetFlag("Settings", "RecordTone", recordTone);
    SetFlag("Settings", "UseMinTime", useMinTime);
    if (useMinTime) {
        minTime = std::max(minTime, 2);
        LUserSettingSet<int>("Settings", "MinTime", minTime);
    }
    return true;
}

void LAudioSettingsPage::InitDialog() {
    vinyl = Flag("RecordingSource", "Vinyl", true);
    speed = LUserSettingGet<int>("RecordingSource", "RecordingSpeed", 0);
    copyFolder = LUserSettingGetString("OutputFormat", "OutputFolder",
                                       GetDefaultOutputFolder().c_str());
    makeCopy = Flag("OutputFormat", "MakeCopy", false);
    amp = Flag("RecordingSource", "Amp", true);
    noiseFloor = LUserSettingGet<int>("Settings", "dBNoiseFloor", -30);
    format = LUserSettingGet<int>("OutputFormat", "OutputFormatNum", 1);
    restoration = LRestoreChoices::FromSettings();
}

void LAudioSettingsPage::BrowseCopyFolder() {
    const std::string start = LUserSettingGetString(
        "OutputFormat", "OutputFolder", GetDefaultOutputFolder().c_str());
    const std::string chosen = UserInteraction().ChooseFolder("Locate output folder...", start);
    if (!chosen.empty()) copyFolder = chosen;
}

bool LAudioSettingsPage::CmOk() {
    SetFlag("RecordingSource", "Vinyl", vinyl);
    LUserSettingSet<int>("RecordingSource", "RecordingSpeed", std::clamp(speed, 0, 2));
    if (makeCopy &&
        !LConfirmCopyFolder(copyFolder, "The recording output folder you specified does not "
                                        "exist. Would you like to create it?."))
        return false;
    LUserSettingSetString("OutputFormat", "OutputFolder", copyFolder.c_str());
    SetFlag("OutputFormat", "MakeCopy", makeCopy);
    SetFlag("RecordingSource", "Amp", amp);
    if (LIsUnusualNoiseFloor(noiseFloor) &&
        UserInteraction().ShowMessage(kProgramName, kUnusualNoiseFloorQuestion,
                                      LMessageButtons::OkCancel) != LMessageAnswer::Ok)
        return false;
    LUserSettingSet<int>("Settings", "dBNoiseFloor", noiseFloor);
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", format);
    if (format == 1 || format == 3) LCheckMp3Component();
    restoration.StoreSwitches();
    return true;
}
