#pragma once

#include "jobs/MessageQueue.h"
#include "jobs/SignalObject.h"
#include "devices/SoundDevices.h"
#include "play/SoundPlayDevice.h"
#include "sound/DB.h"
#include "sound/SoundSource.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

class LThread;

// One entry of the output ring: a slice of the sample memory with the audio written into it.
struct WaveHeader {
    // Bytes in the slice.
    int byteLength = 0;
    // The slice, and the frames of it queued to the output channel (the channel carries the rate
    // and the 16-bit sample format).
    int16_t* samples = nullptr;
    int frames = 0;
    // Level of each channel of the queued audio.
    LDBMC levels;
    // Free: the feeder may fill the slice. Played: the output has finished with it. A queued
    // slice is neither; the output marks it played, the completion side then frees it.
    std::atomic<bool> free = true;
    std::atomic<bool> played = true;
    // The source position just after the slice's last frame.
    int endPosition = 0;
};

// The device layer of the sound player: one output channel and a ring of 64 buffers of about
// 100 ms each queued to it. The feeder thread fills buffers (WriteBuffer), the completion
// thread takes played ones back (WaitForEmptyBuffer), and the output's own thread marks them
// played. Channel commands of the owner (volume, stop, pause, seek, device change) are posted
// to a command queue and carried out by HandlePendingEvents, which each operation calls after
// posting. All sample memory is allocated by Init; nothing is allocated per buffer.
class LSoundPlayerLLQT {
public:
    static constexpr int kBufferCount = 64;
    // Sources above this rate are converted down to it.
    static constexpr int kMaxSampleRate = 64000;
    static constexpr int kMinBufferFrames = 20;
    static constexpr int kMaxBufferFrames = 8192;
    // The level of a channel whose buffer holds only zeros. Stored in the signed byte of an LDB
    // it reads as -127, the silence level, so meters fed with it fall to the bottom.
    static constexpr int kNoSignalLevel = 129;

    // Init flags.
    static constexpr unsigned short kStartPaused = 1;

    // State bits; 0 is stopped.
    static constexpr uint16_t kStateStarted = 1;
    static constexpr uint16_t kStatePaused = 2;
    static constexpr uint16_t kStateCued = 4;

    LSoundPlayerLLQT() = default;
    ~LSoundPlayerLLQT();
    LSoundPlayerLLQT(const LSoundPlayerLLQT&) = delete;
    LSoundPlayerLLQT& operator=(const LSoundPlayerLLQT&) = delete;

    // Takes the source (converted down to 64,000 Hz when faster), sizes and allocates the ring
    // and opens the output channel on the chosen device, or the default output when that
    // device is gone or fails. `notifier` is the thread that feeds the layer: its stop request
    // ends the completion wait, and a device change restarts it. False when the source has an
    // error or no channel opens.
    bool Init(LSoundSource& source, unsigned short flags, LThread* notifier);

    void Start();
    void Stop();
    // Prepares one buffer at the current position (a cue point), or releases a paused cue.
    // Only while no feeder runs.
    void Cue();
    // Silences the output and drops what is queued, before the source is moved.
    void PrepareSeek();
    // Continues from `frame` of the layer's source after PrepareSeek: the ring starts empty.
    void Seek(int frame);
    // Reopens the output on the device now chosen and goes on from the position reached.
    void Restart();
    // Called by the feeder when it leaves: nothing more is queued until the next Start or
    // Seek, so the channel is paused.
    void Standby();

    // Feeder thread: reads up to `frames` (at most one buffer) and queues them.
    void WriteBuffer(int frames);
    // Completion thread: waits until the oldest queued buffer has been played and frees it.
    // False when the notifier is asked to stop or the layer is stopped.
    bool WaitForEmptyBuffer();
    // Whether the buffer at the write index may be filled.
    bool IsNextBufferReady() const;
    // Whether the last queued buffer is still to be played.
    bool PlayRemainingBuffer() const;

    void HandlePendingEvents();
    // Chooses the output device; while playing, the output moves to it at once.
    void SetDevice(const LSoundPlayDevice& device);
    // Volume in whole dB (0 leaves the level unchanged).
    void SetVolume(LDB db);
    // The channel volume for a level in dB: 256 + 5 x dB within 0..2048, 256 being unity.
    static int ChannelVolume(LDB db);

    // The level of the last played buffer, reduced to one channel.
    LDBMC GetDB() const;
    // Frame of the layer's source after the last played buffer.
    int GetPosition() const { return position_; }
    uint16_t GetState() const { return state_; }
    bool IsStarted() const { return state_ != 0; }
    bool IsCued() const { return (state_ & kStateCued) != 0; }
    // The source as the layer reads it (after any rate conversion); its frames are the
    // positions of this layer.
    LSoundSource& GetSource() { return source_; }
    int GetSampleRate() const { return source_->GetSampleRate(); }
    int GetBufferFrames() const { return bufferFrames_; }

private:
    enum Command : int {
        kCommandVolume = 1,
        kCommandStop = 2,
        kCommandPause = 3,
        kCommandResumeCue = 4,
        kCommandPrepareSeek = 6,
        kCommandSeek = 7,
        kCommandRestart = 8,
    };

    static void OnPlayed(void* user, void* tag);
    bool OpenChannel();
    void Post(Command command, unsigned int parameter = 0);
    void ResetRing();
    void ComputeLevels(WaveHeader& header, int frames);

    LSignalObject played_;
    LSoundPlayDevice device_;
    std::atomic<int> position_ = 0;
    std::atomic<uint16_t> state_ = 0;
    std::unique_ptr<int16_t[]> sampleMemory_;
    std::unique_ptr<int[]> work_;
    LSoundSource source_;
    std::atomic<int8_t> lastLevel_ = LDB::kSilence;
    unsigned char channels_ = 1;
    int bufferFrames_ = 0;
    std::array<WaveHeader, kBufferCount> headers_;
    LMessageQueue commands_;
    unsigned short flags_ = 0;
    LThread* notifier_ = nullptr;
    // Destroyed first: no completion runs once it is gone.
    std::unique_ptr<LSoundOutputStream> channel_;
    int writeIndex_ = 0;
    int playIndex_ = 0;
    LDB volume_ = 0;
};
