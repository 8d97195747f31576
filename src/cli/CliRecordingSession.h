#pragma once

#include "record/RecordingPage.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

// A recording session without a window: tracks are queued in the processing queue's file and
// reported on stdout as they are kept or discarded; state changes go to stderr.
class CliRecordingSession : public LRecordingHost, public LRecordingView {
public:
    // A track of the side, as the session kept it.
    struct Track {
        std::string name;
        std::string path;
        LSoundTime start; // on the input, from the first report of the session
        LSoundTime length;
    };

    // `outputFolder` empty: the program's output folder.
    explicit CliRecordingSession(std::string outputFolder = {});

    // Runs a session until the input ends, `seconds` of input have passed (0: no limit) or an
    // interrupt; `untilSilence` ends it at the first track end. Returns 0 done, 1 interrupted,
    // 2 failed.
    int Run(std::optional<LSoundRecordDevice> device, bool paced, double seconds,
            bool untilSilence);

    const std::vector<Track>& Tracks() const { return tracks_; }

    std::string OutputFolder() override;
    bool TempWavePath(char* out) override;
    bool QueueConversion(const LProcessConvert& request) override;
    std::vector<std::string> QueuedOutputs() override;
    void PostToMainWindow(int message, int value) override;

    void Refresh() override;
    void Levels(const LDBMC& levels) override;
    void TrackKept(const std::string& name, const std::string& path, LSoundTime length,
                   LSoundTime tail) override;
    void TrackDiscarded(const std::string& name, LSoundTime length) override;

private:
    // The input's time since the session started.
    int64_t ElapsedMs() const;
    std::string outputFolder_;
    std::string lastStatus_;
    std::vector<Track> tracks_;
    int64_t reports_ = 0; // 100 ms input buffers seen
    // A live input's time is the clock's: reports can merge when the loop is busy, and the
    // device restarts between tracks.
    bool paced_ = false;
    std::chrono::steady_clock::time_point started_;
    bool ended_ = false;
    bool failed_ = false;
};

// The input of a device's list name or sound server name; nullopt when there is none.
std::optional<LSoundRecordDevice> CliFindSoundInput(const std::string& name);
// The Virtual Turntable's place in the list of inputs; nullopt when it is not there.
std::optional<LSoundRecordDevice> CliVirtualTurntable();
// "0:01:02.50"
std::string CliTimeText(LSoundTime time);
