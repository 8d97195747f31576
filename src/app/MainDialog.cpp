#include "app/MainDialog.h"

#include "app/AppStartup.h"
#include "app/MainCommands.h"
#include "app/MainDialogText.h"
#include "app/ProcessListThread.h"
#include "app/SoundEditor.h"
#include "codecs/AudioFileSource.h"
#include "disc/DiskEventListener.h"
#include "codecs/AudioFileTypes.h"
#include "jobs/MainThreadQueue.h"
#include "jobs/UserInteraction.h"
#include "platform/ComponentDownload.h"
#include "platform/Components.h"
#include "platform/FileOps.h"
#include "platform/Folders.h"
#include "platform/Log.h"
#include "platform/OutputFolders.h"
#include "platform/Paths.h"
#include "platform/ProgramInfo.h"
#include "platform/Settings.h"
#include "platform/UserFolders.h"
#include "play/JoinJob.h"
#include "play/SplitJob.h"
#include "play/WaveOrMp3Source.h"
#include "record/RecordingsInProgress.h"
#include "sound/SoundTime.h"
#include "tags/AudioTagData.h"

#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char* kQueueCountIdle = "No Files Queued";
constexpr const char* kMissingFile =
    "The specified file \"%s\" does not exist. It may have been moved, renamed or deleted.";

bool IsListedType(const std::string& path) {
    return LFindAudioFileType(path.c_str()) != nullptr;
}

std::string FolderOf(const std::string& path) {
    char folder[kPathBufferSize];
    _GetFolderFromPath(folder, path.c_str());
    return folder;
}

// A row for a file, from its header (never a full decode); false when it is not audio.
bool MakeRow(const char* path, LRecordingRow& row) {
    LSoundSource source = LOpenAudioFileSource(path);
    if (source->GetError() != sndErrNone) return false;
    const LSoundTime length = LSoundTime::FromSamples(source->GetEndSample(), source->GetSampleRate());
    char text[32];
    length._GetText(text);
    struct stat info {};
    stat(path, &info);
    row.name = FileOf(path);
    row.duration = text;
    row.durationMs = length.GetMS();
    row.sizeBytes = info.st_size;
    row.size = FormatRecordingSize(info.st_size);
    row.modifiedTime = info.st_mtime ? info.st_mtime : info.st_ctime;
    row.modified = FormatRecordingTime(row.modifiedTime);
    row.icon = LFindAudioFileType(path)->tags == LAudioTagKind::id3 ? 1 : 0;
    return true;
}

} // namespace

MainDialog::MainDialog(LMainDialogView& view, LMainDialogWindows windows)
    : view_(view), windows_(std::move(windows)), self_(std::make_shared<MainDialog*>(this)) {
    status_[0] = Printf("%s %.2f", kProgramName, kProgramVersion);
    status_[2] = kQueueCountIdle;
}

MainDialog::~MainDialog() {
    *self_ = nullptr;
    gMainNotify.SetTarget(nullptr);
}

void MainDialog::InitDialog() {
    // The download window opens only when the encoder is missing.
    char encoder[kPathBufferSize];
    if (!GetComponentPath("mp3el", encoder, true) &&
        view_.RunJob(kInstallOnDemandCaption, [&](LProcessInterface& pi) {
            LProcessGetComponentPath job{"mp3el", encoder};
            return static_cast<LProcessResult>(Process(pi, job));
        }) != PROCESS_DONE)
        Tell("The attempted auto-installation of the MP3 encoder component has failed. Please "
             "download the file 'mp3el' from the components page of the Vinora Records web site "
             "and install it into the Components folder.");
    const std::vector<std::string> abandoned = LRecoverAbandonedRecordings(GetVNOutputFolder());
    if (!abandoned.empty())
        Tell(Printf("%d recording(s) were left when the program ended while recording. They were "
                    "kept in the folder \"%s\".",
                    static_cast<int>(abandoned.size()), FolderOf(abandoned.front()).c_str()));
    gMainNotify.SetTarget(this);
    thrConvertList.SetListFilePath(LQueueFilePath().c_str(), STOP_KEEP_LIST, true);
    diskEvents_ = std::make_unique<LDiskEventListener>([this](int command) { Post(command); },
                                                       WM_DISC_INSERTED, WM_DISC_EJECTED);
    LOG("%s Started", kProgramName);
    LoadSavedAudioFiles();
    UpdateMainWindowCDInfo(true);
    SetStatus(0, Printf("%s %.2f", kProgramName, kProgramVersion));
}

void MainDialog::OnStartupTimer() {
    if (!list_.Empty()) return;
    LUserSettingSetString("RecordingPage", "TotalTime", "0:00:00.00");
    LUserSettingSet<int64_t>("RecordingPage", "TotalSize", 0);
    OpenWizard();
}

bool MainDialog::IsCommandEnabled(int id) const {
    const LMainCommandInfo* command = FindMainCommand(id);
    if (!command) return false;
    switch (id) {
    case CM_WIZARD:
        if (!windows_.wizard) return false;
        break;
    case CM_RECORD:
        if (!windows_.recordingWindow) return false;
        break;
    case CM_PREFERENCES:
        if (!windows_.preferences) return false;
        break;
    case CM_PLAY_OR_SPLIT:
        if (!windows_.playAndSplit) return false;
        break;
    case CM_BURN_AUDIO_CD:
    case CM_BURN_DATA_DISC:
        if (!windows_.burnWizard) return false;
        break;
    case CM_EDIT_TAG:
        if (!windows_.editTag) return false;
        break;
    case CM_EDIT_SELECTED_TAGS:
        if (!windows_.editTagList) return false;
        break;
    default:
        break;
    }
    switch (command->needs) {
    case LCommandNeeds::Selection:
        return list_.HasSelection();
    case LCommandNeeds::Rows:
        return !list_.Empty();
    case LCommandNeeds::Nothing:
        break;
    }
    return true;
}

void MainDialog::RunCommand(int id) {
    if (!IsCommandEnabled(id)) return;
    switch (id) {
    case CM_WIZARD:
        OpenWizard();
        break;
    case CM_RECORD:
        SetTotalFileDurations(false);
        UpdateMainWindowCDInfo(false);
        windows_.recordingWindow();
        SetTotalFileDurations(false);
        UpdateMainWindowCDInfo(false);
        break;
    case CM_ADD_FILES:
        CmAddFiles();
        break;
    case CM_REMOVE_FILES:
        CmRemoveFiles();
        break;
    case CM_COPY_TO:
        CmCopyTo();
        break;
    case CM_EDIT_WITH_SONEDIT:
        CmEditWithSoundEditor();
        break;
    case CM_RENAME_FILE:
        if (list_.Current() >= 0) view_.BeginRename(list_.Current());
        break;
    case CM_PLAY_OR_SPLIT:
        CmPlay();
        break;
    case CM_JOIN_FILES:
        CmJoinFiles();
        break;
    case CM_SELECT_ALL:
        list_.SelectAll();
        view_.RowsChanged();
        break;
    case CM_BURN_AUDIO_CD:
    case CM_BURN_DATA_DISC:
        CmBurnWizard(id == CM_BURN_AUDIO_CD);
        break;
    case CM_EJECT_DISC:
        CmEjectDisc();
        break;
    case CM_OPEN_MUSIC_FOLDER:
    case CM_VIEW_RECORDINGS_FOLDER:
        UserInteraction().RevealFolder(GetVNOutputFolder());
        break;
    case CM_VIEW_LOGS: {
        char folder[kPathBufferSize];
        if (LLog::GetFolder(folder)) UserInteraction().RevealFolder(folder);
        break;
    }
    case CM_PREFERENCES:
        windows_.preferences();
        break;
    case CM_EDIT_TAG:
        CmEditTag();
        break;
    case CM_EDIT_SELECTED_TAGS:
        CmEditSelectedTags();
        break;
    case CM_MOVE_UP:
        CmMove(-1);
        break;
    case CM_MOVE_DOWN:
        CmMove(+1);
        break;
    case CM_CLOSE_WINDOW:
        view_.CloseWindow();
        break;
    default:
        break;
    }
}

void MainDialog::OnMainNotify(int message, const std::string& text, int value) {
    switch (message) {
    case WM_NOTIFY_FILES_PROCESSING:
        ++filesProcessing_;
        ShowQueueCount();
        break;
    case WM_NOTIFY_ADD:
        AddProcessedFileToList(text.c_str(), true);
        break;
    case WM_NOTIFY_FILE:
        SetStatus(0, text);
        break;
    case WM_NOTIFY_PROGRESS:
        if (value == 0) break;
        SetStatus(1, text.empty() ? Printf("Status: %d%% Done", value)
                                  : Printf("Status: %s%d%% Done", text.c_str(), value));
        break;
    default:
        OnMessage(message, text, value);
    }
}

void MainDialog::OnMessage(int message, const std::string& text, int value) {
    switch (message) {
    case WM_ERASE_DISC: {
        std::string failure;
        if (EraseDisc("Erasing Disc", &failure) == PROCESS_FAILED)
            Tell("Erasing of the disc has failed: " + failure);
        break;
    }
    case WM_RECORDING_START_BURN:
        BurnSelectedFiles(value != 0);
        break;
    case WM_DISC_INSERTED:
    case WM_DISC_EJECTED:
        UpdateMainWindowCDInfo(true);
        break;
    case WM_HIDE_WINDOW:
        view_.HideWindow();
        break;
    case WM_DELETE_FILE: {
        const int row = list_.Find(FileOf(text));
        if (row >= 0) list_.Remove(row);
        unlink(text.c_str());
        view_.RowsChanged();
        break;
    }
    case WM_RECORDING_SESSION_ENDED:
        sessionFinished_ = value == 1;
        // A new recording (value 0) only says the session goes on.
        if (processingNoticePending_ && sessionFinished_)
            UserInteraction().ShowDockNotice("Your recordings have finished processing");
        processingNoticePending_ = false;
        break;
    case WM_RECORDING_DISCARDED:
        UserInteraction().ShowDockNotice("Your recording has been discarded");
        break;
    case WM_OPEN_RECORDING_WINDOW:
        if (windows_.recordingWindow) windows_.recordingWindow();
        processingNoticePending_ = false;
        break;
    case WM_OPEN_WIZARD:
        OpenWizard();
        break;
    case WM_RELOAD_LIST:
        RefreshFileList();
        break;
    default:
        break;
    }
}

void MainDialog::SplitFile(const std::string& path, const std::vector<int>& positions) {
    if (!Exists(path)) {
        const std::string text = Printf(kMissingFile, path.c_str());
        Tell(text);
        LOGWARN("%s", text.c_str());
        return;
    }
    LSplitFileProcessData job{path.c_str(), positions, {}};
    const LProcessResult result = view_.RunJob(
        "Splitting Files", [&job](LProcessInterface& progress) { return Process(progress, job); });
    if (result == PROCESS_FAILED) {
        Tell("Error: File Split FAILED", "Error");
        LOGERROR("Error: File Split FAILED");
    } else {
        RefreshFileList();
    }
    UserInteraction().ShowDockNotice("File splitting is finished");
}

void MainDialog::Post(int message, const std::string& text, int value) {
    LMainThreadQueue* queue = LMainThreadQueue::Current();
    if (!queue) return;
    queue->Post([self = self_, message, text, value] {
        if (*self) (*self)->OnMainNotify(message, text, value);
    });
}

std::string MainDialog::PathOf(int row) const {
    return Join(GetVNOutputFolder(), list_.Rows()[row].name);
}

std::vector<std::string> MainDialog::SelectedPaths() const {
    std::vector<std::string> paths;
    for (int row : list_.Selected())
        paths.push_back(PathOf(row));
    return paths;
}

void MainDialog::SetStatus(int pane, std::string text) {
    status_[pane] = std::move(text);
    view_.StatusChanged(pane);
}

void MainDialog::ShowQueueCount() {
    SetStatus(2, filesProcessing_ < 1 ? std::string(kQueueCountIdle)
                                      : Printf("Files Being Processed: %d", filesProcessing_));
}

bool MainDialog::AddFileToList(const char* path, bool copyToOutputFolder, bool select) {
    if (!path) return false;
    LRecordingRow row;
    if (!MakeRow(path, row)) return false;
    if (list_.Find(row.name) >= 0) return false;
    const std::string name = row.name;
    const int index = list_.Add(std::move(row));
    if (select) list_.SelectOnly(index);
    view_.RowsChanged();
    const std::string target = Join(GetVNOutputFolder(), name);
    if (copyToOutputFolder && strcasecmp(target.c_str(), path) != 0) {
        // Another file of that name in the output folder (one whose row was removed without
        // deleting it, one put there since the list was loaded) is never replaced.
        const bool taken = IsNameTaken(target.c_str()) && !IsSameFile(path, target.c_str());
        if (taken || !CopyFile(path, target.c_str())) {
            LOG("Copying of file %s to %s has failed", path, target.c_str());
            return false;
        }
        LOG("File %s loaded and copied into data folder", path);
    }
    if (!loading_) SetTotalFileDurations(true);
    return true;
}

void MainDialog::AddProcessedFileToList(const char* path, bool select) {
    if (!path) return;
    processingNoticePending_ = true;
    const bool copy = !Exists(Join(GetVNOutputFolder(), FileOf(path)));
    AddFileToList(path, copy, select);
    --filesProcessing_;
    ShowQueueCount();
    if (filesProcessing_ < 1) {
        if (sessionFinished_)
            UserInteraction().ShowDockNotice("Your recordings have finished processing");
        processingNoticePending_ = false;
    }
}

void MainDialog::LoadSavedAudioFiles() {
    LOG("Attempting to load saved files...");
    const std::string folder = GetVNOutputFolder();
    // The totals are stored once for the whole folder.
    loading_ = true;
    for (const LAudioFileType& type : LAudioFileTypes()) {
        LFolderIterator files(folder.c_str(), (std::string("*") + type.extension).c_str());
        while (files.Next())
            if (!files.IsFolder()) AddFileToList(files.GetPath(), false, false);
    }
    loading_ = false;
    SetTotalFileDurations(false);
}

void MainDialog::RefreshFileList() {
    list_.Clear();
    LoadSavedAudioFiles();
    view_.RowsChanged();
}

void MainDialog::DropFiles(const std::vector<std::string>& paths) {
    const std::string output = GetVNOutputFolder();
    bool told = false;
    for (const std::string& path : paths) {
        if (!IsListedType(path)) {
            if (!told) Tell("Only wav and mp3 files can be added to this list.", "Error");
            told = true;
            continue;
        }
        AddFileToList(path.c_str(), FolderOf(path) != output, false);
    }
}

void MainDialog::OnRenameStarted(int row) {
    oldName_ = row >= 0 && row < list_.Count() ? list_.Rows()[row].name : std::string();
}

void MainDialog::OnRenameEnded(int, const std::string& text) {
    const std::string oldName = std::exchange(oldName_, {});
    char ext[kPathBufferSize], base[kPathBufferSize], cleaned[kPathBufferSize];
    _GetFileExtensionFromPath(ext, oldName.c_str());
    _GetFileNameFromPath(base, oldName.c_str());
    if (oldName.empty() || text.empty() || !ext[0] || !base[0]) return;
    if (!PreprocessName(text.c_str(), cleaned)) return;
    const std::string newName = std::string(cleaned) + ext;
    // Committing the name as it was changes nothing; a change of case only is a real rename.
    if (newName == oldName) return;
    const std::string folder = GetVNOutputFolder();
    const std::string from = Join(folder, oldName);
    const std::string to = Join(folder, newName);
    if (!RenameNoReplace(from.c_str(), to.c_str())) {
        if (errno == EEXIST) {
            Tell(Printf("A file named \"%s\" already exists in the recordings folder. Please "
                        "choose another name.",
                        newName.c_str()));
        } else {
            const std::string reason = Printf("Renaming %s to %s has failed: %s", from.c_str(),
                                              to.c_str(), std::strerror(errno));
            LOGERROR("%s", reason.c_str());
            Tell(reason);
        }
        view_.RowsChanged();
        return;
    }
    LOG("File %s renamed to %s", from.c_str(), to.c_str());
    if (status_[0] == oldName) SetStatus(0, newName);
    RefreshFileList();
    list_.SelectOnly(list_.Find(newName));
    view_.RowsChanged();
}

std::string MainDialog::GrabTotalFileDuration(bool duration, bool selectedOnly) {
    if (list_.Empty()) return {};
    // With nothing selected the selection counts as all rows (without selecting them).
    if (!list_.HasSelection()) selectedOnly = false;
    int64_t totalMs = 0, totalBytes = 0;
    for (int i = 0; i < list_.Count(); ++i) {
        const LRecordingRow& row = list_.Rows()[i];
        if (selectedOnly && !row.selected) continue;
        totalMs += row.durationMs;
        totalBytes += row.sizeBytes;
    }
    if (!duration) return Printf("%3lld bytes", static_cast<long long>(totalBytes));
    char text[32];
    LSoundTime(static_cast<int32_t>(totalMs))._GetText2(text);
    return text;
}

void MainDialog::SetTotalFileDurations(bool selectedOnly) {
    LUserSettingSetString("RecordingPage", "TotalTime",
                          GrabTotalFileDuration(true, selectedOnly).c_str());
    LUserSettingSet<int64_t>(
        "RecordingPage", "TotalSize",
        std::strtoll(GrabTotalFileDuration(false, selectedOnly).c_str(), nullptr, 10));
}

void MainDialog::CmAddFiles() {
    LFileRequest request;
    request.title = "Locate Audio File(s)";
    request.folder = LUserSettingGetString("Settings", "LoadFromFolder");
    request.filters = {LAudioFilesFilter()};
    const std::vector<std::string> paths = UserInteraction().ChooseOpenFiles(request, true);
    if (paths.empty()) return;
    LUserSettingSetString("Settings", "LoadFromFolder", FolderOf(paths.front()).c_str());
    AddFiles(paths);
}

void MainDialog::AddFiles(const std::vector<std::string>& paths) {
    bool failed = false;
    for (const std::string& path : paths)
        if (IsListedType(path) && !AddFileToList(path.c_str(), true, false)) failed = true;
    if (failed)
        Tell("One or more files were not added because either those files already exist in the "
             "list or Vinora Records does not support the file formats of those files.");
    UpdateMainWindowCDInfo(false);
}

void MainDialog::CmRemoveFiles() {
    if (!list_.HasSelection()) return;
    if (Ask("Are you sure you want to remove the selected file(s)?", "Confirm Remove",
            LMessageButtons::YesNo) != LMessageAnswer::Yes)
        return;
    const bool deleteFiles = LUserSettingGet<bool>("Settings", "DeleteFiles", true);
    const std::vector<std::string> paths = SelectedPaths();
    const std::vector<int> rows = list_.Selected();
    for (auto row = rows.rbegin(); row != rows.rend(); ++row)
        list_.Remove(*row);
    if (deleteFiles)
        for (const std::string& path : paths)
            unlink(path.c_str());
    view_.RowsChanged();
    SetTotalFileDurations(false);
    UpdateMainWindowCDInfo(false);
}

void MainDialog::CmCopyTo() {
    const std::string folder = UserInteraction().ChooseFolder(
        "Please select the folder you want to copy songs to.", GetVNOutputFolder());
    if (folder.empty()) return;
    int failed = 0;
    for (const std::string& path : SelectedPaths()) {
        const std::string name = FileOf(path);
        const std::string target = Join(folder, name);
        // Anything with the name is asked about, a link to nothing included.
        if (IsNameTaken(target.c_str()) &&
            Ask(Printf("File \"%s\" already exist in folder \"%s\"! Do you want to overwrite it?",
                       name.c_str(), folder.c_str()),
                "Confirm Overwrite", LMessageButtons::YesNo) == LMessageAnswer::No)
            continue;
        if (!CopyFile(path.c_str(), target.c_str())) {
            LOGERROR("Copying of file %s to %s has failed: %s", path.c_str(), target.c_str(),
                     std::strerror(errno));
            ++failed;
        }
    }
    if (failed > 0)
        Tell(Printf("%d file(s) could not be copied to the folder \"%s\". The folder may be full "
                    "or read-only; the log holds the details.",
                    failed, folder.c_str()));
}

void MainDialog::CmEditWithSoundEditor() {
    const int row = list_.Current() >= 0 ? list_.Current() : -1;
    const std::string path = row >= 0 ? PathOf(row) : std::string();
    LMainThreadQueue* queue = LMainThreadQueue::Current();
    const bool started = LStartSoundEditor(path, [queue, self = self_] {
        if (queue) queue->Post([self] {
            if (*self) (*self)->RefreshFileList();
        });
    });
    if (started) return;
    const std::string command = LSoundEditorCommand();
    const std::string problem =
        command.empty() ? "No sound editor was found on this computer."
                        : "The sound editor \"" + command + "\" could not be started.";
    Tell(problem + " Install a sound editor such as Audacity, or choose the command that starts "
                   "yours with:\n\nvinora-cli settings set Settings SoundEditor COMMAND");
}

void MainDialog::CmEditTag() {
    const int row = list_.Current() >= 0 ? list_.Current() : list_.Selected().front();
    const std::string path = PathOf(row);
    if (!IsListedType(path)) {
        Tell("Only wav and mp3 files can have tags edited.", "Error");
        return;
    }
    LAudioTagData tags;
    tags.ReadTags(path.c_str(), tagModeAll);
    if (!windows_.editTag(tags, path)) return;
    if (!tags.WriteTags(path.c_str(), tagModeAll, false)) {
        LOGERROR("Could not write a tag to the selected file.");
        Tell("Could not write a tag to the selected file.");
        return;
    }
    RefreshRowDetails(row);
    const int format = LUserSettingGet<int>("OutputFormat", "OutputFormatNum", 1);
    if (format == 0 || format == 1) {
        const std::string copyFolder =
            LUserSettingGetString("OutputFormat", "OutputFolder", GetDefaultOutputFolder().c_str());
        const std::string copy = Join(copyFolder, FileOf(path));
        if (Exists(copy))
            tags.WriteTags(copy.c_str(), tagModeAll, false);
        else
            LOGWARN("Cannot find file in specified user output folder - it may have been deleted.");
    }
    Tell("Tag written successfully to file.");
}

void MainDialog::CmEditSelectedTags() {
    const std::vector<std::string> paths = SelectedPaths();
    if (paths.empty()) return;
    LAudioTagData tags;
    tags.ReadTags(paths.front().c_str(), tagModeAll);
    if (!windows_.editTagList(tags)) return;
    int written = 0;
    for (const std::string& path : paths) {
        if (tags.WriteTags(path.c_str(), true, static_cast<signed char>(written + 1))) {
            ++written;
            RefreshRowDetails(list_.Find(FileOf(path)));
            continue;
        }
        const std::string text = Printf("Could not write a tag to file: %s", path.c_str());
        LOGERROR("%s", text.c_str());
        Tell(text);
    }
    Tell(Printf("Tags were written successfully to %d files.", written));
}

void MainDialog::RefreshRowDetails(int row) {
    LRecordingRow fresh;
    if (row < 0 || !MakeRow(PathOf(row).c_str(), fresh)) return;
    list_.UpdateDetails(row, fresh);
    view_.RowsChanged();
}

void MainDialog::CmMove(int step) {
    const std::vector<int> selected = list_.Selected();
    if (selected.size() != 1) return;
    const int target = selected.front() + step;
    if (target < 0 || target >= list_.Count()) return;
    list_.Swap(selected.front(), target);
    view_.RowsChanged();
}

void MainDialog::CmPlay() {
    const int row = list_.Current() >= 0 ? list_.Current() : list_.Selected().front();
    if (!windows_.playAndSplit(PathOf(row))) Tell("Cannot play the selected file.");
}

void MainDialog::CmJoinFiles() {
    const std::vector<std::string> selected = SelectedPaths();
    if (selected.size() < 2) {
        Tell("You must select more than one file to join.");
        return;
    }
    if (selected.size() > 3) {
        Tell("You cannot select more than 3 files to join at the one time.");
        return;
    }
    LJoinFiles job;
    job.outputFolder = GetVNOutputFolder();
    for (const std::string& path : selected) {
        if (Exists(path))
            job.paths.push_back(path);
        else
            LOGWARN(kMissingFile, path.c_str());
    }
    if (job.paths.empty()) {
        Tell("The files you have selected to join do not appear to exist. They may have been "
             "renamed, moved or deleted.");
        return;
    }
    const LProcessResult result = view_.RunJob(
        "Joining Files", [&job](LProcessInterface& progress) { return Process(progress, job); });
    if (result != PROCESS_DONE) {
        Tell("Error: File Join FAILED", "Error");
        LOGERROR("Error: File Join FAILED");
        return;
    }
    AddFileToList(job.output.c_str(), false, false);
    if (job.paths.size() != selected.size())
        Tell("One or more of the files you have selected to join do not appear to exist. They "
             "may have been renamed, moved or deleted. See the Vinora Records Vinyl to CD "
             "Converter Logs for more information.");
    CopyJoinedToOutputFolder(job.output);
}

void MainDialog::CopyJoinedToOutputFolder(const std::string& path) {
    const int format = LUserSettingGet<int>("OutputFormat", "OutputFormatNum", 0);
    if (format != 0 && format != 1) return;
    const std::string folder =
        LUserSettingGetString("OutputFormat", "OutputFolder", GetDefaultOutputFolder().c_str());
    const std::string target = Join(folder, FileOf(path));
    if (target == path) return;
    // A file of that name there is kept: the copy takes the next free name.
    if (CreateFolderTree(folder.c_str()) && !CopyToFreeName(path, target).empty())
        LOG("Copying of file \"%s\" to destination folder %s was successful.", path.c_str(),
            folder.c_str());
    else
        LOGERROR("Attempt to copy file \"%s\" to the destination folder %s has failed.",
                 path.c_str(), folder.c_str());
}

void MainDialog::OpenWizard() {
    if (!windows_.wizard) return;
    SetTotalFileDurations(false);
    LUserSettingSet<bool>("Wizard", "Activated", true);
    windows_.wizard();
    SetTotalFileDurations(false);
    UpdateMainWindowCDInfo(false);
}

bool MainDialog::CanClose() {
    if (Ask("Are you sure you want to shut down Vinora Records?", kProgramName,
            LMessageButtons::OkCancel) != LMessageAnswer::Ok)
        return false;
    if (filesProcessing_ >= 1 &&
        Ask("Warning! You have some files that are still to be processed! If you exit Vinora "
            "Records Vinyl to CD Converter now you will lose those files. Continue?",
            kProgramName, LMessageButtons::OkCancel) != LMessageAnswer::Ok)
        return false;
    return true;
}

void MainDialog::Shutdown() {
    thrConvertList.StopThreadNow();
    gMainNotify.SetTarget(nullptr);
}

bool MainDialog::QueueConversion(const LProcessConvert& request) {
    return thrConvertList.Add(request);
}
