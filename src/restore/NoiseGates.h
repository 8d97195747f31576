#pragma once

#include "jobs/ProcessInterface.h"
#include "sound/DB.h"
#include "sound/SoundSource.h"

#include <array>
#include <vector>

// Four noise gates, one per frequency band (below 400 Hz, 400-1100 Hz, 1100-2600 Hz and above),
// that take hiss and rumble out between and under the music. One-pole filters split the audio
// into the bands; each band's peak is measured one block (1/30 s) ahead and its gain opens
// above the band's threshold and closes below it. A gate opens within the block before the
// sound arrives and closes gradually (half the way per block, a quarter for the lowest band).
// The split drops what lies below about 50 Hz, so the stage is also a first-order high-pass.
class LSRCNoiseGates : public LSoundProcessBase {
public:
    static constexpr int kBands = 4;

    // Thresholds per band in dB relative to full scale.
    LSRCNoiseGates(LSoundSource& source, LDB t0, LDB t1, LDB t2, LDB t3);

    void Read(int* buffer, int frames) override;
    // The next frame this stage hands out; it has read two blocks further than that.
    int GetPositionSample() const override;
    // Seeks the source and refills the two blocks from there.
    void Seek(int frame) override;

    int GetBlockLen() const { return blockLen_; }
    // Gain of a band in units of 2^-24: 0 is closed, 0x1000000 open.
    int GetGain(int band) const { return gain_[band]; }
    // One-pole coefficient of a band's split, in units of 1/256.
    int GetCoef(int band) const { return coef_[band]; }

private:
    using BandBuffers = std::array<std::vector<int>, kBands>;

    // Splits the block read into residual into four bands; residual keeps what lies above
    // the third split (band 3).
    void Filter(int* band0, int* band1, int* band2, int* residual);
    // Forgets the filter states and fills both blocks from the source's position.
    void Restart();
    // Reads the next block into `next_` and splits it.
    void ReadBlock(BandBuffers& bands);
    // Gains that the bands of `next_` need.
    std::array<int, kBands> TargetGains() const;
    // Hands out `frames` frames of the current block from `pos_` on, with the gains moving.
    void Output(int* buffer, int frames);

    std::array<int, kBands> coef_{};
    std::array<int, kBands> mult_{};
    int blockLen_;
    int pos_ = 0;
    int attackLen_;
    int releaseLen_;
    std::array<std::vector<int>, kBands> state_; // per band: one filter state per channel
    BandBuffers cur_;                            // block being output
    BandBuffers next_;                           // look-ahead block
    std::array<int, kBands> gain_{};
    std::array<int, kBands> gainStep_{};
};

// Opens the noise gates with thresholds built from one level: the lowest band 3 dB less
// sensitive, the 1100-2600 Hz band (where hiss is heard most) 3 dB more sensitive.
class LSPNoiseGates : public LSoundProcess {
public:
    explicit LSPNoiseGates(LDB level);

    // The source itself when it is in an error state.
    LSoundSource OpenSource(LSoundSource& source) override;

    LDB thresholds[LSRCNoiseGates::kBands];
};

// Chain step: replaces the source by the noise gates at `level` dB (clamped to -127..127).
LProcessResult ProcessNoiseReduction(LProcessInterface& progress, LSoundSource& source, int level);
