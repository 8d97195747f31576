#pragma once

#include "sound/SoundSink.h"
#include "sound/SoundSource.h"

// Replaces the source by one at the given rate and channel count. Channels are reduced before
// resampling and raised after it, so the filter runs on as few channels as possible. A source
// with an error, or one whose channels cannot be converted, stays as it is; a source of more
// than two channels that needs another rate gets error sndErrFormat.
void LSPConvertSourceRateChannels(int rate, unsigned char channels, LSoundSource& source);

// Replaces the sink by one that accepts the given rate and channel count and writes into it,
// resampling on the smaller channel count in the same way. Conversions that cannot be set up
// give a sink with error 1.
void LSinkConvertRateChannels(int rate, unsigned char channels, LSoundSink& sink);
