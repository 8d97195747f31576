#include "restore/Normalize.h"

#include "restore/Gain.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {
constexpr int kBlockFrames = 8192;
}

LProcessResult ProcessNormalizeGetGain(LProcessInterface& progress, LProcessNormalize& job,
                                       int& gainPercent) {
    LSoundSource source = job.source;
    if (source->GetError() != sndErrNone) return PROCESS_FAILED;
    progress.SetStatus("Normalizing", 0);
    progress.SetStatus("Please wait...", 1);

    const int channels = source->GetChannels();
    const int end = std::max(source->GetEndSample(), 1);
    std::vector<int> buffer(static_cast<size_t>(kBlockFrames) * channels);
    int peak = 0;
    double fraction = 0;
    for (int pos = 0;;) {
        if (progress.IsToStop()) return PROCESS_STOPPED;
        if (pos >= end) break;
        const int frames = std::min(end - pos, kBlockFrames);
        source->Read(buffer.data(), frames);
        for (int i = 0; i < frames * channels; ++i)
            peak = std::max(peak, std::abs(buffer[i]));
        pos += frames;
        fraction += static_cast<double>(kBlockFrames) / end;
        progress.SetProgress(fraction);
    }

    source->Seek(0);
    if (peak < 1) return PROCESS_DONE;
    const long long gain = static_cast<long long>(job.percent) * kNormalizeFullScale / peak;
    gainPercent = static_cast<int>(std::min<long long>(gain, kNormalizeMaxGainPercent));
    return PROCESS_DONE;
}

LProcessResult Process(LProcessInterface& progress, LProcessNormalize& job) {
    int gainPercent = 100;
    const LProcessResult result = ProcessNormalizeGetGain(progress, job, gainPercent);
    if (gainPercent != 100) {
        LSPGain gain(((gainPercent * 512) / 100) * 32768);
        job.source = gain.OpenSource(job.source);
    }
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
