#pragma once

#include <vector>

// A second-order high-pass filter (biquad, Q = 0.707) over interleaved internal samples, with
// Q24 coefficients and 32-bit arithmetic. Each channel keeps its own history across calls.
class LHighPassIIR2 {
public:
    // A cut-off below 1 Hz becomes 10 Hz; a rate below 1 becomes 44,100.
    LHighPassIIR2(int cutoffHz, int rate, unsigned char channels);

    // Recomputes the coefficients from the cut-off and rate.
    void Rebuild();
    // Forgets every channel's previous inputs and outputs.
    void Clear();
    // Filters frames x channels samples in place.
    void ApplyFilter(int* buffer, int frames);

    int GetCutoff() const { return cutoff_; }
    int GetRate() const { return rate_; }

private:
    // Samples filtered per piece: the input terms of a piece are kept on the stack.
    static constexpr int kPieceSamples = 2048;

    struct ChanPersistData {
        int x1 = 0;
        int x2 = 0;
        int y1 = 0;
        int y2 = 0;
    };

    // Input terms b0 (x + x2) + b1 x1 of a piece of `frames` frames into `terms`; moves the
    // input history on to the piece's last two frames.
    void InputTerms(const int* x, int frames, int* terms);
    // Outputs terms - a2 y2 - a1 y1 into `y`, moving the output history on.
    void Feedback(int* y, int frames, const int* terms);

    // Q24; b2 equals b0.
    int a1_ = 0;
    int a2_ = 0;
    int b0_ = 0;
    int b1_ = 0;
    std::vector<ChanPersistData> chan_;
    unsigned char channels_;
    int cutoff_;
    int rate_;
};
