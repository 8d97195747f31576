#pragma once

#include "play/SoundPlayer.h"
#include "play/Tones.h"
#include "record/SoundRecordDevice.h"
#include "record/SoundRecorder.h"
#include "record/TrackDetector.h"
#include "restore/ConvertJob.h"
#include "sound/SoundSink.h"
#include "sound/SoundTime.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// Messages a recording session sends to the main window.
enum LRecordingMessage : int {
    WM_RECORDING_START_BURN = 2032,     // value: 1 audio CD, 0 data disc
    WM_RECORDING_FILE_QUEUED = 2035,    // one more file being processed
    WM_RECORDING_SESSION_ENDED = 2037,  // value: 1 when the session ended normally
    WM_RECORDING_DISCARDED = 2038,      // a recording was discarded
};

// What a recording session needs from the program around it (the main window, or vinora-cli).
class LRecordingHost {
public:
    virtual std::string OutputFolder() = 0;
    // A new temporary wave file for the recording; false when none could be made.
    virtual bool TempWavePath(char* out) = 0;
    // Appends the request to the processing queue; false when it could not be stored.
    virtual bool QueueConversion(const LProcessConvert& request) = 0;
    // The outputs (full paths) of the requests waiting in the processing queue, the one being
    // converted included: names a new recording must not take.
    virtual std::vector<std::string> QueuedOutputs() = 0;
    virtual void PostToMainWindow(int message, int value) = 0;

protected:
    ~LRecordingHost() = default;
};

// What the session tells its window (or the command-line tool). All on the owner's thread.
class LRecordingView {
public:
    // Texts or state changed.
    virtual void Refresh() {}
    // One level report.
    virtual void Levels(const LDBMC& /*levels*/) {}
    // A track was kept and queued, or discarded.
    // `tail` is the silence cut from the end of the recording when it stopped.
    virtual void TrackKept(const std::string& /*name*/, const std::string& /*path*/,
                           LSoundTime /*length*/, LSoundTime /*tail*/) {}
    virtual void TrackDiscarded(const std::string& /*name*/, LSoundTime /*length*/) {}

protected:
    ~LRecordingView() = default;
};

// A recording session: records the input into a temporary wave file, verifies that a track
// has started, ends it at silence and starts the next at once, discards recordings without
// audio or below the minimum length, names the tracks and queues each kept one for conversion.
// Runs on a thread with a main-thread queue (the window's), where the recorder reports.
class LRecordingPage : private LSoundRecorderNotify {
public:
    LRecordingPage(LRecordingHost& host, LRecordingView& view);
    ~LRecordingPage();
    LRecordingPage(const LRecordingPage&) = delete;
    LRecordingPage& operator=(const LRecordingPage&) = delete;

    // Commands of the recording window.
    void CmRecord(bool resume);
    void CmRecordPause();
    void CmRecordRestart();
    void CmRecordStop(bool discard);
    // The window's Stop and "Stop and discard": a stop that also tells the main window.
    void CmStopSession(bool discard);
    // The exit question while recording; true when the window may close. Asks the main window
    // to burn the session's files when the output format is for a disc.
    bool CmExit();

    // Queues one conversion; false (nothing queued) when a path, the extension or the length is
    // missing.
    bool CmConvertFile(const char* source, const char* destination, const char* folder,
                       const char* extension, const char* lengthText, bool convert,
                       bool copyToFolder, const char* copyFolder);

    // The user typed a name for the recording under way.
    void SetName(const std::string& name) { name_ = name; }

    // The window's texts.
    const std::string& Status() const { return status_; }
    const std::string& Name() const { return name_; }
    const std::string& Format() const { return format_; }
    std::string RecordedTime() const;
    std::string SessionTime() const;
    const std::string& RemainingDiscSpace() const { return remaining_; }
    std::string FreeDiskSpace() const;

    // Records from this device instead of the one of the settings.
    void SetDevice(const LSoundRecordDevice& device) { device_ = device; }
    // Lets the input run no faster than the session takes its level reports (an input played
    // from a file at full speed).
    void SetPaced(bool paced) { paced_ = paced; }

    // A recording is open: recording, waiting for audio or paused.
    bool IsRecording() const { return active_; }
    bool IsPaused() const { return paused_; }
    // The frames written to the sink of the current recording.
    int CurrentPosition() const;

private:
    void RecordStart(bool resume);
    // At the end of a track: the next track's file takes over from this one, which is saved,
    // while the input stays open.
    void SplitTrack();
    // Cuts the recording 50 ms after the last report the session judged loud. The recorder's
    // own cut counts as loud whatever reaches 4 dB below its start threshold, so noise just
    // above the floor would keep a track going well into the gap after it.
    void CutAfterLastLoud();
    void SaveRecording();
    // The recording's file takes no more audio (a full disk, or the largest file size allowed):
    // what it holds is kept as Stop keeps it, the session ends, and the user is told.
    void StopOnWriteFailure();
    // Keeps a recording the queue refused in the output folder's "Recovered Recordings" and
    // tells the user where it is.
    void RecoverRecording(const std::string& name);
    // A name for the recording that no file in the output or copy folder and no queued output
    // has: `name` itself, or `name` followed by " (n)".
    std::string FreeName(const std::string& name);
    // The folders whose files a new recording's name must not meet.
    std::vector<std::string> NameFolders();
    // The recording's name and year go into its tags, and from there into the converted file.
    void TagRecording(const std::string& name) const;
    void ResetDetection();
    void SetStatus(const char* status);
    void RefreshSpace(bool addCurrent);
    void DeleteRecording();
    // Records into the file and, when the settings ask for it, into the player too.
    void OpenPlayback();
    // Closes the recording's sinks. Playback goes on when one track ends and the next starts.
    void CloseSinks();
    void StopPlayback();
    void PlayTone(const char* key, LTone tone);

    void srntfRecord(long user) override;
    void srntfWait(long user) override;
    void srntfStop(long user) override;
    void srntfTime(LSoundTime time, long user) override;
    void srntfLevel(const LDBMC& levels, long user) override;

    LRecordingHost& host_;
    LRecordingView& view_;
    LSoundRecorder recorder_;
    LSoundSink sink_;        // the temporary wave file
    LSoundSink recordSink_;  // what the recorder writes into: the file, or the file and the player
    std::unique_ptr<LSoundPlayer> playback_;
    LSoundSink toPlayback_;  // the writing end of the pipe the player plays
    bool playing_ = false;   // the player plays the input
    bool splitting_ = false; // one track ends and the next starts
    std::unique_ptr<LTonePlayer> tones_;
    std::unique_ptr<LTrackDetector> detector_;
    char tempPath_[260] = {};
    std::string status_ = "Idle";
    std::string name_ = "Push Record To Start Recording";
    std::string format_ = "N/A";
    std::string remaining_;
    bool active_ = false; // a recording is open (recording, waiting or paused)
    bool paused_ = false;
    // The current recording's start has been verified. It stays so through a pause, which
    // makes the detector start over: a verified recording is never discarded for want of audio.
    bool verified_ = false;
    bool stopping_ = false;
    LSoundTime sessionTime_;
    // The current recording's length; the part before a pause is in it.
    LSoundTime currentTime_;
    LSoundTime tail_; // what the last stop cut from the end of the recording
    int lastPosition_ = 0; // the recording's length at the last level report
    // The recording's length at the last level report that reached the track detector's end
    // threshold: a track that ends is cut 50 ms after it.
    int loudEnd_ = 0;
    bool lastReportLoud_ = false;
    std::optional<LSoundRecordDevice> device_;
    bool paced_ = false;
};
