#pragma once

#include "sound/SoundSource.h"

#include <cstdint>

// Opens an audio file as a source: an MP3 file by its extension ".mp3" (any case), anything
// else as a wave file. A file that cannot be read gives an error source.
LSoundSource LOpenAudioFileSource(const char* path);

// What a source's error code means, for messages.
const char* LSoundErrorText(uint8_t error);
