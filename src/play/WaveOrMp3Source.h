#pragma once

#include "sound/SoundSource.h"

#include <string>

// The split and join jobs take a file ending in ".wav" (any case) as a wave file and any other
// as MP3.
bool IsWaveFileName(const std::string& path);
LSoundSource OpenWaveOrMp3Source(const std::string& path);
