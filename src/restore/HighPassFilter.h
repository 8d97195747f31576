#pragma once

#include "jobs/ProcessInterface.h"
#include "restore/HighPassIIR2.h"
#include "sound/SoundSource.h"

// A stage that takes the low frequencies (rumble, subsonic warp) out of its source.
class LSRCHighPassIIR2 : public LSoundProcessBase {
public:
    LSRCHighPassIIR2(LSoundSource& source, int cutoffHz);

    void Read(int* buffer, int frames) override;
    // Seeks the source and forgets the filter's history.
    void Seek(int frame) override;

    const LHighPassIIR2& GetFilter() const { return filter_; }

private:
    LHighPassIIR2 filter_;
};

class LSPHighPassIIR2 : public LSoundProcess {
public:
    explicit LSPHighPassIIR2(int cutoffHz) : cutoffHz_(cutoffHz) {}
    LSoundSource OpenSource(LSoundSource& source) override;

private:
    int cutoffHz_;
};

// Replaces the source by a high-pass stage at the given cut-off (150 Hz when it is 0).
LProcessResult ProcessLowCutFilter(LProcessInterface& progress, LSoundSource& source,
                                   int cutoffHz);
