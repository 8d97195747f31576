#include "app/WizardPages.h"

#include "jobs/UserInteraction.h"
#include "platform/Components.h"
#include "platform/Folders.h"
#include "platform/Paths.h"
#include "platform/Settings.h"
#include "record/NoiseFloor.h"

#include <sys/stat.h>

namespace {

bool Flag(const char* section, const char* key, bool fallback) {
    return LUserSettingGet<bool>(section, key, fallback);
}

void SetFlag(const char* section, const char* key, bool value) {
    LUserSettingSet<bool>(section, key, value);
}

bool IsFolder(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace

bool LCheckMp3Component() {
    char path[kPathBufferSize];
    if (GetComponentPath("mp3el", path, true)) return true;
    UserInteraction().ShowMessage(
        "MP3 Component",
        "Recording to MP3 needs the MP3 encoder component. Please download the file 'mp3el' from "
        "the components page of the Vinora Records web site and install it into the Components "
        "folder first, or install the LAME encoder (package \"lame\") on your system.",
        LMessageButtons::Ok);
    return false;
}

bool LConfirmCopyFolder(const std::string& folder, const char* question) {
    if (folder.empty()) {
        UserInteraction().ShowError(
            "No output folder selected. Please specify an output folder to make copies to.");
        return false;
    }
    if (IsFolder(folder)) return true;
    if (UserInteraction().ShowMessage("Create Folder?", question, LMessageButtons::OkCancel) !=
        LMessageAnswer::Ok)
        return false;
    if (CreateFolderTree(folder.c_str())) return true;
    UserInteraction().ShowError("The folder \"" + folder + "\" could not be created.");
    return false;
}

std::string LFileNamePatternToStore(const std::string& pattern) {
    char cleaned[kPathBufferSize];
    if (pattern.find_first_not_of(" \t") == std::string::npos ||
        !PreprocessName(pattern.c_str(), cleaned) || cleaned[0] == 0)
        return "Untitled %autonumber%";
    std::string text = cleaned;
    if (text.find("%autonumber%") == std::string::npos) text += " %autonumber%";
    return text;
}

void LIntroductionPage::Activate() {
    dontShowAgain = !Flag("Introduction", "Show", true);
}

bool LIntroductionPage::CmOk() {
    SetFlag("Introduction", "Show", !dontShowAgain);
    return true;
}

bool LIntroductionPage::IsPageValid() const {
    return Flag("Introduction", "Show", true);
}

void LRecordSourcePage::Activate() {
    vinyl = Flag("RecordingSource", "Vinyl", true);
    amp = Flag("RecordingSource", "Amp", true);
    speed = LUserSettingGet<int>("RecordingSource", "RecordingSpeed", 0);
    calibrateVolume = Flag("Wizard", "CalibrateVolume", true);
    measureNoiseFloor = Flag("Wizard", "MeasureNoiseFloor", true);
    setRestoreTools = Flag("Wizard", "SetAudioRestoreTools", true);
    setOutputFormat = Flag("Wizard", "SetOutputFormat", true);
}

bool LRecordSourcePage::CmOk() {
    SetFlag("RecordingSource", "Vinyl", vinyl);
    SetFlag("RecordingSource", "Amp", amp);
    LUserSettingSet<int>("RecordingSource", "RecordingSpeed", speed == 1 ? 1 : speed == 2 ? 2 : 0);
    SetFlag("Wizard", "CalibrateVolume", calibrateVolume);
    SetFlag("Wizard", "MeasureNoiseFloor", measureNoiseFloor);
    SetFlag("Wizard", "SetAudioRestoreTools", setRestoreTools);
    SetFlag("Wizard", "SetOutputFormat", setOutputFormat);
    return true;
}

LRecordSettingPage::LRecordSettingPage(std::function<void(const LDBMC&)> levels)
    : meter_(std::move(levels)) {}

void LRecordSettingPage::Activate() {
    device = LSettingGetSoundRecordDevice("Settings", "SoundInDevice");
    volume = LUserSettingGet<int>("Recording", "Volume", -20);
    Restart();
}

void LRecordSettingPage::Restart() {
    meter_.Start(device, volume);
}

void LRecordSettingPage::Deactivate() {
    meter_.Stop();
}

bool LRecordSettingPage::CmOk() {
    LSettingSetSoundRecordDevice("Settings", "SoundInDevice", device);
    LUserSettingSet<int>("Recording", "Volume", volume);
    return true;
}

bool LRecordSettingPage::IsPageValid() const {
    return Flag("Wizard", "CalibrateVolume", true);
}

LNoiseFloorWizardPage::LNoiseFloorWizardPage(std::function<void()> refresh,
                                             std::function<void(const LDBMC&)> levels)
    : refresh_(std::move(refresh)), levels_(std::move(levels)) {}

void LNoiseFloorWizardPage::Activate() {
    noise_ = std::make_unique<LSampleNoisePage>(static_cast<LSampleNoiseView&>(*this));
    custom = noise_->IsCustom();
    floor = noise_->StoredFloor();
    noise_->StartRecorder();
}

void LNoiseFloorWizardPage::Deactivate() {
    if (noise_) noise_->StopRecorder();
}

bool LNoiseFloorWizardPage::CmOk() {
    return noise_ && noise_->CmOk(custom, floor);
}

bool LNoiseFloorWizardPage::IsPageValid() const {
    return Flag("Wizard", "MeasureNoiseFloor", true);
}

void LAudioRestorationPage::Activate() {
    LRestoreChoices defaults;
    defaults.dcOffset = defaults.clickPop = defaults.noiseReduce = defaults.normalization = true;
    choices = LRestoreChoices::FromSettings(defaults);
    if (!Flag("RecordingSource", "Vinyl", true)) choices.clickPop = false;
}

bool LAudioRestorationPage::CmOk() {
    choices.StoreSwitches();
    return true;
}

bool LAudioRestorationPage::IsPageValid() const {
    return Flag("Wizard", "SetAudioRestoreTools", true);
}

void LOutputFormatPage::Activate() {
    format = LUserSettingGet<int>("OutputFormat", "OutputFormatNum", 1);
    makeCopy = Flag("OutputFormat", "MakeCopy", false);
    copyFolder = LUserSettingGetString("OutputFormat", "OutputFolder", "");
    pattern = LUserSettingGetString("OutputFormat", "FileNameFormat", "Untitled %autonumber%");
}

bool LOutputFormatPage::CmOk() {
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", format);
    if (format == 1 || format == 3) LCheckMp3Component();
    if (makeCopy &&
        !LConfirmCopyFolder(copyFolder,
                              "The specified output folder does not exist. Would you like to "
                              "create it?"))
        return false;
    LUserSettingSetString("OutputFormat", "OutputFolder", copyFolder.c_str());
    SetFlag("OutputFormat", "MakeCopy", makeCopy);
    pattern = LFileNamePatternToStore(pattern);
    LUserSettingSetString("OutputFormat", "FileNameFormat", pattern.c_str());
    return true;
}

bool LOutputFormatPage::IsPageValid() const {
    return Flag("Wizard", "SetOutputFormat", true);
}

LFinalPage::LFinalPage(std::function<void()> startRecording)
    : startRecording_(std::move(startRecording)) {}

void LFinalPage::Activate() {
    startRecordingNow = Flag("Settings", "StartRecordingNow", true);
}

bool LFinalPage::CmOk() {
    SetFlag("Settings", "StartRecordingNow", startRecordingNow);
    if (startRecordingNow && startRecording_) startRecording_();
    return true;
}
