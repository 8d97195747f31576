#pragma once

#include "app/AppStartup.h"
#include "app/BurnJobs.h"
#include "app/MainNotify.h"
#include "app/RecordingsList.h"
#include "record/RecordingPage.h"
#include "jobs/ProcessInterface.h"
#include "platform/OutputFolders.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class LAudioTagData;
class LDiskEventListener;

// Window messages the main window receives besides the queue's (see MainNotify.h) and the
// recording window's (see record/RecordingPage.h).
enum LMainWindowMessage : int {
    WM_ERASE_DISC = 116,              // erase the disc
    WM_HIDE_WINDOW = 2033,            // hide the main window
    WM_DELETE_FILE = 2034,            // text: the file to drop from the list and delete
    WM_OPEN_RECORDING_WINDOW = 2039,  // the wizard asks for a recording session
    WM_OPEN_WIZARD = 2040,            // open the setup wizard
    WM_RELOAD_LIST = 2041,            // the output folder changed
    WM_DISC_INSERTED = 2052,          // a disc came into a drive
    WM_DISC_EJECTED = 2053,           // a disc left a drive
};

// What the main window's logic asks of the window that shows it.
class LMainDialogView {
public:
    // The rows, their order or the selection changed.
    virtual void RowsChanged() = 0;
    // A status pane's text changed.
    virtual void StatusChanged(int pane) = 0;
    // Starts in-place editing of the row's name.
    virtual void BeginRename(int row) = 0;
    virtual void HideWindow() = 0;
    // Closes the window as the user would: the exit checks apply.
    virtual void CloseWindow() = 0;
    // Runs a job behind a progress window with this caption and returns its result.
    virtual LProcessResult RunJob(const char* caption,
                                  const std::function<LProcessResult(LProcessInterface&)>& job) = 0;

protected:
    ~LMainDialogView() = default;
};

// The windows and jobs other parts of the program open from the main window. A command whose
// window is not there is disabled.
struct LMainDialogWindows {
    std::function<void()> recordingWindow;
    std::function<void()> wizard;
    std::function<void()> preferences;
    // False when the file cannot be played.
    std::function<bool(const std::string& path)> playAndSplit;
    // The setup wizard in a burn mode: "Audio" (audio CD) or "Data" (data disc).
    std::function<void(const char* mode)> burnWizard;
    // The tag editors: true when the user pressed OK.
    std::function<bool(LAudioTagData& tags, const std::string& path)> editTag;
    std::function<bool(LAudioTagData& tags)> editTagList;
};

// The main window's behaviour: the recordings list of the output folder, its commands and
// their enabled states, the messages background work posts, start-up and the exit checks.
// Runs on the GUI thread; the window (LMainDialogView) only shows what this holds.
class MainDialog : public LMainNotifyTarget, public LRecordingHost {
public:
    MainDialog(LMainDialogView& view, LMainDialogWindows windows);
    ~MainDialog();
    MainDialog(const MainDialog&) = delete;
    MainDialog& operator=(const MainDialog&) = delete;

    // Start-up: the encoder component, reporting from the queue, resuming the queue, the list.
    void InitDialog();
    // Half a second after start-up: an empty list opens the setup wizard.
    void OnStartupTimer();

    LRecordingsList& List() { return list_; }
    const std::string& StatusPane(int pane) const { return status_[pane]; }

    bool IsCommandEnabled(int id) const;
    void RunCommand(int id);

    // Posted messages: the queue's (LMainNotifyTarget) and the others of LMainWindowMessage.
    void OnMainNotify(int message, const std::string& text, int value) override;
    void OnMessage(int message, const std::string& text, int value);
    // The play-and-split window's split request: cuts the file behind a progress window.
    void SplitFile(const std::string& path, const std::vector<int>& positions);
    // Posts a message to this window through the main-thread queue; dropped once it is gone.
    void Post(int message, const std::string& text = {}, int value = 0);

    // The list.
    bool AddFileToList(const char* path, bool copyToOutputFolder, bool select);
    void AddProcessedFileToList(const char* path, bool select);
    void LoadSavedAudioFiles();
    void RefreshFileList();
    // Files chosen by the user or named on the command line, as the Add command adds them.
    void AddFiles(const std::vector<std::string>& paths);
    // Files dropped on the window.
    void DropFiles(const std::vector<std::string>& paths);
    // In-place editing of a row's name.
    void OnRenameStarted(int row);
    void OnRenameEnded(int row, const std::string& text);

    // Totals of the (selected) files: "TotalTime" and "TotalSize" in "RecordingPage".
    void SetTotalFileDurations(bool selectedOnly);
    std::string GrabTotalFileDuration(bool duration, bool selectedOnly);

    // Disc burning. Status pane 2 := "amount / capacity": the selected rows' (all rows' when none
    // is selected) total time for an audio CD (output format 4) or size, and the free room of
    // the disc in the burner (asked of the drive when `detectDisc`).
    void UpdateMainWindowCDInfo(bool detectDisc);
    // Commands 2011 and 2012: the setup wizard in the burn mode, the output format settings
    // set for it and restored after.
    void CmBurnWizard(bool audio);
    // Message 2032: burns the selected rows (all when none is selected) to an audio CD or a data
    // disc, as often as the user asks for another copy.
    void BurnSelectedFiles(bool audio);
    // Message 116 and the erase before a burn: the erase job behind a progress window with the
    // caption; a failure's reason goes to `failure`.
    LProcessResult EraseDisc(const char* caption, std::string* failure = nullptr);
    // Command 2051.
    void CmEjectDisc();
    LBurnJobs& BurnJobs() { return burnJobs_; }

    // The exit checks: true when the program may close.
    bool CanClose();
    // Stops the queue thread; its current request stays queued for the next start.
    void Shutdown();

    // What recording sessions opened from this window use: the output folder, temporary
    // recordings, the processing queue and this window's messages.
    std::string OutputFolder() override { return GetVNOutputFolder(); }
    bool TempWavePath(char* out) override { return GetTempWaveFilePath(out); }
    bool QueueConversion(const LProcessConvert& request) override;
    std::vector<std::string> QueuedOutputs() override { return LQueuedOutputs(); }
    void PostToMainWindow(int message, int value) override { Post(message, {}, value); }

private:
    std::string PathOf(int row) const;
    void SetStatus(int pane, std::string text);
    void ShowQueueCount();
    void CmAddFiles();
    void CmRemoveFiles();
    void CmCopyTo();
    void CmEditWithSoundEditor();
    void CmEditTag();
    // Shows the file's size and modification time again after it was changed in place.
    void RefreshRowDetails(int row);
    void CmEditSelectedTags();
    void CmMove(int step);
    void CmPlay();
    void CmJoinFiles();
    // Copies a joined file into the save-to-computer folder when that format is chosen.
    void CopyJoinedToOutputFolder(const std::string& path);
    void OpenWizard();
    std::vector<std::string> SelectedPaths() const;
    // One burn of the selected rows; true when the user asks for another copy.
    bool BurnAudioCD();
    bool BurnDataDisc();
    // Converts a file for a data disc into `folder`; the converted file's path, or empty when
    // it was left out.
    std::string ConvertForDataDisc(const std::string& path, const std::string& folder,
                                   const char* extension);
    // Runs a burn job behind its progress window; a job that fails because the user stopped it
    // counts as stopped.
    LProcessResult RunBurnJob(const char* caption,
                              const std::function<LProcessResult(LProcessInterface&)>& burn);
    // After a burn: the failure message, or the eject and the question for another copy.
    bool ReportBurn(LProcessResult result, const std::string& doneText);

    LMainDialogView& view_;
    LMainDialogWindows windows_;
    LRecordingsList list_;
    std::string status_[3];
    int filesProcessing_ = 0;
    bool sessionFinished_ = false;
    bool processingNoticePending_ = false;
    std::string oldName_;
    bool loading_ = false; // listing the output folder
    LBurnJobs burnJobs_;
    std::unique_ptr<LDiskEventListener> diskEvents_;
    // Shared with posted messages, so that those arriving after the window is gone find nothing.
    std::shared_ptr<MainDialog*> self_;
};
