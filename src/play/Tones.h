#pragma once

#include "play/SoundPlayer.h"
#include "sound/SoundSource.h"

#include <vector>

// The short signals a recording session plays: rising beeps when recording starts, falling
// ones when it stops, one low beep when it pauses.
enum class LTone { Start, Stop, Pause };

// The samples of a tone at 44,100 Hz stereo, at a quarter of full scale with soft edges.
std::vector<int> LToneSamples(LTone tone);

// A source over a tone's samples.
LSoundSource LOpenToneSource(LTone tone);

// Plays tones on the output device the player uses ("Player"/"Device"). Made and used on the
// main thread; a tone that cannot be played is skipped.
class LTonePlayer {
public:
    void Play(LTone tone);

private:
    LSoundPlayer player_;
};
