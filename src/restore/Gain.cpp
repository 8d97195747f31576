#include "restore/Gain.h"

#include "sound/AudioBuffer.h"

LSRCGain::LSRCGain(LSoundSource& source, int gainQ24)
    : LSoundProcessBase(source), gain9_(gainQ24 >> 15)
{
    if (gainQ24 > kQ24One)
        maxAmplitude_ = 0x200000;
}

void LSRCGain::Read(int* buffer, int frames)
{
    inner_->Read(buffer, frames);
    GainAudioBufferQuick(gain9_, buffer, frames * channels_);
}

LSoundSource LSPGain::OpenSource(LSoundSource& source)
{
    if (gain >> 15 == 512)
        return source;
    return LSoundSource(new LSRCGain(source, gain));
}
