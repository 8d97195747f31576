#include "record/RecordingPage.h"

#include "codecs/WaveFile.h"
#include "jobs/UserInteraction.h"
#include "platform/Log.h"
#include "platform/Paths.h"
#include "platform/ProgramInfo.h"
#include "platform/Settings.h"
#include "platform/UserFolders.h"
#include "record/DiscSpace.h"
#include "record/RecordingOutput.h"
#include "record/SoundRecordDevice.h"
#include "record/RecordingsInProgress.h"
#include "restore/RecoveredRecordings.h"
#include "sound/SinkToSource.h"
#include "tags/AudioTagData.h"
#include "sound/SoundSinkMulti.h"

#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

constexpr int kSampleRate = 44100;
constexpr unsigned char kChannels = 2;
constexpr int32_t kSilenceTimeMs = 4000;

const char* const kSection = "Settings";

bool Flag(const char* key, bool fallback) {
    return LUserSettingGet<bool>(kSection, key, fallback);
}

std::string TimeText(LSoundTime time) {
    char text[32];
    time._GetText2(text);
    return text;
}

void CopyText(char (&field)[260], const char* text) {
    std::snprintf(field, sizeof field, "%s", text);
}

} // namespace

LRecordingPage::LRecordingPage(LRecordingHost& host, LRecordingView& view)
    : host_(host), view_(view), recorder_(this) {
    sessionTime_.SetText(LUserSettingGetString("RecordingPage", "TotalTime", "0:00:00.00").c_str());
    // A new session: the disc-capacity tip may show (once).
    LUserSettingSet<bool>("RecordingPage", "RecordingSessionStarted", true);
    RefreshSpace(false);
}

LRecordingPage::~LRecordingPage() {
    recorder_.Stop();
}

std::string LRecordingPage::RecordedTime() const {
    return TimeText(currentTime_);
}

std::string LRecordingPage::SessionTime() const {
    return TimeText(LSoundTime(sessionTime_.GetMS() + currentTime_.GetMS()));
}

std::string LRecordingPage::FreeDiskSpace() const {
    struct statvfs info {};
    if (statvfs(kTemporaryRecordingFolder, &info) != 0) return "N/A";
    char text[64];
    std::snprintf(text, sizeof text, "%.2f GB",
                  static_cast<double>(info.f_bavail) * info.f_frsize / (1024.0 * 1024 * 1024));
    return text;
}

int LRecordingPage::CurrentPosition() const {
    return sink_->GetPosition();
}

void LRecordingPage::SetStatus(const char* status) {
    status_ = status;
    view_.Refresh();
}

void LRecordingPage::ResetDetection() {
    if (detector_) detector_->Reset();
}

void LRecordingPage::RefreshSpace(bool addCurrent) {
    // The current time holds the part recorded before a pause.
    remaining_ = GetRemainingCDSpace(LGetOutputFormatNum(), currentTime_, addCurrent, sessionTime_,
                                     LSoundTime());
    if (remaining_.find("(Disc Capacity Exceeded)") != std::string::npos &&
        LUserSettingGet<bool>("RecordingPage", "RecordingSessionStarted", false)) {
        UserInteraction().ShowTip(
            "Disc Capacity Exceeded",
            "It is safe to continue your recording session, but you will not be able to burn "
            "your files to disc immediately after your recordings are completed.\r\n\r\nTo "
            "correct this issue, go back to the Vinora Records main window after your session is "
            "over and select only as many files as will fit onto your disc. Then click the "
            "\"Burn Audio\" or \"Burn MP3\" button to burn to disc.");
        LUserSettingSet<bool>("RecordingPage", "RecordingSessionStarted", false);
    }
}

void LRecordingPage::CmRecord(bool resume) {
    if (active_ && !paused_) return;
    LTrackDetector::Settings settings;
    settings.noiseFloor = LUserSettingGet<int>(kSection, "dBNoiseFloor", -25);
    settings.recordAudioOnly = Flag("RecordAudioOnly", true);
    settings.autoSplit = Flag("AutoSplitTracks", true);
    settings.autoSplitTime = LUserSettingGet<int>(kSection, "AutoSplitTime", 2);
    settings.historyCapacity = std::max(LUserSettingGet<int>(kSection, "AutoSplitTime", 5) * 12, 30);
    detector_ = std::make_unique<LTrackDetector>(settings);
    // The session goes on: the main window holds back its "finished processing" notice.
    host_.PostToMainWindow(WM_RECORDING_SESSION_ENDED, 0);
    RecordStart(resume);
}

void LRecordingPage::RecordStart(bool resume) {
    if (!resume) {
        if (!host_.TempWavePath(tempPath_)) tempPath_[0] = 0;
        char name[kPathBufferSize];
        GetNewRecordingFileName(name, NameFolders(), host_.QueuedOutputs());
        name_ = name;
        verified_ = false;
        sink_ = LWaveFile::OpenSinkPCM(tempPath_, kSampleRate, kChannels, 16, 0);
        if (!tempPath_[0] || sink_->IsFailed()) {
            char text[600];
            std::snprintf(text, sizeof text,
                          "%s cannot open the file \"%s\" for recording.\r\n\r\nPlease check you "
                          "have selected the correct output folder in settings.",
                          kProgramName, tempPath_);
            UserInteraction().ShowError(text);
            StopPlayback();
            DeleteRecording();
            return;
        }
        currentTime_ = LSoundTime();
        LNoteRecordingStarted(tempPath_, name_);
    }
    paused_ = false;
    recorder_.Stop();
    if (!resume) OpenPlayback();
    recorder_.GetLowLevel().SetDevice(
        device_.value_or(LSettingGetSoundRecordDevice(kSection, "SoundInDevice")));
    recorder_.GetLowLevel().SetVolume(
        static_cast<int8_t>(std::clamp(LUserSettingGet<int>("Recording", "Volume", -20), -127, 127)));
    PlayTone("RecordTone", LTone::Start);
    const int floor = LUserSettingGet<int>(kSection, "dBNoiseFloor", -25);
    ResetDetection();
    if (resume && verified_) detector_->ResumeStarted();
    const int threshold =
        Flag("RecordAudioOnly", true) ? std::clamp(floor + 2, -127, 127) : LDB::kSilence;
    if (!recorder_.Start(recordSink_, LSoundTime(0), static_cast<int8_t>(threshold),
                         LSoundTime(kSilenceTimeMs), paced_ ? srfPaced : 0)) {
        char text[600];
        std::snprintf(text, sizeof text,
                      "%s cannot open the sound device for recording.\r\n\r\nPlease check you "
                      "have selected the correct Sound Record Device in the Options dialog.",
                      kProgramName);
        UserInteraction().ShowError(text);
        if (resume) {
            // The paused recording is still whole: it stays paused, to be resumed or stopped.
            paused_ = true;
            view_.Refresh();
            return;
        }
        CloseSinks();
        StopPlayback();
        DeleteRecording();
        return;
    }
    active_ = true;
    lastPosition_ = 0;
    // What was recorded before a pause stays.
    loudEnd_ = resume ? sink_->GetPosition() : 0;
    lastReportLoud_ = false;
    format_ = LRecordingFormatText(LGetOutputFormatNum());
    SetStatus(resume && verified_ ? "Recording" : "Waiting for audio stream");
    LOG("Recording to file %s", name_.c_str());
}

void LRecordingPage::SplitTrack() {
    char nextPath[kPathBufferSize];
    LSoundSink next;
    if (host_.TempWavePath(nextPath))
        next = LWaveFile::OpenSinkPCM(nextPath, kSampleRate, kChannels, 16, 0);
    else
        nextPath[0] = 0;
    LSoundSink nextRecord = playing_ ? LSoundSinkDuplicate::OpenSink(next, toPlayback_) : next;
    const int recorded = std::max(sink_->GetPosition(), lastPosition_);
    splitting_ = true;
    if (!nextPath[0] || next->IsFailed() || !recorder_.SwitchSink(nextRecord)) {
        // The input is opened again for the next track, which reports what goes wrong.
        if (nextPath[0]) unlink(nextPath);
        CmRecordStop(false);
        CmRecord(false);
        splitting_ = false;
        return;
    }
    CutAfterLastLoud();
    PlayTone("RecordTone", LTone::Stop);
    LOG("Stopped recording to file %s (File Length: %s)", name_.c_str(),
        TimeText(LSoundTime::FromSamples(recorded, kSampleRate)).c_str());
    tail_ = LSoundTime::FromSamples(recorded - sink_->GetPosition(), kSampleRate);
    SaveRecording();
    splitting_ = false;

    std::snprintf(tempPath_, sizeof tempPath_, "%s", nextPath);
    sink_ = next;
    recordSink_ = nextRecord;
    char name[kPathBufferSize];
    GetNewRecordingFileName(name, NameFolders(), host_.QueuedOutputs());
    name_ = name;
    LNoteRecordingStarted(tempPath_, name_);
    verified_ = false;
    currentTime_ = LSoundTime();
    lastPosition_ = loudEnd_ = 0;
    lastReportLoud_ = false;
    ResetDetection();
    PlayTone("RecordTone", LTone::Start);
    format_ = LRecordingFormatText(LGetOutputFormatNum());
    SetStatus("Waiting for audio stream");
    LOG("Recording to file %s", name_.c_str());
}

void LRecordingPage::CutAfterLastLoud() {
    const int keep = loudEnd_ + LSoundTime(LSoundRecorder::kStopTailMs).GetSamples(kSampleRate);
    if (sink_->GetPosition() > keep) sink_->Seek(keep);
}

void LRecordingPage::OpenPlayback() {
    recordSink_ = sink_;
    if (!playing_) {
        if (!Flag("PlaybackAudioWhileRecording", false)) return;
        LSinkToSource pipe(sink_->GetSampleRate(), sink_->GetChannels(), LSoundPlayer::kPeakLimit);
        // The sink end opens first: a pipe without one reads as ended.
        toPlayback_ = pipe.OpenSink();
        LSoundSource source = pipe.OpenSource();
        if (!playback_) playback_ = std::make_unique<LSoundPlayer>();
        playback_->SetDevice(LSettingGetSoundPlayDevice("Player", "Device"));
        if (!playback_->Start(source)) {
            LOGWARN("The input cannot be played while recording: no sound output opened");
            toPlayback_.Close();
            return;
        }
        playing_ = true;
    }
    recordSink_ = LSoundSinkDuplicate::OpenSink(sink_, toPlayback_);
}

void LRecordingPage::CloseSinks() {
    recordSink_.Close();
    sink_.Close();
    if (!splitting_) StopPlayback();
}

void LRecordingPage::StopPlayback() {
    if (!playing_) return;
    toPlayback_.Close();
    playback_->Stop();
    playing_ = false;
}

void LRecordingPage::PlayTone(const char* key, LTone tone) {
    if (!Flag(key, false)) return;
    if (!tones_) tones_ = std::make_unique<LTonePlayer>();
    tones_->Play(tone);
}

void LRecordingPage::DeleteRecording() {
    if (tempPath_[0]) {
        LNoteRecordingEnded(tempPath_);
        unlink(tempPath_);
    }
    tempPath_[0] = 0;
}

void LRecordingPage::CmRecordPause() {
    if (recorder_.GetState() == 0 || paused_) return;
    paused_ = true;
    stopping_ = true;
    recorder_.Stop();
    stopping_ = false;
    ResetDetection();
    PlayTone("StoppedTone", LTone::Pause);
    view_.Refresh();
}

void LRecordingPage::CmRecordRestart() {
    const bool wasRecording = active_;
    CmRecordPause();
    active_ = false;
    CloseSinks();
    DeleteRecording();
    iNextAutoNumber = std::max(iNextAutoNumber - 1, 0);
    currentTime_ = LSoundTime();
    paused_ = false;
    verified_ = false;
    ResetDetection();
    if (wasRecording) CmRecord(false);
    view_.Refresh();
}

void LRecordingPage::CmRecordStop(bool discard) {
    if (!active_) return;
    active_ = false;
    if (!discard && !verified_) {
        LOG("Recording discarded due to no detection of an audio stream");
        discard = true;
    }
    ResetDetection();
    PlayTone("RecordTone", LTone::Stop);
    paused_ = false;
    // A recorder that stopped by itself has already cut the silence at the end.
    const int recorded = std::max(sink_->GetPosition(), lastPosition_);
    LOG("Stopped recording to file %s (File Length: %s)", name_.c_str(),
        TimeText(LSoundTime::FromSamples(recorded, kSampleRate)).c_str());
    status_ = "Idle";
    stopping_ = true;
    recorder_.Stop();
    stopping_ = false;
    const LSoundTime length = LSoundTime::FromSamples(sink_->GetPosition(), kSampleRate);
    tail_ = LSoundTime::FromSamples(recorded - sink_->GetPosition(), kSampleRate);
    if (!discard) {
        SaveRecording();
    } else {
        CloseSinks();
        DeleteRecording();
        iNextAutoNumber = std::max(iNextAutoNumber - 1, 0);
        view_.TrackDiscarded(name_, length);
        host_.PostToMainWindow(WM_RECORDING_DISCARDED, 0);
    }
    verified_ = false;
    currentTime_ = LSoundTime();
    view_.Refresh();
}

void LRecordingPage::SaveRecording() {
    const LSoundTime length = LSoundTime::FromSamples(sink_->GetPosition(), kSampleRate);
    // The last handles: the file gets its final header.
    CloseSinks();
    const std::string name = name_;
    name_ = format_ = "N/A";
    LSoundTime minimum;
    if (Flag("UseMinTime", false))
        minimum.SetText(LUserSettingGetString(kSection, "MinTime", "0:00:00.00").c_str());
    if (length < minimum) {
        const char* text = "The recording was discarded because no audio stream was detected or "
                           "the recording was less than 2 seconds in length.";
        LOGWARN("%s", text);
        UserInteraction().ShowTip("Recording Discarded", text);
        DeleteRecording();
        iNextAutoNumber = std::max(iNextAutoNumber - 1, 0);
        view_.TrackDiscarded(name, length);
        host_.PostToMainWindow(WM_RECORDING_DISCARDED, 0);
        return;
    }
    RefreshSpace(true);
    LUserSettingSet<int>("RecordingPage", "CurrentSize", 0);
    const int outputFormat = LGetOutputFormatNum();
    const LOutputFormat& format = LGetOutputFormat(outputFormat);
    const bool copy = LUserSettingGet<bool>("OutputFormat", "MakeCopy", false);
    const std::string copyFolder = copy ? LUserSettingGetString("OutputFormat", "OutputFolder") : "";
    const std::string folder = host_.OutputFolder();
    // A name typed for the recording, or a file that appeared while it was made, may meet
    // another output.
    const std::string output = FreeName(name);
    char destination[kPathBufferSize];
    _MakeFilePath(destination, folder.c_str(), output.c_str(), format.extension);
    const std::string lengthText = TimeText(length);
    TagRecording(name);
    const bool queued = CmConvertFile(tempPath_, destination, folder.c_str(), format.extension,
                                      lengthText.c_str(), format.convert, copy, copyFolder.c_str());
    // From here the queue keeps the recording, or the folder of recovered recordings does.
    LNoteRecordingEnded(tempPath_);
    if (!queued) {
        LOGERROR("File conversion FAILED");
        RecoverRecording(output);
        return;
    }
    sessionTime_ = LSoundTime(sessionTime_.GetMS() + length.GetMS());
    LUserSettingSetString("RecordingPage", "TotalTime", TimeText(sessionTime_).c_str());
    view_.TrackKept(name, destination, length, tail_);
    tempPath_[0] = 0;
}

void LRecordingPage::StopOnWriteFailure() {
    LOGERROR("The recording %s could not be written any further to %s", name_.c_str(), tempPath_);
    CmStopSession(false);
    UserInteraction().ShowError(
        "The recording could not be written any further: the disk is full, or the file has "
        "reached the largest size allowed.\r\n\r\nThe recording has stopped. What was recorded "
        "until then is kept.");
}

void LRecordingPage::RecoverRecording(const std::string& name) {
    char kept[kPathBufferSize];
    if (LRecoverRecording(tempPath_, host_.OutputFolder().c_str(), name.c_str(), kept))
        LOGWARN("The recording %s could not be queued; it was kept as %s", name.c_str(), kept);
    else
        std::snprintf(kept, sizeof kept, "%s", tempPath_);
    UserInteraction().ShowError("The recording \"" + name +
                                "\" could not be queued for processing. It was kept as \"" +
                                kept + "\".");
    tempPath_[0] = 0;
}

std::vector<std::string> LRecordingPage::NameFolders() {
    std::vector<std::string> folders{host_.OutputFolder()};
    if (LUserSettingGet<bool>("OutputFormat", "MakeCopy", false))
        folders.push_back(LUserSettingGetString("OutputFormat", "OutputFolder"));
    return folders;
}

std::string LRecordingPage::FreeName(const std::string& name) {
    const std::vector<std::string> folders = NameFolders();
    const std::vector<std::string> queued = host_.QueuedOutputs();
    std::string free = name;
    for (int n = 2; LIsRecordingNameTaken(free.c_str(), folders, queued); ++n)
        free = name + " (" + std::to_string(n) + ")";
    return free;
}

void LRecordingPage::TagRecording(const std::string& name) const {
    LAudioTagData tags;
    tags.SetTag("TITLE", name.c_str(), true);
    const std::time_t now = std::time(nullptr);
    std::tm local {};
    localtime_r(&now, &local);
    tags.SetTag("YEAR", std::to_string(local.tm_year + 1900).c_str(), true);
    if (!tags.WriteTags(tempPath_, tagModeAll, false))
        LOGWARN("Tag write FAILED: could not write tag to file %s", tempPath_);
}

bool LRecordingPage::CmConvertFile(const char* source, const char* destination, const char* folder,
                                   const char* extension, const char* lengthText, bool convert,
                                   bool copyToFolder, const char* copyFolder) {
    if (!source[0] || !folder[0] || !extension[0] || !lengthText[0]) return false;
    LProcessConvert request;
    CopyText(request.sourcePath, source);
    CopyText(request.destinationPath, destination);
    CopyText(request.outputFolder, folder);
    CopyText(request.outputExtension, extension);
    CopyText(request.lengthText, lengthText);
    CopyText(request.copyFolder, copyFolder);
    request.restore = 1;
    request.convert = convert;
    request.addToList = 1;
    request.deleteSource = 1;
    request.copyToFolder = copyToFolder;
    if (!host_.QueueConversion(request)) return false;
    host_.PostToMainWindow(WM_RECORDING_FILE_QUEUED, 0);
    return true;
}

bool LRecordingPage::CmExit() {
    if (active_) {
        const LMessageAnswer answer = UserInteraction().ShowMessage(
            kProgramName,
            "You are currently in the middle of a recording - are you sure you want to finish the "
            "Recording Session? The current recording will be lost if you click OK. To avoid this "
            "message, stop your recordings before ending the session.",
            LMessageButtons::OkCancel);
        if (answer != LMessageAnswer::Ok) return false;
        CmRecordStop(true);
    }
    const int outputFormat = LGetOutputFormatNum();
    if (outputFormat == 2 || outputFormat == 3) host_.PostToMainWindow(WM_RECORDING_START_BURN, 0);
    if (outputFormat == 4) host_.PostToMainWindow(WM_RECORDING_START_BURN, 1);
    LUserSettingSetString("RecordingPage", "TotalTime", TimeText(sessionTime_).c_str());
    UpdateTotalSizeBytes();
    ResetDetection();
    return true;
}

void LRecordingPage::CmStopSession(bool discard) {
    CmRecordStop(discard);
    if (!discard) host_.PostToMainWindow(WM_RECORDING_SESSION_ENDED, 1);
}

void LRecordingPage::srntfRecord(long) {
    view_.Refresh();
}

void LRecordingPage::srntfWait(long) {
    view_.Refresh();
}

void LRecordingPage::srntfStop(long) {
    // The recorder stopped by itself (the input ended): the track is kept as Stop keeps it.
    // An input that ended in what already looked like the gap after the track ends the track
    // where a split would have.
    if (stopping_) return;
    if (detector_ && detector_->IsEnding()) CutAfterLastLoud();
    CmStopSession(false);
}

void LRecordingPage::srntfTime(LSoundTime time, long) {
    // The recorder counts the whole file, the part before a pause included.
    currentTime_ = time;
    RefreshSpace(false);
    view_.Refresh();
}

void LRecordingPage::srntfLevel(const LDBMC& levels, long) {
    view_.Levels(levels);
    if (!detector_ || paused_ || recorder_.GetState() == 0) return;
    if (sink_->IsFailed()) {
        StopOnWriteFailure();
        return;
    }
    lastPosition_ = sink_->GetPosition();
    const LTrackDetector::Result result =
        detector_->OnLevel(levels, lastPosition_, sink_->GetSampleRate());
    if (result.loud) {
        loudEnd_ = lastPosition_;
    } else if (lastReportLoud_) {
        // A report stands for the last buffer the recorder read; when the window was busy it
        // read more since the one before, and the audio may have stayed loud into all but the
        // last of them.
        loudEnd_ = std::max(loudEnd_, lastPosition_ - kSampleRate / 10);
    }
    lastReportLoud_ = result.loud;
    if (result.verified) {
        verified_ = true;
        SetStatus("Recording");
    }
    if (result.ended) SplitTrack();
}
