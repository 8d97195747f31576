#include "cli/CliRecordingSession.h"

#include "app/AppStartup.h"
#include "app/ProcessListThread.h"
#include "cli/CliMainLoop.h"
#include "devices/SoundDevices.h"
#include "platform/OutputFolders.h"
#include "platform/Paths.h"
#include "platform/UserFolders.h"
#include "record/RecordingsInProgress.h"

#include <cstdio>

std::optional<LSoundRecordDevice> CliFindSoundInput(const std::string& name) {
    std::vector<LSoundDeviceInfo> devices;
    GetSoundInputDevices(devices);
    for (const LSoundDeviceInfo& device : devices)
        if (device.name == name || device.serverName == name)
            return LSoundRecordDevice(name.c_str(), 0);
    return std::nullopt;
}

std::optional<LSoundRecordDevice> CliVirtualTurntable() {
    std::vector<LSoundDeviceInfo> devices;
    GetSoundInputDevices(devices);
    for (const LSoundDeviceInfo& device : devices)
        if (device.id == kVirtualTurntableId)
            return LSoundRecordDevice(device.name.c_str(), 0);
    return std::nullopt;
}

std::string CliTimeText(LSoundTime time) {
    char text[32];
    time._GetText2(text);
    return text;
}

CliRecordingSession::CliRecordingSession(std::string outputFolder)
    : outputFolder_(std::move(outputFolder)) {}

std::string CliRecordingSession::OutputFolder() {
    return outputFolder_.empty() ? GetVNOutputFolder() : outputFolder_;
}

bool CliRecordingSession::TempWavePath(char* out) {
    return GetTempWaveFilePath(out);
}

bool CliRecordingSession::QueueConversion(const LProcessConvert& request) {
    return ProcessListFile::Append(LQueueFilePath().c_str(), &request, sizeof request);
}

std::vector<std::string> CliRecordingSession::QueuedOutputs() {
    return LQueuedOutputs();
}

void CliRecordingSession::PostToMainWindow(int message, int value) {
    if (message == WM_RECORDING_SESSION_ENDED && value == 1) ended_ = true;
}

void CliRecordingSession::Refresh() {}

void CliRecordingSession::Levels(const LDBMC&) {
    ++reports_;

}

void CliRecordingSession::TrackKept(const std::string& name, const std::string& path,
                                    LSoundTime length, LSoundTime tail) {
    const LSoundTime end(static_cast<int32_t>(ElapsedMs()) - tail.GetMS());
    const LSoundTime start(end.GetMS() - length.GetMS());
    tracks_.push_back({name, path, start, length});
    std::printf("track %zu: %s  %s - %s  (%s)  queued as %s\n", tracks_.size(), name.c_str(),
                CliTimeText(start).c_str(), CliTimeText(end).c_str(), CliTimeText(length).c_str(),
                path.c_str());
    std::fflush(stdout);
}

void CliRecordingSession::TrackDiscarded(const std::string& name, LSoundTime length) {
    std::printf("discarded: %s (%s)\n", name.c_str(), CliTimeText(length).c_str());
    std::fflush(stdout);
}

int64_t CliRecordingSession::ElapsedMs() const {
    if (paced_) return reports_ * 100;
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 started_).count();
}

int CliRecordingSession::Run(std::optional<LSoundRecordDevice> device, bool paced, double seconds,
                             bool untilSilence) {
    for (const std::string& kept : LRecoverAbandonedRecordings(OutputFolder()))
        std::fprintf(stderr,
                     "vinora-cli: a recording left by a program that ended while recording was "
                     "kept as %s\n",
                     kept.c_str());
    CliMainLoop loop;
    LRecordingPage page(*this, *this);
    if (device) page.SetDevice(*device);
    page.SetPaced(paced);
    const auto showStatus = [&] {
        if (page.Status() == lastStatus_) return;
        lastStatus_ = page.Status();
        std::fprintf(stderr, "%s\n", lastStatus_.c_str());
    };
    paced_ = paced;
    started_ = std::chrono::steady_clock::now();
    page.CmRecord(false);
    if (!page.IsRecording()) return 2;
    const int64_t limit = seconds > 0 ? static_cast<int64_t>(seconds * 1000) : 0;
    const bool finished = loop.Run([&] {
        showStatus();
        if (limit > 0 && ElapsedMs() >= limit) return true;
        if (untilSilence && !tracks_.empty()) return true;
        return ended_ || !page.IsRecording();
    });
    if (page.IsRecording()) page.CmStopSession(false);
    showStatus();
    return finished ? 0 : 1;
}
