#pragma once

#include <cstdint>

// The polyphase synthesis filter bank of one channel: turns 32 subband samples into 32 output
// samples at the internal scale (full scale at +-524,288), truncated toward zero.
class MP3PolyphaseSynth {
public:
    // The synthesis window of the standard in units of 2^-16, first half (D[0] to D[256]);
    // the second half mirrors it: D[512 - i] = -D[i], but D[i] where i is a multiple of 64.
    static const std::int32_t D[257];
    // The largest absolute value written.
    static constexpr int kMaxAmplitude = 2097152;

    MP3PolyphaseSynth() { Reset(); }

    void Reset();
    // One step: subbands[0..31] in, 32 samples out at out[0], out[stride], ...
    void Synthesize(const float* subbands, int* out, int stride);

private:
    // The last 16 matrixed vectors of 64 values, newest first, at history_[offset_]; the
    // buffer is twice as long so that the window reads them without wrapping.
    float history_[2048];
    int offset_ = 0;
};
