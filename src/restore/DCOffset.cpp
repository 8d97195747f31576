#include "restore/DCOffset.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr int kBlockFrames = 8192;

// Adds every sample of a chunk to its channel's sum. The sums hold whole numbers: while a sum
// is so far below 2^53 that no partial sum of the chunk can reach it, adding the chunk's exact
// 64-bit total gives the same double as adding sample by sample, only faster.
void AddToSums(const int* samples, int frames, int channels, std::vector<double>& sum) {
    constexpr double kExact = 9007199254740992.0; // 2^53
    const double reach = frames * 2147483648.0;
    for (int c = 0; c < channels; ++c) {
        if (std::abs(sum[c]) + reach < kExact) {
            int64_t total = 0;
            for (int f = 0; f < frames; ++f)
                total += samples[f * channels + c];
            sum[c] += static_cast<double>(total);
        } else {
            for (int f = 0; f < frames; ++f)
                sum[c] += samples[f * channels + c];
        }
    }
}

} // namespace

LSRCDCOffset::LSRCDCOffset(LSoundSource& source, std::vector<int> offset)
    : LSoundProcessBase(source), offset_(std::move(offset)) {
    offset_.resize(channels_);
    // Taking the offset out can move the far side of the waveform past the source's peak.
    int largest = 0;
    for (int value : offset_)
        largest = std::max(largest, std::abs(value));
    maxAmplitude_ += largest;
}

void LSRCDCOffset::Read(int* buffer, int frames) {
    inner_->Read(buffer, frames);
    const int channels = channels_;
    for (int c = 0; c < channels; ++c) {
        const int offset = offset_[c];
        for (int f = 0; f < frames; ++f)
            buffer[f * channels + c] -= offset;
    }
}

LProcessResult Process(LProcessInterface& progress, LProcessDCOffset& job) {
    progress.SetStatus("DC Offset Correction", 0);
    progress.SetStatus("Please wait...", 1);
    LSoundSource source = job.source;
    if (source->GetError() != sndErrNone) return PROCESS_FAILED;

    const int channels = source->GetChannels();
    const int end = std::max(source->GetEndSample(), 1);
    std::vector<int> buffer(static_cast<size_t>(kBlockFrames) * channels);
    std::vector<double> sum(channels);
    double fraction = 0;
    for (int done = 0; done < end;) {
        if (progress.IsToStop()) return PROCESS_STOPPED;
        const int frames = std::min(end - done, kBlockFrames);
        source->Read(buffer.data(), frames);
        AddToSums(buffer.data(), frames, channels, sum);
        done += frames;
        fraction += static_cast<double>(frames) / end;
        progress.SetProgress(fraction);
    }

    std::vector<int> offset(channels);
    for (int c = 0; c < channels; ++c)
        offset[c] = static_cast<int>(sum[c] / end);
    source->Seek(0);
    job.source = LSoundSource(new LSRCDCOffset(source, std::move(offset)));
    return PROCESS_DONE;
}

LProcessResult ProcessDCOffset(LProcessInterface& progress, LSoundSource& source) {
    if (source->GetError() != sndErrNone) return PROCESS_FAILED;
    progress.SetStatus("DC Offset", 0);
    LProcessDCOffset job{source};
    const LProcessResult result = Process(progress, job);
    if (result == PROCESS_DONE) source = job.source;
    return result;
}
