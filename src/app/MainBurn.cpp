// The main window's disc burning: the disc totals in the status bar, the burn wizard commands,
// the burn entry for audio CDs and data discs, erase and eject.
#include "app/MainDialog.h"

#include "app/BurnWizardPages.h"
#include "app/MainDialogText.h"
#include "codecs/AudioFileSource.h"
#include "platform/Log.h"
#include "platform/Settings.h"
#include "platform/TemporaryFolder.h"
#include "sound/SoundTime.h"
#include "tags/AudioTagData.h"

#include <strings.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kAudioCDFormat = 4;
constexpr int kDataDiscFormat = 2;
// "ISO Disk": ISO 9660 with Joliet names, settled by the drive for a CD, DVD or Blu-ray.
constexpr int kDataDiscProject = 16;
constexpr const char* kTemporaryRoot = "/var/tmp";

constexpr const char* kNothingToBurn =
    "No audio has been recorded or no files have been selected, burning will not commence.";
constexpr const char* kCommence =
    "Commence burning to disc? All selected files in the main list will be burned.\r\n\r\nIf "
    "there are files in the list to be burned that are not selected, click \"Cancel\" and then "
    "select all desired files and click \"Burn Audio\" or \"Burn MP3\" from the toolbar.";
constexpr const char* kEraseFailed = "Erasing of the disc has failed, burning will not commence.";
constexpr const char* kBurnFailed = "Burn has failed. There may be a problem with the drive or "
                                    "disc. Please try another disk or try a lower speed.";
constexpr const char* kAudioDone =
    "Burn has successfully completed. The disc has been ejected.\r\n\r\nTotal Files Burned: "
    "%d\r\nTotal Duration: %s \n  Would you like to burn another copy?";
constexpr const char* kDataDone =
    "Burn has successfully completed. The disc has been ejected.\r\n\r\nTotal Files Burned: "
    "%d\r\nTotal Size: %5.2f MB \n  Would you like to burn another copy?";

unsigned BurnerIndex() {
    return unsigned(LUserSettingGet<int>("CDRecorder", "CDDrive", 0));
}

// What a user without the chosen burner is told.
std::string NoBurnerText() {
    const std::string missing = GetBurnErrorMessage(15);
    if (DiscService().CopyDeviceArray().empty())
        return missing + ".\n\nNo CD or DVD burner was found on this computer.";
    return missing + ".\n\nPlease choose another drive in the burn settings.";
}

// Gives up the drive and opens its tray; false without a burner.
bool EjectBurnerDisc() {
    LDiscDeviceRef device = CopyDeviceByIndex(BurnerIndex());
    if (!device) return false;
    device->ReleaseExclusiveAccess();
    return device->EjectMedia();
}

void CopyField(char (&field)[260], const std::string& text) {
    std::snprintf(field, sizeof field, "%s", text.c_str());
}

} // namespace

void MainDialog::UpdateMainWindowCDInfo(bool detectDisc) {
    const std::string capacity =
        CopyDeviceByIndex(BurnerIndex()) ? GetCDCapacity(detectDisc) : "No Burner Found";
    const bool all = !list_.HasSelection();
    int64_t totalMs = 0;
    double totalMB = 0;
    for (const LRecordingRow& row : list_.Rows()) {
        if (!all && !row.selected) continue;
        totalMs += row.durationMs;
        totalMB += std::atof(row.size.c_str());
    }
    std::string amount;
    if (LUserSettingGet<int>("OutputFormat", "OutputFormatNum", 1) == kAudioCDFormat) {
        char text[32];
        LSoundTime(static_cast<int32_t>(totalMs))._GetText2(text);
        amount = text;
        LUserSettingSetString("RecordingPage", "TotalTime", text);
    } else {
        amount = Printf("%5.3f MB", totalMB);
        LUserSettingSet<int64_t>("RecordingPage", "TotalSize", int64_t(totalMB * 1048576));
    }
    SetStatus(2, amount + " / " + capacity);
}

void MainDialog::CmBurnWizard(bool audio) {
    SetTotalFileDurations(true);
    const bool setOutputFormat = LUserSettingGet<bool>("Wizard", "SetOutputFormat", true);
    const int outputFormat = LUserSettingGet<int>("OutputFormat", "OutputFormatNum", 1);
    LUserSettingSet<bool>("Wizard", "SetOutputFormat", true);
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", audio ? kAudioCDFormat : kDataDiscFormat);
    UpdateMainWindowCDInfo(true);
    windows_.burnWizard(audio ? "Audio" : "Data");
    UpdateMainWindowCDInfo(false);
    LUserSettingSet<bool>("Wizard", "SetOutputFormat", setOutputFormat);
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", outputFormat);
    LUserSettingSet<bool>("OutputFormat", "BurnCDNow", false);
}

void MainDialog::BurnSelectedFiles(bool audio) {
    for (bool again = true; again;) {
        if (list_.Empty()) {
            Tell(kNothingToBurn);
            return;
        }
        if (!list_.HasSelection()) {
            list_.SelectAll();
            view_.RowsChanged();
        }
        SetTotalFileDurations(true);
        if (!CopyDeviceByIndex(BurnerIndex())) {
            Tell(NoBurnerText());
            return;
        }
        if (Ask(kCommence, kProgramName, LMessageButtons::OkCancel) != LMessageAnswer::Ok) return;
        if (LDiskBurnSettings().eraseCDRW) {
            const LProcessResult erased = EraseDisc(audio ? "Burn Audio CD" : "Burn Data CD/DVD");
            if (erased == PROCESS_STOPPED) return;
            if (erased != PROCESS_DONE) {
                Tell(kEraseFailed);
                return;
            }
        }
        again = audio ? BurnAudioCD() : BurnDataDisc();
        UpdateMainWindowCDInfo(true);
    }
}

bool MainDialog::BurnAudioCD() {
    LCDBurnAudio job;
    int count = 0;
    for (const std::string& path : SelectedPaths()) {
        LSoundSource source = LOpenAudioFileSource(path.c_str());
        if (source->GetError() != sndErrNone) {
            LOG("Unable to open file %s", path.c_str());
            continue;
        }
        LAudioTagData tags;
        tags.ReadTags(path.c_str(), tagModeAll);
        std::string title = tags.GetTag("TITLE");
        if (title.empty()) {
            char name[kPathBufferSize];
            _GetFileNameFromPath(name, path.c_str());
            title = name;
        }
        job.AddTrack(source, path.c_str(), title.c_str(), tags.GetTag("ARTIST").c_str(), nullptr);
        ++count;
    }
    if (count == 0) {
        Tell("None of the selected files could be opened, burning will not commence.");
        return false;
    }
    LOG("Burning CD Audio Disc");
    const LProcessResult result = RunBurnJob(
        "Burn Audio CD", [&](LProcessInterface& progress) { return burnJobs_.audio(progress, job); });
    if (result == PROCESS_FAILED) LOGERROR("Audio CD burn: %s", job.error.Describe().c_str());
    return ReportBurn(result, Printf(kAudioDone, count,
                                     LUserSettingGetString("RecordingPage", "TotalTime",
                                                           "0:00:00.00").c_str()));
}

bool MainDialog::BurnDataDisc() {
    LAbstractFileSystem compilation;
    compilation.SetFSVolumeLabel(LUserSettingGetString("CDRecorder", "CDLabel", "CDLabel"));
    const int type = LUserSettingGet<int>("OutputFormat", "DataCDType", DATA_CD_MP3);
    const bool reencodeAll = LUserSettingGet<bool>("OutputFormat", "ReencodeAllFiles", false);
    const char* extension = type == DATA_CD_WAVE ? ".wav" : ".mp3";
    LTemporaryFolder folder(kTemporaryRoot, "vinora-data-");
    if (folder.Path().empty()) {
        const std::string text = Printf("No temporary folder could be made in %s: %s",
                                        kTemporaryRoot, std::strerror(errno));
        LOGERROR("%s", text.c_str());
        Tell(text);
        return false;
    }
    int count = 0;
    for (const std::string& path : SelectedPaths()) {
        std::string file = path;
        char ext[kPathBufferSize];
        _GetFileExtensionFromPath(ext, path.c_str());
        if (type != DATA_CD_AS_THEY_ARE && (reencodeAll || strcasecmp(ext, extension) != 0)) {
            file = ConvertForDataDisc(path, folder.Path(), extension);
            if (file.empty()) continue;
        }
        std::string error;
        if (!compilation.AddPath(file, error)) {
            LOGERROR("%s", error.c_str());
            continue;
        }
        ++count;
    }
    LOG("Burning CD/DVD Data Disc");
    LBurnDataDisk job(compilation, "", kDataDiscProject);
    const LProcessResult result = RunBurnJob(
        "Burn Data CD/DVD", [&](LProcessInterface& progress) { return burnJobs_.data(progress, job); });
    folder.Remove();
    if (result == PROCESS_FAILED) LOGERROR("Data disc burn: %s", job.error.Describe().c_str());
    return ReportBurn(result,
                      Printf(kDataDone, count,
                             LUserSettingGet<int64_t>("RecordingPage", "TotalSize", 0) / 1048576.0));
}

std::string MainDialog::ConvertForDataDisc(const std::string& path, const std::string& folder,
                                           const char* extension) {
    char name[kPathBufferSize];
    _GetFileNameFromPath(name, path.c_str());
    LProcessConvert request;
    CopyField(request.sourcePath, path);
    CopyField(request.outputFolder, folder);
    CopyField(request.outputExtension, extension);
    CopyField(request.destinationPath, Join(folder, std::string(name) + extension));
    request.restore = 0;
    request.convert = 1;
    request.addToList = 0;
    request.deleteSource = 0;
    request.copyToFolder = 0;
    const LProcessResult result = view_.RunJob("Converting Files", [&](LProcessInterface& progress) {
        return burnJobs_.convert(progress, request);
    });
    if (result != PROCESS_DONE) return {};
    // Two recordings of one name ("a.wav", "a.mp3") meet here: the second conversion keeps the
    // first and takes the next free name, which the job hands back.
    const std::string converted = request.destinationPath;
    if (!Exists(converted)) {
        LOG("File \"%s\" does not exist", converted.c_str());
        return {};
    }
    return converted;
}

LProcessResult MainDialog::RunBurnJob(
    const char* caption, const std::function<LProcessResult(LProcessInterface&)>& burn) {
    bool stopped = false;
    const LProcessResult result = view_.RunJob(caption, [&](LProcessInterface& progress) {
        const LProcessResult ended = burn(progress);
        stopped = progress.IsToStop();
        return ended;
    });
    // A burn the user stopped is not a failure of the drive or the disc.
    if (result == PROCESS_FAILED && stopped) {
        LOG("Burn stopped by the user");
        return PROCESS_STOPPED;
    }
    return result;
}

bool MainDialog::ReportBurn(LProcessResult result, const std::string& doneText) {
    if (result == PROCESS_STOPPED) return false;
    if (result == PROCESS_FAILED) {
        Tell(kBurnFailed);
        LOGERROR("Burn FAILED");
        EjectBurnerDisc();
        return false;
    }
    EjectBurnerDisc();
    LOG("%s", doneText.c_str());
    return Ask(doneText, kProgramName, LMessageButtons::YesNo) == LMessageAnswer::Yes;
}

LProcessResult MainDialog::EraseDisc(const char* caption, std::string* failure) {
    ProcessEraseDisk job;
    const LProcessResult result = view_.RunJob(
        caption, [&](LProcessInterface& progress) { return burnJobs_.erase(progress, job); });
    if (result == PROCESS_FAILED) LOGERROR("Erase FAILED: %s", job.error.Describe().c_str());
    if (failure) *failure = result == PROCESS_FAILED ? job.error.Describe() : std::string();
    return result;
}

void MainDialog::CmEjectDisc() {
    if (!CopyDeviceByIndex(BurnerIndex())) {
        Tell(NoBurnerText());
        return;
    }
    if (!EjectBurnerDisc()) Tell("The drive did not open its tray.");
}
