#include "sound/ConvertRateChannels.h"

#include "sound/ConvertChannels.h"
#include "sound/ConvertChannelsSink.h"
#include "sound/ConvertRateSink.h"
#include "sound/ConvertRateSource.h"

void LSPConvertSourceRateChannels(int rate, unsigned char channels, LSoundSource& source) {
    if (source->GetChannels() > channels) source = LSPConvChannels(channels).OpenSource(source);
    if (source->GetSampleRate() != rate) source = LSPConvertRate(rate).OpenSource(source);
    if (source->GetChannels() != channels) source = LSPConvChannels(channels).OpenSource(source);
}

void LSinkConvertRateChannels(int rate, unsigned char channels, LSoundSink& sink) {
    if (sink->GetChannels() > channels) sink = LSinkConvertChannels::OpenSink(sink, channels);
    if (sink->GetSampleRate() != rate) sink = LSinkConvertRate{rate}.OpenSink(sink);
    if (sink->GetChannels() != channels) sink = LSinkConvertChannels::OpenSink(sink, channels);
}
