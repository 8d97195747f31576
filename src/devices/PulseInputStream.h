#pragma once

#include "devices/PulseConnection.h"
#include "devices/PulseDeviceList.h"
#include "devices/SoundDevices.h"

#include <vector>

// Recording from one source of the sound server through a record stream. The stream's read
// callback (on the main loop's thread, under its lock) copies what arrives into the armed
// buffer and calls the completion as soon as the buffer is full; what arrives while no buffer
// is armed is dropped. The armed buffer is guarded by the main loop's lock, so a completion may
// arm the next buffer at once.
class LPulseInputStream : public LSoundInputStream {
public:
    // Opens source `index` for `channels` channels at `sampleRate` (the server converts from the
    // source's own format); null with `error` set when it cannot.
    static std::unique_ptr<LSoundInputStream> Open(std::shared_ptr<LPulseConnection> connection,
                                                   uint32_t index, int sampleRate, int channels,
                                                   std::string& error);
    ~LPulseInputStream() override;

    int GetSampleRate() const override { return static_cast<int>(sampleFormat_.rate); }
    int GetChannels() const override { return sampleFormat_.channels; }
    bool SelectInputSource(int index) override;
    bool SetInputGain(double gain) override;
    bool Record(int16_t* buffer, int samples, Completion completion, void* user) override;
    void Release(int16_t*) override {}
    void Stop() override;
    bool HasEnded() const override { return false; }

private:
    LPulseInputStream(std::shared_ptr<LPulseConnection> connection, uint32_t index,
                      LPulseDeviceDetails source, const pa_sample_spec& sampleFormat);
    bool Connect(std::string& error);
    static void OnRead(pa_stream* stream, size_t bytes, void* user);
    static void OnState(pa_stream* stream, void* user);
    // Copies incoming samples into armed buffers, completing each as it fills.
    void Take(const int16_t* samples, size_t count);

    std::shared_ptr<LPulseConnection> connection_;
    const uint32_t sourceIndex_;
    const LPulseDeviceDetails source_;
    const pa_sample_spec sampleFormat_;
    pa_stream* stream_ = nullptr;
    LPulseWaiter* connecting_ = nullptr;

    // Guarded by the main loop's lock.
    int16_t* armed_ = nullptr;
    int armedSamples_ = 0;
    int filled_ = 0;
    Completion completion_ = nullptr;
    void* user_ = nullptr;
};
