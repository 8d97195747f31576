#include "restore/NoiseGates.h"

#include "sound/AudioBuffer.h"
#include "sound/FixedQ24.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <utility>

namespace {

// Corner frequencies of the four one-pole splits. The first only takes out the lowest
// frequencies; the other three separate bands 0, 1 and 2 from what lies above them.
constexpr double kCornerHz[LSRCNoiseGates::kBands] = {50, 400, 1100, 2600};

int OnePoleCoef(double cornerHz, int rate) {
    return static_cast<int>((1 - std::exp(-2 * std::numbers::pi * cornerHz / rate)) * 256);
}

// 2^16 / 10^(t/20): the factor that turns a peak into peak / (256 x threshold amplitude) in
// the split product. Below about -90 dB it no longer fits 32 bits and is held at the largest
// value, so a gate that low opens on anything but digital silence.
int ThresholdMultiplier(LDB threshold) {
    const int64_t amplitude = LDB::GetTable().AmplitudeTable[threshold];
    if (amplitude == 0) return INT_MAX;
    return static_cast<int>(std::min<int64_t>((int64_t{1} << 40) / amplitude, INT_MAX));
}

// The gain (2^-24 units) a band needs for a corrected peak: closed at or below the threshold
// amplitude, open at five times it, linear in between.
int GateGain(int peak, int multiplier) {
    const int g = MulQ24(peak, multiplier) - 512;
    if (g < 0) return 0;
    if (g > 2048) return kQ24One;
    return g << 13;
}

} // namespace

LSRCNoiseGates::LSRCNoiseGates(LSoundSource& source, LDB t0, LDB t1, LDB t2, LDB t3)
    : LSoundProcessBase(source), blockLen_(std::clamp(sampleRate_ / 30, 20, 8192)),
      attackLen_(blockLen_), releaseLen_(2 * blockLen_) {
    const LDB thresholds[kBands] = {t0, t1, t2, t3};
    for (int k = 0; k < kBands; ++k) {
        coef_[k] = OnePoleCoef(kCornerHz[k], sampleRate_);
        mult_[k] = ThresholdMultiplier(thresholds[k]);
        state_[k].resize(channels_);
        cur_[k].resize(static_cast<size_t>(blockLen_) * channels_);
        next_[k].resize(cur_[k].size());
    }
    Restart();
}

void LSRCNoiseGates::Filter(int* band0, int* band1, int* band2, int* residual) {
    const int channels = channels_;
    const int c0 = coef_[0];
    const int c1 = coef_[1];
    const int c2 = coef_[2];
    const int c3 = coef_[3];
    // States are in units of 1/256 of a sample.
    for (int c = 0; c < channels; ++c) {
        int s0 = state_[0][c];
        int s1 = state_[1][c];
        int s2 = state_[2][c];
        int s3 = state_[3][c];
        for (int i = c; i < blockLen_ * channels; i += channels) {
            int r = residual[i] - (s0 >> 8);
            s0 += r * c0;
            s1 += (r - (s1 >> 8)) * c1;
            band0[i] = s1 >> 8;
            r -= band0[i];
            s2 += (r - (s2 >> 8)) * c2;
            band1[i] = s2 >> 8;
            r -= band1[i];
            s3 += (r - (s3 >> 8)) * c3;
            band2[i] = s3 >> 8;
            residual[i] = r - band2[i];
        }
        state_[0][c] = s0;
        state_[1][c] = s1;
        state_[2][c] = s2;
        state_[3][c] = s3;
    }
}

void LSRCNoiseGates::ReadBlock(BandBuffers& bands) {
    inner_->Read(bands[3].data(), blockLen_);
    Filter(bands[0].data(), bands[1].data(), bands[2].data(), bands[3].data());
}

std::array<int, LSRCNoiseGates::kBands> LSRCNoiseGates::TargetGains() const {
    int p[kBands];
    for (int k = 0; k < kBands; ++k)
        p[k] = GetBufferPeak(next_[k].data(), blockLen_, channels_);
    // Each band's filters leak some of its neighbours; take that out before comparing.
    const int e[kBands] = {
        p[0] - (p[1] >> 2),
        p[1] - ((p[0] >> 4) + (p[2] >> 2)),
        p[2] - ((p[3] >> 4) + (p[1] >> 3)),
        p[3] - (p[2] >> 3),
    };
    std::array<int, kBands> gains;
    for (int k = 0; k < kBands; ++k)
        gains[k] = GateGain(e[k], mult_[k]);
    return gains;
}

void LSRCNoiseGates::Restart() {
    if (error_ != sndErrNone) return;
    for (std::vector<int>& states : state_)
        std::fill(states.begin(), states.end(), 0);
    ReadBlock(cur_);
    ReadBlock(next_);
    gain_ = TargetGains();
    gainStep_ = {};
    pos_ = 0;
}

template <int Channels> void LSRCNoiseGates::Output(int* buffer, int frames) {
    const int channels = Channels > 0 ? Channels : channels_;
    const int* b0 = cur_[0].data();
    const int* b1 = cur_[1].data();
    const int* b2 = cur_[2].data();
    const int* b3 = cur_[3].data();
    int g0 = gain_[0];
    int g1 = gain_[1];
    int g2 = gain_[2];
    int g3 = gain_[3];
    size_t at = static_cast<size_t>(pos_) * channels;
    for (int f = 0; f < frames; ++f) {
        for (int c = 0; c < channels; ++c, ++at)
            *buffer++ =
                MulQ24(b0[at], g0) + MulQ24(b1[at], g1) + MulQ24(b2[at], g2) + MulQ24(b3[at], g3);
        g0 += gainStep_[0];
        g1 += gainStep_[1];
        g2 += gainStep_[2];
        g3 += gainStep_[3];
    }
    gain_ = {g0, g1, g2, g3};
    pos_ += frames;
}

void LSRCNoiseGates::Read(int* buffer, int frames) {
    if (error_ != sndErrNone) {
        ClearAudioBuffer(buffer, frames, channels_);
        return;
    }
    while (frames > 0) {
        const int count = std::min(frames, blockLen_ - pos_);
        if (channels_ == 1)
            Output<1>(buffer, count);
        else if (channels_ == 2)
            Output<2>(buffer, count);
        else
            Output<0>(buffer, count);
        buffer += count * channels_;
        frames -= count;
        if (pos_ < blockLen_) continue;
        // The look-ahead block is output next; each gain moves toward what the block after
        // it needs: fully open within one block, closing over two (four for band 0).
        std::swap(cur_, next_);
        ReadBlock(next_);
        const std::array<int, kBands> target = TargetGains();
        for (int k = 0; k < kBands; ++k) {
            const int change = target[k] - gain_[k];
            if (change > 0)
                gainStep_[k] = change / attackLen_;
            else
                gainStep_[k] = change / (k == 0 ? 2 * releaseLen_ : releaseLen_);
        }
        pos_ = 0;
    }
}

int LSRCNoiseGates::GetPositionSample() const {
    return inner_->GetPositionSample() - (2 * blockLen_ - pos_);
}

void LSRCNoiseGates::Seek(int frame) {
    inner_->Seek(frame);
    Restart();
}

LSPNoiseGates::LSPNoiseGates(LDB level)
    : thresholds{static_cast<int8_t>(std::min(level + 3, 127)), level,
                 static_cast<int8_t>(std::max(level - 3, -127)), level} {}

LSoundSource LSPNoiseGates::OpenSource(LSoundSource& source) {
    if (source->GetError() != sndErrNone) return source;
    return LSoundSource(
        new LSRCNoiseGates(source, thresholds[0], thresholds[1], thresholds[2], thresholds[3]));
}

LProcessResult ProcessNoiseReduction(LProcessInterface& progress, LSoundSource& source, int level) {
    if (source->GetError() != sndErrNone) return PROCESS_FAILED;
    progress.SetStatus("Noise Reduction", 0);
    LSPNoiseGates gates(static_cast<int8_t>(std::clamp(level, -127, 127)));
    source = gates.OpenSource(source);
    return PROCESS_DONE;
}
