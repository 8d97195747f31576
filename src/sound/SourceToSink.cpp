#include "sound/SourceToSink.h"

#include "sound/ConvertRateChannels.h"
#include "sound/PeakLimit.h"

#include <algorithm>
#include <vector>

namespace {
constexpr int kBlockFrames = 8192;
// Blocks moved between two stop queries and progress reports.
constexpr int kBatchBlocks = 10;
// The largest 16-bit sample in internal units.
constexpr int kLargest16 = 524272;
} // namespace

LProcessResult Process(LProcessInterface& progress, LPRSourceToSink& job)
{
    progress.SetStatus(job.title, 0);
    progress.SetStatus("Please wait...", 1);
    progress.SetProgress(0.0);

    LSoundSource source = job.source;
    LSoundSink sink = job.sink;
    if (source->GetError() != sndErrNone || sink->IsFailed())
        return PROCESS_FAILED;

    const int rate = sink->GetSampleRate();
    const unsigned char channels = sink->GetChannels();
    LSPConvertSourceRateChannels(rate, channels, source);
    source = LSPPeakLimit(kLargest16).OpenSource(source);
    // A layout the converters cannot produce (such as six channels into two) is refused rather
    // than written with the wrong frame size.
    if (source->GetError() != sndErrNone || source->GetSampleRate() != rate ||
        source->GetChannels() != channels)
        return PROCESS_FAILED;

    const int total = source->GetEndSample() - source->GetPositionSample();
    const double step = total > 0 ? 1.0 / total * kBlockFrames * kBatchBlocks : 0.0;
    std::vector<int> buffer(static_cast<size_t>(channels) * kBlockFrames * kBatchBlocks);
    const size_t blockValues = static_cast<size_t>(channels) * kBlockFrames;

    double fraction = 0.0;
    for (int remaining = total; remaining >= 1;) {
        if (progress.IsToStop())
            return PROCESS_STOPPED;
        int toRead = remaining;
        int blocks = 0;
        for (; blocks < kBatchBlocks && toRead >= 1; ++blocks) {
            const int frames = std::min(toRead, kBlockFrames);
            source->Read(buffer.data() + blocks * blockValues, frames);
            toRead -= frames;
        }
        // A source that failed while it was read gave something other than its audio.
        if (source->GetError() != sndErrNone)
            return PROCESS_FAILED;
        for (int b = 0; b < blocks; ++b) {
            const int frames = std::min(remaining, kBlockFrames);
            sink->Write(buffer.data() + b * blockValues, frames);
            remaining -= frames;
        }
        progress.SetProgress(fraction);
        fraction += step;
    }
    return PROCESS_DONE;
}
