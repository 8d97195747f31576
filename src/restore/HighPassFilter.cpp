#include "restore/HighPassFilter.h"

LSRCHighPassIIR2::LSRCHighPassIIR2(LSoundSource& source, int cutoffHz)
    : LSoundProcessBase(source), filter_(cutoffHz, sampleRate_, channels_)
{
    // The filter overshoots on steep edges.
    maxAmplitude_ = 0x3FFFFF;
}

void LSRCHighPassIIR2::Read(int* buffer, int frames)
{
    inner_->Read(buffer, frames);
    filter_.ApplyFilter(buffer, frames);
}

void LSRCHighPassIIR2::Seek(int frame)
{
    inner_->Seek(frame);
    filter_.Clear();
}

LSoundSource LSPHighPassIIR2::OpenSource(LSoundSource& source)
{
    return LSoundSourceTransparent<LSRCHighPassIIR2>(new LSRCHighPassIIR2(source, cutoffHz_));
}

LProcessResult ProcessLowCutFilter(LProcessInterface& progress, LSoundSource& source,
                                   int cutoffHz)
{
    if (source->GetError() != sndErrNone)
        return PROCESS_FAILED;
    progress.SetStatus("High Pass Filter", 0);
    LSPHighPassIIR2 highPass(cutoffHz == 0 ? 150 : cutoffHz);
    source = highPass.OpenSource(source);
    return PROCESS_DONE;
}
