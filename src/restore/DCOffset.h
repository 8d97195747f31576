#pragma once

#include "jobs/ProcessInterface.h"
#include "sound/SoundSource.h"

#include <vector>

// Subtracts a fixed value from every sample of each channel.
class LSRCDCOffset : public LSoundProcessBase {
public:
    // One offset per channel of the source.
    LSRCDCOffset(LSoundSource& source, std::vector<int> offset);

    void Read(int* buffer, int frames) override;

    const std::vector<int>& GetOffset() const { return offset_; }

private:
    std::vector<int> offset_;
};

// The two-pass DC offset job: the source to measure and, once the job is done, the corrected
// stream that replaces it.
struct LProcessDCOffset {
    LSoundSource source;
};

// Measures the mean of every channel over the whole source, then seeks it to the start and
// replaces it by a stage that subtracts those means. A stop before the measurement ends leaves
// the source in place.
LProcessResult Process(LProcessInterface& progress, LProcessDCOffset& job);

// Replaces the source by its DC-corrected stream.
LProcessResult ProcessDCOffset(LProcessInterface& progress, LSoundSource& source);
