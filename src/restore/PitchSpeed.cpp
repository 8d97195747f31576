#include "restore/PitchSpeed.h"

#include "sound/ConvertRateSource.h"

#include <algorithm>

namespace {

// The resampler at the target rate, which becomes the stage's inner source.
LSoundSource OpenResampler(LSoundSource& source, double factor) {
    return LSoundSource(new LSRCConvertRate(
        source, LSRCPitchSpeed::TargetRate(source->GetSampleRate(), factor), false));
}

LProcessResult ConvertSpeed(LProcessInterface& progress, LSoundSource& source, const char* status,
                            double factor) {
    progress.SetStatus(status, 0);
    source = LSPPitchSpeed(factor).OpenSource(source);
    return PROCESS_DONE;
}

} // namespace

int LSRCPitchSpeed::TargetRate(int rate, double factor) {
    return static_cast<int>(rate / std::max(factor, 0.1));
}

LSRCPitchSpeed::LSRCPitchSpeed(LSoundSource& source, double factor)
    : LSRCPitchSpeed(OpenResampler(source, factor), source->GetSampleRate()) {}

// The resampled stream is presented at the original rate.
LSRCPitchSpeed::LSRCPitchSpeed(LSoundSource resampler, int rate) : LSoundProcessBase(resampler) {
    sampleRate_ = rate;
}

LSoundSource LSPPitchSpeed::OpenSource(LSoundSource& source) {
    if (source->GetError() != sndErrNone ||
        LSRCPitchSpeed::TargetRate(source->GetSampleRate(), factor) == source->GetSampleRate())
        return source;
    return LSoundSource(new LSRCPitchSpeed(source, factor));
}

LProcessResult ProcessConvert45To33RPM(LProcessInterface& progress, LSoundSource& source) {
    return ConvertSpeed(progress, source, "45To33RPM convert", kSpeedFactor45To33);
}

LProcessResult ProcessConvert78To45RPM(LProcessInterface& progress, LSoundSource& source) {
    return ConvertSpeed(progress, source, "78To45RPM convert", kSpeedFactor78To45);
}
