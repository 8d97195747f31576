#pragma once

#include "jobs/ProcessInterface.h"
#include "sound/SoundSource.h"

// Factors of the record speed correction: 33 RPM records played at 45 RPM are slowed down by
// 33 / 45, 78 RPM records played at 45 RPM sped up by 78 / 45 (both to three decimals).
inline constexpr double kSpeedFactor45To33 = 0.733;
inline constexpr double kSpeedFactor78To45 = 1.733;

// Changes speed and pitch together, as playing the record at another speed would: the source is
// resampled to rate / factor and presented at its original rate, so its duration is divided by
// the factor and every frequency multiplied by it. Positions are in output frames.
class LSRCPitchSpeed : public LSoundProcessBase {
public:
    // A factor below 0.1 counts as 0.1.
    LSRCPitchSpeed(LSoundSource& source, double factor);

    void Read(int* buffer, int frames) override { inner_->Read(buffer, frames); }

    // The rate the source is resampled to.
    static int TargetRate(int rate, double factor);

private:
    LSRCPitchSpeed(LSoundSource resampler, int rate);
};

class LSPPitchSpeed : public LSoundProcess {
public:
    explicit LSPPitchSpeed(double speedFactor) : factor(speedFactor) {}

    // The source itself when it has an error or the factor leaves its rate as it is.
    LSoundSource OpenSource(LSoundSource& source) override;

    double factor; // how much faster the material goes by afterwards; 0.733 slows it down
};

// Chain steps of the speed correction: replace the source by its speed-corrected stream.
LProcessResult ProcessConvert45To33RPM(LProcessInterface& progress, LSoundSource& source);
LProcessResult ProcessConvert78To45RPM(LProcessInterface& progress, LSoundSource& source);
