#pragma once

#include "record/SoundRecordDevice.h"
#include "record/SoundRecorder.h"
#include "sound/SoundSink.h"

#include <functional>

// Meters a sound input: records it into a discarding sink and hands each level report (every
// 100 ms) to the listener, on the owner's thread, which must run a main-thread queue.
class LInputMeter : private LSoundRecorderNotify {
public:
    explicit LInputMeter(std::function<void(const LDBMC&)> levels);
    ~LInputMeter();
    LInputMeter(const LInputMeter&) = delete;
    LInputMeter& operator=(const LInputMeter&) = delete;

    // Starts on `device` with the input gain `volume` dB; false when it cannot open.
    bool Start(const LSoundRecordDevice& device, int volume);
    // Stops; the listener hears silence once.
    void Stop();

private:
    void srntfLevel(const LDBMC& levels, long user) override;

    std::function<void(const LDBMC&)> levels_;
    LSoundRecorder recorder_;
    LSoundSink sink_;
};
