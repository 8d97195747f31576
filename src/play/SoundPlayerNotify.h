#pragma once

#include "sound/DB.h"
#include "sound/SoundTime.h"

// What a sound player tells its owner, always on the main thread. Each call carries the user
// value the owner chose when it set the listener. Every call does nothing unless overridden.
class LSoundPlayerNotify {
public:
    virtual ~LSoundPlayerNotify() = default;

    virtual void spntfPlay(long /*user*/) {}
    virtual void spntfStop(long /*user*/) {}
    virtual void spntfCue(long /*user*/) {}
    virtual void spntfPause(long /*user*/) {}
    // The position reached by the output.
    virtual void spntfTime(LSoundTime /*time*/, long /*user*/) {}
    // The level of the buffer just played.
    virtual void spntfLevel(const LDBMC& /*level*/, long /*user*/) {}
};
