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

// Sample i of frame f of the output: the four bands' samples, each times its gain g + f x step
// (the gains move by their steps after every frame and stay within 0..0x1000000 over a block).
// Flat loops over the samples, for one and two channels with the frame found by a shift, run
// in vector instructions.
__attribute__((target_clones("avx2", "default"))) void
MixBands(int* out, const int* b0, const int* b1, const int* b2, const int* b3, const int* gains,
         const int* steps, int frames, int channels) {
    const int g0 = gains[0], g1 = gains[1], g2 = gains[2], g3 = gains[3];
    const int d0 = steps[0], d1 = steps[1], d2 = steps[2], d3 = steps[3];
    const auto mix = [=](int i, int f) {
        out[i] = MulQ24(b0[i], g0 + f * d0) + MulQ24(b1[i], g1 + f * d1) +
                 MulQ24(b2[i], g2 + f * d2) + MulQ24(b3[i], g3 + f * d3);
    };
    const int count = frames * channels;
    if (channels == 2) {
        for (int i = 0; i < count; ++i)
            mix(i, i >> 1);
    } else if (channels == 1) {
        for (int i = 0; i < count; ++i)
            mix(i, i);
    } else {
        for (int i = 0; i < count; ++i)
            mix(i, i / channels);
    }
}

} // namespace

LSRCNoiseGates::LSRCNoiseGates(LSoundSource& source, LDB t0, LDB t1, LDB t2, LDB t3)
    : LSoundProcessBase(source), blockLen_(std::clamp(sampleRate_ / 30, 20, 8192)),
      attackLen_(blockLen_), releaseLen_(2 * blockLen_) {
    // With the gates at different openings the bands no longer add up to the input, and the
    // splits ring on steep edges: the output may reach twice as far.
    maxAmplitude_ = static_cast<int>(std::min<int64_t>(int64_t{maxAmplitude_} * 2, INT_MAX / 4));
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
    struct States {
        int s0, s1, s2, s3;
    };
    const auto split = [=](States& s, int i) {
        int r = residual[i] - (s.s0 >> 8);
        s.s0 += r * c0;
        s.s1 += (r - (s.s1 >> 8)) * c1;
        band0[i] = s.s1 >> 8;
        r -= band0[i];
        s.s2 += (r - (s.s2 >> 8)) * c2;
        band1[i] = s.s2 >> 8;
        r -= band1[i];
        s.s3 += (r - (s.s3 >> 8)) * c3;
        band2[i] = s.s3 >> 8;
        residual[i] = r - band2[i];
    };
    const auto load = [this](int c) {
        return States{state_[0][c], state_[1][c], state_[2][c], state_[3][c]};
    };
    const auto store = [this](int c, const States& s) {
        state_[0][c] = s.s0;
        state_[1][c] = s.s1;
        state_[2][c] = s.s2;
        state_[3][c] = s.s3;
    };
    const int count = blockLen_ * channels;
    int c = 0;
    // Channels two at a time: their recursions are independent, so the processor works on
    // both at once.
    for (; c + 1 < channels; c += 2) {
        States left = load(c);
        States right = load(c + 1);
        for (int i = c; i < count; i += channels) {
            split(left, i);
            split(right, i + 1);
        }
        store(c, left);
        store(c + 1, right);
    }
    for (; c < channels; ++c) {
        States s = load(c);
        for (int i = c; i < count; i += channels)
            split(s, i);
        store(c, s);
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

void LSRCNoiseGates::Output(int* buffer, int frames) {
    const size_t at = static_cast<size_t>(pos_) * channels_;
    MixBands(buffer, cur_[0].data() + at, cur_[1].data() + at, cur_[2].data() + at,
             cur_[3].data() + at, gain_.data(), gainStep_.data(), frames, channels_);
    for (int k = 0; k < kBands; ++k)
        gain_[k] += frames * gainStep_[k];
    pos_ += frames;
}

void LSRCNoiseGates::Read(int* buffer, int frames) {
    if (error_ != sndErrNone) {
        ClearAudioBuffer(buffer, frames, channels_);
        return;
    }
    while (frames > 0) {
        const int count = std::min(frames, blockLen_ - pos_);
        Output(buffer, count);
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
