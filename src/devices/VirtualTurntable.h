#pragma once

#include "devices/SoundDevices.h"
#include "sound/SoundSource.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

// The Virtual Turntable: plays an audio file (or the built-in demo side) as if it were the
// sound input, at the file's own rate and channel count. Its thread fills each armed buffer
// from the file and completes it when the buffer's last frame is due at `speed` times real
// time; at speed 0 it completes a buffer only once the one before has been released. Audio is
// never dropped: a consumer that arms late gets the file where it left off, and a turntable
// opened again with the same setting goes on where the one before was closed (until the file
// has ended; then it starts again from the beginning).
class LVirtualTurntable : public LSoundInputStream {
public:
    // The device as VINORA_VIRTUAL_TURNTABLE sets it up; null with `error` set when the file
    // cannot be played.
    static std::unique_ptr<LSoundInputStream> Open(std::string& error);

    // `parkKey` names the setting the turntable was opened with.
    LVirtualTurntable(LSoundSource source, double speed, std::string parkKey = {});
    ~LVirtualTurntable() override;

    int GetSampleRate() const override { return rate_; }
    int GetChannels() const override { return channels_; }
    bool SelectInputSource(int index) override { return index == 0; }
    bool SetInputGain(double gain) override;
    bool Record(int16_t* buffer, int samples, Completion completion, void* user) override;
    void Release(int16_t* buffer) override;
    void Stop() override;
    bool HasEnded() const override { return ended_; }
    void GiveBack(int frames) override;

private:
    static constexpr int kReadFrames = 4096;

    void Run();
    // Fills the buffer from the source; true once the source has nothing more.
    bool Fill(int16_t* buffer, int samples);

    LSoundSource source_;
    const int rate_;
    const int channels_;
    const double speed_;
    std::vector<int> work_;
    const std::string parkKey_;
    bool exhausted_ = false;
    // The input gain as a 16.16 factor on the samples.
    std::atomic<int> gain_{65536};
    std::atomic<bool> ended_{false};

    std::mutex mutex_;
    std::condition_variable wake_;
    int16_t* armed_ = nullptr;
    int armedSamples_ = 0;
    Completion completion_ = nullptr;
    void* user_ = nullptr;
    int16_t* unreleased_ = nullptr;
    bool stopping_ = false;
    bool clockRunning_ = false;
    std::chrono::steady_clock::time_point clockStart_;
    int64_t framesDelivered_ = 0;
    std::thread thread_;
};
