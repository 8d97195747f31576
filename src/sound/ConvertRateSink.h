#pragma once

#include "sound/ConvertRateBase.h"
#include "sound/SoundSink.h"

#include <vector>

// A sink that accepts one sample rate and writes its target at the target's rate, through a
// 15-tap polyphase filter in 32-bit integer arithmetic (samples are taken at 16-bit scale).
// It takes the target's channel count; mono and stereo are converted. A target with more
// channels, or a rate below 1, gives a sink with error 1 that converts nothing.
class LSinkConvertRateBase : public LSoundSinkBase {
public:
    static constexpr int kTaps = 15;

    LSinkConvertRateBase(LSoundSink& target, int rate);
    // Writes the frames still in the filter, then lets the target go.
    ~LSinkConvertRateBase() override;

    void Write(const int* buffer, int frames) override;
    void Seek(int frame) override;

    const LConvertRateBase& GetRate() const { return rate_; }

private:
    void Start();
    void Flush();
    void Produce();
    template <int Channels> void ProduceChannels();

    LConvertRateBase rate_;
    LSoundSink target_;
    int phase_ = 0;
    int inputFill_ = 0;  // values (frames x channels) in the input buffer
    int inputIndex_ = 0; // input frame where the next output's taps start
    std::vector<int> input_;
    std::vector<int> output_;
};

// Opens a sink that accepts a given rate and writes into another sink.
struct LSinkConvertRate {
    int rate;
    // The sink itself when it already has the rate.
    LSoundSink OpenSink(LSoundSink& sink) const;
};
