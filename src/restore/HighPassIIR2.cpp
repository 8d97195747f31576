#include "restore/HighPassIIR2.h"

#include "sound/FixedQ24.h"

#include <cmath>
#include <numbers>

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
    const int a1 = a1_;
    const int a2 = a2_;
    const int b0 = b0_;
    const int b1 = b1_;
    const auto next = [=](ChanPersistData& h, int x) {
        const int y = MulQ24(x + h.x2, b0) + MulQ24(h.x1, b1) - MulQ24(h.y2, a2) - MulQ24(h.y1, a1);
        h.x2 = h.x1;
        h.x1 = x;
        h.y2 = h.y1;
        h.y1 = y;
        return y;
    };
    const int channels = channels_;
    int c = 0;
    // Channels two at a time: their recursions are independent, so the processor works on
    // both at once.
    for (; c + 1 < channels; c += 2) {
        ChanPersistData left = chan_[c];
        ChanPersistData right = chan_[c + 1];
        int* sample = buffer + c;
        for (int f = 0; f < frames; ++f, sample += channels) {
            sample[0] = next(left, sample[0]);
            sample[1] = next(right, sample[1]);
        }
        chan_[c] = left;
        chan_[c + 1] = right;
    }
    for (; c < channels; ++c) {
        ChanPersistData h = chan_[c];
        int* sample = buffer + c;
        for (int f = 0; f < frames; ++f, sample += channels)
            *sample = next(h, *sample);
        chan_[c] = h;
    }
}
