#pragma once

#include "jobs/ProcessInterface.h"
#include "sound/SoundSource.h"

// The peak of 16-bit full scale in internal samples: 100 % of a normalisation target.
inline constexpr int kNormalizeFullScale = 524272;
// The largest gain normalisation applies, in percent.
inline constexpr int kNormalizeMaxGainPercent = 1000;

// The normalisation job: the source to measure and the peak it is to reach, as a percentage of
// 16-bit full scale. Once the job is done, `source` is the stream with the gain applied.
struct LProcessNormalize {
    int percent = 100;
    LSoundSource source;
};

// Reads the whole source for its peak and works out the gain (in percent, at most x10) that
// brings the peak to the job's percentage. The source is sought back to its start. A silent
// source leaves `gainPercent` as it was.
LProcessResult ProcessNormalizeGetGain(LProcessInterface& progress, LProcessNormalize& job,
                                       int& gainPercent);

// Measures the gain and, unless it is unity, puts a gain stage (steps of 1/512) on the source.
LProcessResult Process(LProcessInterface& progress, LProcessNormalize& job);

// Replaces the source by its normalised stream.
LProcessResult ProcessNormalize(LProcessInterface& progress, LSoundSource& source, int percent);

// What the kept measuring pass holds in memory at most; the rest goes to a temporary file.
inline constexpr int kKeptPassMemoryBytes = 24 << 20;

// The same for a source whose stages are costly: what the measurement reads is kept (see
// LSRCKeptPass) and the normalised stream replays it, so the stages run once. A source that is
// not at its start, or a pass that cannot be kept (no room for the file), is read again instead.
LProcessResult ProcessNormalizeKeepingPass(LProcessInterface& progress, LSoundSource& source,
                                           int percent, int memoryBytes = kKeptPassMemoryBytes);
