#include "restore/HighPassIIR2.h"

#include "sound/FixedQ24.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// The input terms b0 (x + x2) + b1 x1 of samples from..to-1 of interleaved frames; a loop
// without recursion, which the compiler turns into vector instructions.
__attribute__((target_clones("avx2", "default"))) void
InputTermsFrom(const int* x, int* terms, int from, int to, int channels, int b0, int b1) {
    for (int i = from; i < to; ++i)
        terms[i] = MulQ24(x[i] + x[i - 2 * channels], b0) + MulQ24(x[i - channels], b1);
}

} // namespace

LHighPassIIR2::LHighPassIIR2(int cutoffHz, int rate, unsigned char channels)
    : chan_(channels), channels_(channels), cutoff_(cutoffHz < 1 ? 10 : cutoffHz),
      rate_(rate < 1 ? 44100 : rate) {
    Rebuild();
}

void LHighPassIIR2::Rebuild() {
    const double omega = 2 * std::numbers::pi * cutoff_ / rate_;
    const double cosOmega = std::cos(omega);
    const double alpha = std::sin(omega) * 0.7072135785007072;
    const double norm = 1 / (1 + alpha);
    a1_ = static_cast<int>(cosOmega * -33554432.0 * norm);
    a2_ = static_cast<int>((1 - alpha) * 16777216.0 * norm);
    b0_ = static_cast<int>((1 + cosOmega) * 8388608.0 * norm);
    b1_ = static_cast<int>((-1 - cosOmega) * 16777216.0 * norm);
}

void LHighPassIIR2::Clear() {
    for (ChanPersistData& history : chan_)
        history = {};
}

void LHighPassIIR2::ApplyFilter(int* buffer, int frames) {
    const int channels = channels_;
    // A piece at a time: first the input terms of its outputs, which need no earlier output,
    // then the recursion over the outputs, which only adds the two feedback terms.
    int terms[kPieceSamples];
    const int pieceFrames = std::max(1, kPieceSamples / channels);
    for (int done = 0; done < frames;) {
        const int n = std::min(pieceFrames, frames - done);
        int* piece = buffer + static_cast<long>(done) * channels;
        InputTerms(piece, n, terms);
        Feedback(piece, n, terms);
        done += n;
    }
}

void LHighPassIIR2::InputTerms(const int* x, int frames, int* terms) {
    const int channels = channels_;
    // The first two frames take their older inputs from the history...
    for (int c = 0; c < channels; ++c) {
        ChanPersistData& h = chan_[c];
        terms[c] = MulQ24(x[c] + h.x2, b0_) + MulQ24(h.x1, b1_);
        if (frames > 1)
            terms[channels + c] = MulQ24(x[channels + c] + h.x1, b0_) + MulQ24(x[c], b1_);
    }
    // ...the others from the piece itself.
    InputTermsFrom(x, terms, 2 * channels, frames * channels, channels, b0_, b1_);
    for (int c = 0; c < channels; ++c) {
        ChanPersistData& h = chan_[c];
        h.x2 = frames > 1 ? x[(frames - 2) * channels + c] : h.x1;
        h.x1 = x[(frames - 1) * channels + c];
    }
}

void LHighPassIIR2::Feedback(int* y, int frames, const int* terms) {
    const int channels = channels_;
    const int a1 = a1_;
    const int a2 = a2_;
    const auto next = [=](ChanPersistData& h, int term) {
        const int out = term - MulQ24(h.y2, a2) - MulQ24(h.y1, a1);
        h.y2 = h.y1;
        h.y1 = out;
        return out;
    };
    const int count = frames * channels;
    int c = 0;
    // Channels two at a time: their recursions are independent, so the processor works on
    // both at once.
    for (; c + 1 < channels; c += 2) {
        ChanPersistData left = chan_[c];
        ChanPersistData right = chan_[c + 1];
        for (int i = c; i < count; i += channels) {
            y[i] = next(left, terms[i]);
            y[i + 1] = next(right, terms[i + 1]);
        }
        chan_[c] = left;
        chan_[c + 1] = right;
    }
    for (; c < channels; ++c) {
        ChanPersistData h = chan_[c];
        for (int i = c; i < count; i += channels)
            y[i] = next(h, terms[i]);
        chan_[c] = h;
    }
}
