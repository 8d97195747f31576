#pragma once

#include "sound/SoundSource.h"

#include <vector>

// A look-ahead peak limiter: keeps every sample within +-limit. The source is read in blocks
// and each block's peak gives the gain that brings it down to the limit; the gain ramps from
// block to block toward the smallest of the surrounding blocks' gains, so that it has fallen
// before a loud block is output. Three blocks are held ahead of the output.
class LSRCPeakLimit : public LSoundProcessBase {
public:
    // The limit is at most 0x3FFFFF; it becomes the stage's maximum amplitude.
    LSRCPeakLimit(LSoundSource& source, int limit);

    void Read(int* buffer, int frames) override;
    int GetPositionSample() const override;
    // A streaming source's last three blocks are not yet readable here.
    int GetEndSample() const override;
    void Seek(int frame) override;

    // Refills the three blocks from the source's position and starts the output there.
    void Restart();
    // Sets the gain ramp for the block now being output.
    void CalcCLev();
    // The Q24 gain that brings a peak down to the limit (1.0 when it is within it).
    int ConvMaxtoLev(int peak) const;

    int GetBlockLength() const { return blockLen_; }

private:
    // Reads the next block from the source into a buffer and returns its level.
    int ReadBlock(std::vector<int>& block);
    void Rotate();

    int limit_;
    int blockLen_;
    int aheadLen_;
    int pos_;
    std::vector<int> blockA_;  // being output
    std::vector<int> blockB1_; // next
    std::vector<int> blockB2_; // after next
    int levPrev_ = 0;
    int levCur_ = 0;
    int levNext_ = 0;
    int levNext2_ = 0;
    int gain_ = 0;     // Q24
    int gainStep_ = 0; // Q24 per frame
};

class LSPPeakLimit : public LSoundProcess {
public:
    explicit LSPPeakLimit(int limit) : limit_(limit) {}
    // The source itself when its maximum amplitude is within the limit or it has an error.
    LSoundSource OpenSource(LSoundSource& source) override;

private:
    int limit_;
};
