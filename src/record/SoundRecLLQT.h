#pragma once

#include "jobs/SignalObject.h"
#include "jobs/Thread.h"
#include "record/SoundRecordDevice.h"
#include "sound/DB.h"
#include "sound/SoundSink.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class LSoundInputStream;

// Low-level capture from one input device: two 16-bit buffers of 100 ms are recorded
// alternately, the device's completion re-arming the other buffer, and a reader thread takes
// each full buffer as internal samples.
//
// Threads: the device's completion touches only the ready flags, the re-arming and dataReady;
// Open, Start, WaitForDataAndRead and Close belong to the reader thread.
class LSoundRecLLQT {
public:
    // The default input device, input 0.
    LSoundRecLLQT();
    ~LSoundRecLLQT();
    LSoundRecLLQT(const LSoundRecLLQT&) = delete;
    LSoundRecLLQT& operator=(const LSoundRecLLQT&) = delete;

    // Takes effect at the next Open.
    void SetDevice(const LSoundRecordDevice& device) { device_ = device; }
    const LSoundRecordDevice& GetDevice() const { return device_; }
    // The recording level in dB (-36 to +12), applied by Start.
    void SetVolume(LDB volume) { volume_ = volume; }
    LDB GetVolume() const { return volume_; }

    // Opens the device at the sink's rate and channel count (or what the device accepts
    // instead) and replaces `sink` by a converter from the device's format to the sink's, so
    // that the sink always gets its own format. Succeeds at once when already open; false when
    // the device cannot be opened (GetError then tells why).
    bool Open(LSoundSink& sink);
    // Sets the input gain and starts recording into buffer A.
    bool Start();
    // Waits for the next full buffer and converts it into `out` (GetSamples() values). False
    // only when the thread is asked to stop; a device that delivers nothing makes it wait on.
    bool WaitForDataAndRead(LThread& thread, int* out);
    // Keeps the completion from re-arming; set before Close.
    void SetStopping() { stopping_ = true; }
    // Stops and closes the device and frees the buffers.
    void Close();

    // The accepted format and the buffer size; valid while open.
    int GetSampleRate() const { return sampleRate_; }
    int GetChannels() const { return channels_; }
    int GetFrames() const { return frames_; }
    int GetSamples() const { return frames_ * channels_; }
    // Whether the buffer last read was completed after a finite input (the Virtual Turntable's
    // file) had delivered all its audio: nothing but silence follows it.
    bool HasEnded() const { return ended_; }
    // Why the last Open failed.
    const std::string& GetError() const { return error_; }

    // The device's input gain for a recording level: (volume + 36) / 48 + 0.5 in 16.16 fixed
    // point, truncated: -36 dB gives 0.5, 0 dB 1.25 (the level as it is), +12 dB 1.5.
    static double GetRecordGain(LDB volume);

private:
    void _SetRecordVolume();
    static void Completion(void* user, int16_t* buffer);
    void Convert(std::vector<int16_t>& buffer, std::atomic<bool>& ended, int* out);

    LSoundRecordDevice device_;
    std::unique_ptr<LSoundInputStream> stream_;
    LSignalObject dataReady_;
    int sampleRate_ = 0;
    int channels_ = 0;
    int frames_ = 0;
    std::vector<int16_t> bufferA_;
    std::vector<int16_t> bufferB_;
    std::atomic<bool> readyA_ = false;
    std::atomic<bool> readyB_ = false;
    // Whether the input had ended when each buffer completed.
    std::atomic<bool> endedA_ = false;
    std::atomic<bool> endedB_ = false;
    // Completions counted, the count at each buffer's completion, and buffers overwritten
    // unread since the reader last looked.
    std::atomic<uint32_t> sequence_ = 0;
    std::atomic<uint32_t> sequenceA_ = 0;
    std::atomic<uint32_t> sequenceB_ = 0;
    std::atomic<int> overruns_ = 0;
    LDB volume_ = 0;
    std::atomic<bool> stopping_ = false;
    bool ended_ = false;
    std::string error_;
};
