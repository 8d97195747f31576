#pragma once

#include "devices/PulseConnection.h"
#include "devices/SoundDevices.h"

#include <array>

// Playing on one sink of the sound server through a playback stream with a small target
// latency. Queued buffers stay in the caller's memory and are written to the stream as the
// server asks for data. A buffer's completion runs once the server's play position has passed
// its last frame (timing interpolated between the server's reports, checked every 10 ms), so
// it tracks what has been heard, not what has been sent. Completions run on the main loop's
// thread under its lock: they may queue more buffers but must not block.
class LPulseOutputStream : public LSoundOutputStream {
public:
    // Opens sink `index`, or the server's default sink for kDefaultSoundOutputId; null with
    // `error` set when it cannot.
    static std::unique_ptr<LSoundOutputStream> Open(std::shared_ptr<LPulseConnection> connection,
                                                    uint32_t index, int sampleRate, int channels,
                                                    Completion completion, void* user,
                                                    std::string& error);
    ~LPulseOutputStream() override;

    int GetSampleRate() const override { return static_cast<int>(sampleFormat_.rate); }
    int GetChannels() const override { return sampleFormat_.channels; }
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
        size_t bytes = 0;
        void* tag = nullptr;
        size_t written = 0;
        // The stream's write index where the buffer's first and after its last byte went.
        int64_t start = 0;
        int64_t end = 0;
    };

    LPulseOutputStream(std::shared_ptr<LPulseConnection> connection,
                       const pa_sample_spec& sampleFormat, Completion completion, void* user);
    bool Connect(const char* sinkName, std::string& error);
    void Close();

    // All of these run under the main loop's lock.
    void Pump();
    void CompletePlayed();
    // The stream's play position in bytes; -1 while the server has not reported one yet.
    int64_t PlayedBytes() const;
    // Empties the server's buffer; everything still queued is written again from `written`.
    void FlushServer();
    void ApplyVolume();
    Entry& At(int position) { return queue_[(head_ + position) % kQueueSize]; }

    static void OnState(pa_stream* stream, void* user);
    static void OnRequest(pa_stream* stream, size_t bytes, void* user);
    static void OnTiming(pa_stream* stream, void* user);
    static void OnUnderflow(pa_stream* stream, void* user);
    static void OnTick(pa_mainloop_api* api, pa_time_event* event, const struct timeval* time,
                       void* user);

    std::shared_ptr<LPulseConnection> connection_;
    const pa_sample_spec sampleFormat_;
    const size_t frameBytes_;
    const Completion completion_;
    void* const user_;
    pa_stream* stream_ = nullptr;
    pa_time_event* tick_ = nullptr;
    LPulseWaiter* connecting_ = nullptr;

    // Guarded by the main loop's lock.
    std::array<Entry, kQueueSize> queue_{};
    int head_ = 0;
    int count_ = 0;
    int volume_[2] = {256, 256};
    bool corked_ = false;
    // After the server ran out of data: the write index then, and when it has all been heard.
    int64_t drainedIndex_ = -1;
    pa_usec_t drainedAt_ = 0;
};
