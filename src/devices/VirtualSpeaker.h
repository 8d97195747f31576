#pragma once

#include "devices/SoundDevices.h"
#include "sound/SoundSink.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

// The Virtual Speaker: "plays" queued buffers in order on its own thread at `speed` times real
// time (0: as fast as it can), writing them with the volume applied to a 16-bit wave file, or
// discarding them when it has no file. A buffer is played in pieces of at most 10 ms, so pause,
// quiet and flush take effect within one piece.
class LVirtualSpeaker : public LSoundOutputStream {
public:
    // The device as VINORA_VIRTUAL_SPEAKER sets it up; null with `error` set when its file
    // cannot be written.
    static std::unique_ptr<LSoundOutputStream>
    Open(int sampleRate, int channels, Completion completion, void* user, std::string& error);

    LVirtualSpeaker(LSoundSink sink, int sampleRate, int channels, double speed,
                    Completion completion, void* user);
    // Ends the thread and finishes the file; buffers still queued are dropped.
    ~LVirtualSpeaker() override;

    int GetSampleRate() const override { return rate_; }
    int GetChannels() const override { return channels_; }
    bool Play(const int16_t* samples, int frames, void* tag) override;
    void Pause() override;
    void Resume() override;
    void Quiet() override;
    void Flush() override;
    void SetVolume(int left, int right) override;

private:
    // More than any player keeps queued; Play fails when the queue is full.
    static constexpr int kQueueSize = 256;

    struct Entry {
        const int16_t* samples = nullptr;
        int frames = 0;
        void* tag = nullptr;
    };

    void Run();
    // Waits until no completion is running, so a dropped buffer's completion cannot arrive
    // after Quiet or Flush has returned. Not needed, and not possible, on the speaker's thread.
    void WaitForCompletion(std::unique_lock<std::mutex>& lock);
    // Converts the next piece of the head buffer into work_ with the volume applied.
    void TakePiece(const Entry& entry, int frames);

    LSoundSink sink_;
    const int rate_;
    const int channels_;
    const double speed_;
    const Completion completion_;
    void* const user_;
    const int pieceFrames_;
    std::vector<int> work_;

    std::mutex mutex_;
    std::condition_variable wake_;
    std::array<Entry, kQueueSize> queue_{};
    int head_ = 0;
    int count_ = 0;
    // Frames of the head buffer already played.
    int headPlayed_ = 0;
    // Counts the buffers taken off the head, so the thread sees its buffer dropped.
    uint64_t headSerial_ = 0;
    int volume_[2] = {256, 256};
    bool paused_ = false;
    bool stopping_ = false;
    bool completing_ = false;
    std::chrono::steady_clock::time_point clockStart_;
    int64_t framesSinceStart_ = 0;
    std::thread thread_;
};
