#pragma once

#include "jobs/ProcessInterface.h"
#include "sound/SoundSink.h"
#include "sound/SoundSource.h"

// The job that copies a whole source into a sink.
struct LPRSourceToSink {
    const char* title = "Process Audio";
    LSoundSource source;
    // Declared after the source so that it is let go (and finished) first.
    LSoundSink sink;
};

// Copies the source from its position to its end into the sink, converted to the sink's rate
// and channel count and limited to the 16-bit range, in blocks of 8,192 frames. Fails without
// writing when the source or the sink has an error, or the source cannot be converted; fails
// before writing what a source read after it failed while being read.
LProcessResult Process(LProcessInterface& progress, LPRSourceToSink& job);
