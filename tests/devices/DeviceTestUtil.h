#pragma once

#include "codecs/WaveFile.h"
#include "devices/SoundDevices.h"
#include "support/ScopedEnv.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// Helpers for the sound device tests: test patterns, 16-bit wave files written and read whole, and a consumer that records from an input the way the recorder
// does (two buffers armed alternately from the completion).

// A recognisable pattern: every value differs from its neighbours and from the next buffer's.
inline std::vector<int16_t> Pattern(size_t samples, uint32_t seed = 12345) {
    std::vector<int16_t> values(samples);
    for (int16_t& value : values) {
        seed = seed * 1664525u + 1013904223u;
        value = static_cast<int16_t>(seed >> 16);
    }
    return values;
}

inline void WriteWave16(const std::string& path, int rate, int channels,
                        const std::vector<int16_t>& samples) {
    LSoundSink sink =
        LWaveFile::OpenSinkPCM(path.c_str(), rate, static_cast<unsigned char>(channels), 16, 0);
    std::vector<int> internal(samples.begin(), samples.end());
    for (int& value : internal)
        value *= 16;
    sink->Write(internal.data(), static_cast<int>(samples.size()) / channels);
}

inline std::vector<int16_t> ReadWave16(const std::string& path, int* rate = nullptr,
                                       int* channels = nullptr) {
    LSoundSource source = LWaveFile::OpenSource(path.c_str());
    if (rate) *rate = source->GetSampleRate();
    if (channels) *channels = source->GetChannels();
    const int frames = source->GetEndSample();
    std::vector<int> internal(static_cast<size_t>(frames) * source->GetChannels());
    if (frames > 0) source->Read(internal.data(), frames);
    std::vector<int16_t> samples(internal.size());
    for (size_t i = 0; i < internal.size(); ++i)
        samples[i] = static_cast<int16_t>(internal[i] / 16);
    return samples;
}

class InputCapture {
public:
    InputCapture(LSoundInputStream& stream, int samplesPerBuffer)
        : stream_(stream), a_(samplesPerBuffer), b_(samplesPerBuffer) {}
    ~InputCapture() { stream_.Stop(); }

    bool Start() { return stream_.Record(a_.data(), static_cast<int>(a_.size()), &Done, this); }

    // Waits for the next completed buffer, appends it to `out` and releases it. `delay` is
    // spent before the buffer is read, as a busy consumer would.
    bool Next(std::vector<int16_t>& out, std::chrono::milliseconds delay = {}) {
        int16_t* buffer = nullptr;
        {
            std::unique_lock lock(mutex_);
            if (!ready_.wait_for(lock, std::chrono::seconds(10), [this] { return !done_.empty(); }))
                return false;
            buffer = done_.front();
            done_.pop_front();
        }
        if (delay.count() > 0) std::this_thread::sleep_for(delay);
        out.insert(out.end(), buffer, buffer + a_.size());
        stream_.Release(buffer);
        return true;
    }

    // Collects at least `samples` values.
    bool Collect(std::vector<int16_t>& out, size_t samples) {
        while (out.size() < samples)
            if (!Next(out)) return false;
        return true;
    }

private:
    static void Done(void* user, int16_t* buffer) {
        auto* self = static_cast<InputCapture*>(user);
        std::vector<int16_t>& other = buffer == self->a_.data() ? self->b_ : self->a_;
        self->stream_.Record(other.data(), static_cast<int>(other.size()), &Done, self);
        const std::lock_guard lock(self->mutex_);
        self->done_.push_back(buffer);
        self->ready_.notify_all();
    }

    LSoundInputStream& stream_;
    std::vector<int16_t> a_, b_;
    std::mutex mutex_;
    std::condition_variable ready_;
    std::deque<int16_t*> done_;
};
