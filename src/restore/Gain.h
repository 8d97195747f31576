#pragma once

#include "sound/FixedQ24.h"
#include "sound/SoundSource.h"

// Multiplies every sample by a fixed gain, in steps of 1/512.
class LSRCGain : public LSoundProcessBase {
public:
    LSRCGain(LSoundSource& source, int gainQ24);

    void Read(int* buffer, int frames) override;

private:
    int gain9_; // 512 is unity
};

class LSPGain : public LSoundProcess {
public:
    explicit LSPGain(int gainQ24 = kQ24One) : gain(gainQ24) {}
    // The source itself when the gain rounds to unity.
    LSoundSource OpenSource(LSoundSource& source) override;

    int gain; // Q24
};
