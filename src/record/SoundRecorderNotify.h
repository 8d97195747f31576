#pragma once

#include "sound/DB.h"
#include "sound/SoundTime.h"

// What a recorder tells its owner, on the owner's thread. `user` is the value the owner gave
// the recorder.
class LSoundRecorderNotify {
public:
    // Recording has started, or resumed after a pause in silence.
    virtual void srntfRecord(long /*user*/) {}
    // The recorder is waiting for audio.
    virtual void srntfWait(long /*user*/) {}
    // The recorder has stopped.
    virtual void srntfStop(long /*user*/) {}
    // The recorded time.
    virtual void srntfTime(LSoundTime /*time*/, long /*user*/) {}
    // The input levels, one per channel of the sink.
    virtual void srntfLevel(const LDBMC& /*levels*/, long /*user*/) {}

protected:
    ~LSoundRecorderNotify() = default;
};
