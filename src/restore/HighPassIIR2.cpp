#include "restore/HighPassIIR2.h"

#include "sound/FixedQ24.h"

#include <cmath>
#include <numbers>

LHighPassIIR2::LHighPassIIR2(int cutoffHz, int rate, unsigned char channels)
    : chan_(channels), channels_(channels), cutoff_(cutoffHz < 1 ? 10 : cutoffHz),
      rate_(rate < 1 ? 44100 : rate)
{
    Rebuild();
}

void LHighPassIIR2::Rebuild()
{
    const double omega = 2 * std::numbers::pi * cutoff_ / rate_;
    const double cosOmega = std::cos(omega);
    const double alpha = std::sin(omega) * 0.7072135785007072;
    const double norm = 1 / (1 + alpha);
    a1_ = static_cast<int>(cosOmega * -33554432.0 * norm);
    a2_ = static_cast<int>((1 - alpha) * 16777216.0 * norm);
    b0_ = static_cast<int>((1 + cosOmega) * 8388608.0 * norm);
    b1_ = static_cast<int>((-1 - cosOmega) * 16777216.0 * norm);
}

void LHighPassIIR2::Clear()
{
    for (ChanPersistData& history : chan_)
        history = {};
}

void LHighPassIIR2::ApplyFilter(int* buffer, int frames)
{
    for (int c = 0; c < channels_; ++c) {
        ChanPersistData h = chan_[c];
        int* sample = buffer + c;
        for (int f = 0; f < frames; ++f, sample += channels_) {
            const int x = *sample;
            const int y = MulQ24(x + h.x2, b0_) + MulQ24(h.x1, b1_) - MulQ24(h.y1, a1_) -
                          MulQ24(h.y2, a2_);
            h.x2 = h.x1;
            h.x1 = x;
            h.y2 = h.y1;
            h.y1 = y;
            *sample = y;
        }
        chan_[c] = h;
    }
}
