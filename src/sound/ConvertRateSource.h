#pragma once

#include "sound/ConvertRateBase.h"
#include "sound/SoundSource.h"

#include <cstdint>
#include <vector>

// A stage that delivers its inner source at another sample rate through a 63-tap polyphase
// filter in 32-bit integer arithmetic. The inner source is read in pieces of at most 8,192
// frames into a 32,768-frame buffer, block-scaled to 16 bits so that the products fit.
// Mono and stereo are converted; a source with more channels is refused (error sndErrFormat,
// reads silence).
class LSRCConvertRate : public LSoundProcessBase {
public:
    static constexpr int kTaps = 63;

    // An output rate below 1 becomes 44,100 with error sndErrFormat.
    LSRCConvertRate(LSoundSource& inner, int outputRate, bool narrow);

    void Read(int* buffer, int frames) override;
    int GetPositionSample() const override;
    int GetEndSample() const override;
    void Seek(int frame) override;

    const LConvertRateBase& GetRate() const { return rate_; }

private:
    template <int Channels> void Filter(int* out, int frames);
    void ReadBuffer();

    LConvertRateBase rate_;
    int readIndex_ = kTaps / 2 + 1; // buffer frame where the next output's taps start
    int phase_ = 0;                 // in 1/L input frames; may reach L or more between calls
    int fill_ = 0;                  // frames of new input after the history frames
    std::vector<int> buffer_;       // history frames, then up to 32,768 new frames
    uint8_t inputShift_ = 0;        // right shift applied to the samples in the buffer
    uint8_t outputShift_ = 15;
    int outputRounding_ = 1 << 14;
};

// Opens a source at another sample rate. Reductions by 4 or more go through two stages: a
// narrow one to twice the target rate, then one to the target.
class LSPConvertRate final : public LSoundProcess {
public:
    explicit LSPConvertRate(int rate) : rate_(rate) {}
    LSoundSource OpenSource(LSoundSource& source) override;

private:
    int rate_;
};
