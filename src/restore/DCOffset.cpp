#include "restore/DCOffset.h"

#include <algorithm>
#include <cstdlib>

namespace {
constexpr int kBlockFrames = 8192;
}

LSRCDCOffset::LSRCDCOffset(LSoundSource& source, std::vector<int> offset)
    : LSoundProcessBase(source), offset_(std::move(offset))
{
    offset_.resize(channels_);
    // Taking the offset out can move the far side of the waveform past the source's peak.
    int largest = 0;
    for (int value : offset_)
        largest = std::max(largest, std::abs(value));
    maxAmplitude_ += largest;
}

void LSRCDCOffset::Read(int* buffer, int frames)
{
    inner_->Read(buffer, frames);
    for (int f = 0; f < frames; ++f)
        for (int c = 0; c < channels_; ++c)
            *buffer++ -= offset_[c];
}

LProcessResult Process(LProcessInterface& progress, LProcessDCOffset& job)
{
    progress.SetStatus("DC Offset Correction", 0);
    progress.SetStatus("Please wait...", 1);
    LSoundSource source = job.source;
    if (source->GetError() != sndErrNone)
        return PROCESS_FAILED;

    const int channels = source->GetChannels();
    const int end = std::max(source->GetEndSample(), 1);
    std::vector<int> buffer(static_cast<size_t>(kBlockFrames) * channels);
    std::vector<double> sum(channels);
    double fraction = 0;
    for (int done = 0; done < end;) {
        if (progress.IsToStop())
            return PROCESS_STOPPED;
        const int frames = std::min(end - done, kBlockFrames);
        source->Read(buffer.data(), frames);
        const int* sample = buffer.data();
        for (int f = 0; f < frames; ++f)
            for (int c = 0; c < channels; ++c)
                sum[c] += *sample++;
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

LProcessResult ProcessDCOffset(LProcessInterface& progress, LSoundSource& source)
{
    if (source->GetError() != sndErrNone)
        return PROCESS_FAILED;
    progress.SetStatus("DC Offset", 0);
    LProcessDCOffset job{source};
    const LProcessResult result = Process(progress, job);
    if (result == PROCESS_DONE)
        source = job.source;
    return result;
}
