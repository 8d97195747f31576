#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// The computer's sound inputs and outputs: the sound server's sources and sinks (PulseAudio, or
// PipeWire through its PulseAudio server) and the two virtual devices, the Virtual Turntable
// (input) and the Virtual Speaker (output). Samples cross this layer as interleaved signed
// 16-bit values in native byte order. Nothing here allocates per buffer.

// Ids of the virtual devices; the sound server's devices use its own source and sink indexes.
constexpr uint32_t kVirtualTurntableId = 0xFFFFFF01;
constexpr uint32_t kVirtualSpeakerId = 0xFFFFFF02;
// Opening output id kDefaultSoundOutputId plays on the sound server's default sink, or on the
// Virtual Speaker when no sound server answers.
constexpr uint32_t kDefaultSoundOutputId = 0xFFFFFFFF;

struct LSoundDeviceInfo {
    uint32_t id = 0;
    // The name shown to the user: the device's description ("Monitor of Null Output",
    // "Virtual Turntable", ...).
    std::string name;
    // The sound server's own name of the device ("turntable.monitor"); the virtual devices use
    // "virtual-turntable" and "virtual-speaker".
    std::string serverName;
    // Input devices only: the names of its input sources (the device's ports: "Line In",
    // "Microphone", ...), in the order an input index counts them. May be empty.
    std::vector<std::string> inputSources;
    bool isDefault = false;
};

// The input devices: the sound server's sources, monitors of outputs included, then the Virtual
// Turntable. False when the sound server could not be asked; the list then holds the virtual
// device only.
bool GetSoundInputDevices(std::vector<LSoundDeviceInfo>& devices);
// The output devices: the sound server's sinks, then the Virtual Speaker. False as above.
bool GetSoundOutputDevices(std::vector<LSoundDeviceInfo>& devices);
// The sound server's default input device; without a sound server, the Virtual Turntable.
bool GetDefaultSoundInputDevice(LSoundDeviceInfo& device);

// An open input device recording into buffers the caller arms one at a time.
class LSoundInputStream {
public:
    // Runs on the device's own thread when the armed buffer is full. It may call Record() to arm
    // the next buffer; until a buffer is armed, input is dropped.
    using Completion = void (*)(void* user, int16_t* buffer);

    virtual ~LSoundInputStream() = default;

    // The rate and channel count the device accepted; they may differ from those requested.
    virtual int GetSampleRate() const = 0;
    virtual int GetChannels() const = 0;

    // Chooses which input source (port) to record from; index counts as in inputSources.
    virtual bool SelectInputSource(int index) = 0;
    // Input gain as a linear factor: 1.25 leaves the level as it is, 0.5 is -36 dB of the
    // recording level scale and 1.5 is +12 dB.
    virtual bool SetInputGain(double gain) = 0;

    // Arms `buffer` for `samples` 16-bit values (frames x channels): the device fills it and then
    // calls completion(user, buffer) on its own thread. Any thread, completion included.
    virtual bool Record(int16_t* buffer, int samples, Completion completion, void* user) = 0;
    // Tells the device the consumer has finished with a completed buffer. Real devices ignore
    // it; the Virtual Turntable at "as fast as the consumer reads" waits for it before it
    // completes the next buffer, so no buffer is overwritten unread.
    virtual void Release(int16_t* buffer) = 0;
    // Stops recording; no completion runs after it returns. Not from the completion.
    virtual void Stop() = 0;

    // True once a finite input (the Virtual Turntable's file or demo side) has delivered all its
    // audio; it then delivers digital silence. Always false for real devices.
    virtual bool HasEnded() const = 0;
    // After Stop: `frames` delivered in buffers that were never read. An input that plays a file
    // plays them again to the next stream opened on it; a live input has nothing to give back.
    virtual void GiveBack(int /*frames*/) {}
};

// Opens input device `id` asking for 16-bit samples at `sampleRate` and `channels`. Null with
// `error` set when the device cannot be opened.
std::unique_ptr<LSoundInputStream> OpenSoundInput(uint32_t id, int sampleRate, int channels,
                                                  std::string& error);

// An open output channel playing queued buffers in order.
class LSoundOutputStream {
public:
    // Runs on the device's own thread once per queued buffer, when it has been played.
    using Completion = void (*)(void* user, void* tag);

    virtual ~LSoundOutputStream() = default;

    virtual int GetSampleRate() const = 0;
    virtual int GetChannels() const = 0;

    // Queues `frames` frames; the memory stays the caller's and must stay valid until the
    // buffer's completion runs or the queue is flushed. Any thread.
    virtual bool Play(const int16_t* samples, int frames, void* tag) = 0;
    virtual void Pause() = 0;
    virtual void Resume() = 0;
    // Stops the buffer being played now; its completion does not run.
    virtual void Quiet() = 0;
    // Drops every queued buffer that has not started; their completions do not run.
    virtual void Flush() = 0;
    // Linear volume per channel: 256 is unity, 0 silent, up to 2048.
    virtual void SetVolume(int left, int right) = 0;
};

// Opens output device `id` (kDefaultSoundOutputId for the default) for 16-bit samples at the
// given rate and channel count. Null with `error` set when it cannot be opened.
std::unique_ptr<LSoundOutputStream> OpenSoundOutput(uint32_t id, int sampleRate, int channels,
                                                    LSoundOutputStream::Completion completion,
                                                    void* user, std::string& error);
