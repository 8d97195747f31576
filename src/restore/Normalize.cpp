#include "restore/Normalize.h"

#include "restore/Gain.h"
#include "restore/KeptPass.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

constexpr int kBlockFrames = 8192;
// Frames kept past the end: what readers above the stream read beyond it (a limiter's
// look-ahead, a resampler's filter) comes from the same uninterrupted pass.
constexpr int kKeptTailFrames = 65536;

// Reads `end` frames through `read` in blocks of `buffer`'s size, showing the measurement's
// status and progress, and finds their peak over all channels.
template <typename Read>
LProcessResult MeasurePeak(LProcessInterface& progress, int end, std::vector<int>& buffer,
                           int channels, int& peak, Read read) {
    progress.SetStatus("Normalizing", 0);
    progress.SetStatus("Please wait...", 1);
    peak = 0;
    double fraction = 0;
    for (int pos = 0;;) {
        if (progress.IsToStop()) return PROCESS_STOPPED;
        if (pos >= end) return PROCESS_DONE;
        const int frames = std::min(end - pos, kBlockFrames);
        read(buffer.data(), frames);
        for (int i = 0; i < frames * channels; ++i)
            peak = std::max(peak, std::abs(buffer[i]));
        pos += frames;
        fraction += static_cast<double>(kBlockFrames) / end;
        progress.SetProgress(fraction);
    }
}

// The gain in percent that brings `peak` to `percent`, at most x10; `gainPercent` as it is
// for silence.
int GainForPeak(int percent, int peak, int gainPercent) {
    if (peak < 1) return gainPercent;
    const long long gain = static_cast<long long>(percent) * kNormalizeFullScale / peak;
    return static_cast<int>(std::min<long long>(gain, kNormalizeMaxGainPercent));
}

// Puts the gain stage (steps of 1/512) on the source unless the gain is unity.
void ApplyGain(LSoundSource& source, int gainPercent) {
    if (gainPercent == 100) return;
    LSPGain gain(((gainPercent * 512) / 100) * 32768);
    source = gain.OpenSource(source);
}

} // namespace

LProcessResult ProcessNormalizeGetGain(LProcessInterface& progress, LProcessNormalize& job,
                                       int& gainPercent) {
    LSoundSource source = job.source;
    if (source->GetError() != sndErrNone) return PROCESS_FAILED;
    const int channels = source->GetChannels();
    std::vector<int> buffer(static_cast<size_t>(kBlockFrames) * channels);
    int peak = 0;
    const LProcessResult result =
        MeasurePeak(progress, std::max(source->GetEndSample(), 1), buffer, channels, peak,
                    [&](int* block, int frames) { source->Read(block, frames); });
    if (result != PROCESS_DONE) return result;
    source->Seek(0);
    gainPercent = GainForPeak(job.percent, peak, gainPercent);
    return PROCESS_DONE;
}

LProcessResult Process(LProcessInterface& progress, LProcessNormalize& job) {
    int gainPercent = 100;
    const LProcessResult result = ProcessNormalizeGetGain(progress, job, gainPercent);
    ApplyGain(job.source, gainPercent);
    return result;
}

LProcessResult ProcessNormalize(LProcessInterface& progress, LSoundSource& source, int percent) {
    if (source->GetError() != sndErrNone) return PROCESS_FAILED;
    progress.SetStatus("Normalize", 0);
    LProcessNormalize job{percent, source};
    const LProcessResult result = Process(progress, job);
    if (result == PROCESS_DONE) source = job.source;
    return result;
}

LProcessResult ProcessNormalizeKeepingPass(LProcessInterface& progress, LSoundSource& source,
                                           int percent, int memoryBytes) {
    if (source->GetError() != sndErrNone) return PROCESS_FAILED;
    if (source->GetPositionSample() != 0) return ProcessNormalize(progress, source, percent);
    progress.SetStatus("Normalize", 0);
    // The stream is written after a seek to its start, and a stage may start differently
    // after a seek than when it was made (the equaliser's delay): the kept pass starts the way
    // the written one would.
    source->Seek(0);
    const int channels = source->GetChannels();
    const int end = std::max(source->GetEndSample(), 1);
    const long long wanted = static_cast<long long>(end) + kKeptTailFrames;
    const int memoryFrames =
        static_cast<int>(std::min<long long>(wanted, memoryBytes / (channels * sizeof(int))));
    auto* kept = new LSRCKeptPass(source, memoryFrames);
    LSoundSource keptSource(kept);
    std::vector<int> buffer(static_cast<size_t>(kBlockFrames) * channels);
    bool keeping = true;
    auto keep = [&](int* block, int frames) { keeping = kept->Keep(block, frames) && keeping; };
    int peak = 0;
    const LProcessResult result = MeasurePeak(progress, end, buffer, channels, peak, keep);
    if (result != PROCESS_DONE) return result;
    for (int tail = 0; keeping && tail < kKeptTailFrames; tail += kBlockFrames)
        keep(buffer.data(), std::min(kBlockFrames, kKeptTailFrames - tail));
    if (keeping) {
        kept->Replay();
        source = keptSource;
    } else {
        source->Seek(0);
    }
    ApplyGain(source, GainForPeak(percent, peak, 100));
    return PROCESS_DONE;
}
