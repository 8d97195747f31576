#include "sound/SoundSinkMulti.h"

#include "sound/ConvertChannelsSink.h"
#include "sound/ConvertRateSink.h"

#include <algorithm>
#include <cstdint>

LSoundSinkMultiBase::LSoundSinkMultiBase(std::vector<LSoundSink> sinks, int rate,
                                         unsigned char channels)
    : LSoundSinkBase(rate, channels), sinks_(std::move(sinks))
{
}

void LSoundSinkMultiBase::Write(const int* buffer, int frames)
{
    position_ += frames;
    for (LSoundSink& sink : sinks_)
        sink->Write(buffer, frames);
}

void LSoundSinkMultiBase::Seek(int frame)
{
    position_ = frame;
    for (LSoundSink& sink : sinks_)
        sink->Seek(static_cast<int>(static_cast<int64_t>(frame) * sink->GetSampleRate() / sampleRate_));
}

LSoundSink LSoundSinkMulti::OpenSink(LSoundSink* sinks, unsigned long count)
{
    int rate = 0;
    unsigned char channels = 1;
    for (unsigned long i = 0; i < count; ++i) {
        rate = std::max(rate, sinks[i]->GetSampleRate());
        channels = std::max(channels, sinks[i]->GetChannels());
    }
    if (rate == 0)
        return LSoundSink();

    std::vector<LSoundSink> converted;
    converted.reserve(count);
    for (unsigned long i = 0; i < count; ++i) {
        LSoundSink sink = sinks[i];
        if (sink->GetSampleRate() != rate)
            sink = LSinkConvertRate{rate}.OpenSink(sink);
        if (sink->GetChannels() != channels)
            sink = LSinkConvertChannels::OpenSink(sink, channels);
        converted.push_back(sink);
    }
    return LSoundSink(new LSoundSinkMultiBase(std::move(converted), rate, channels));
}

LSoundSink LSoundSinkDuplicate::OpenSink(LSoundSink& first, LSoundSink& second)
{
    LSoundSink sinks[] = {first, second};
    return LSoundSinkMulti::OpenSink(sinks, 2);
}
